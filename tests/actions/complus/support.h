// Shared ground of the COM+ tests: the catalog stand-in registered in the prefix with an empty store, the catalog
// seeded and read back through the interfaces the actions call, and the actions run through their components.
#pragma once
#include "frame/com_ptr.h"
#include "frame/variant.h"
#include "host_doubles.h"
#include <comadmin.h>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace complus_test {

using Lines = std::vector<std::wstring>;
constexpr long kGarbage = 0x5A5A;

// Each test starts from an empty catalog in an apartment of its own; the stand-in is registered once.
class ComPlusTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override { ::CoUninitialize(); }
};

void ClearStore(); // a catalog without applications

std::wstring BinFolder();    // the test programs, VelmoraExt.dll and the stand-in; no trailing separator
std::wstring ExtensionDll(); // a DLL with a type library of 27 classes
std::wstring StandInDll();   // a DLL without a type library

// A property value as the tests write it; read values compare as "text x", "long 3", "bool true".
using Value = std::variant<std::wstring, long, bool>;
using Properties = std::vector<std::pair<const wchar_t*, Value>>;

tol::com_ptr<ICOMAdminCatalog> NewCatalog();
tol::com_ptr<ICatalogCollection> Open(ICOMAdminCatalog* catalog, const wchar_t* name); // populated
Lines Names(ICatalogCollection* collection);
void Put(ICatalogObject* object, const wchar_t* property, const Value& value);

// Adds the applications in order, each with its properties, and saves them; installs a DLL's classes.
void SeedApplications(const std::vector<std::pair<std::wstring, Properties>>& applications);
void SeedComponents(const std::wstring& application, const std::wstring& dll);

// What a fresh catalog reads back.
Lines SavedApplications();
Lines SavedComponents(const std::wstring& application);
std::wstring SavedValue(const std::wstring& application, const wchar_t* property);
std::wstring SavedComponentValue(const std::wstring& application, const std::wstring& component, const wchar_t* property);

// The stand-in's record of an application's server ("Starts", "Shutdowns"); -1 when none.
long ServerState(const std::wstring& application, const wchar_t* value);

void SetLong(test::TestStep& step, const wchar_t* name, long value);
void SetTexts(test::TestStep& step, const wchar_t* name, std::initializer_list<const wchar_t*> texts);

// A build whose stop event is signalled while it logs the nth line that starts with the prefix.
class StoppingBuild final : public test::StackObject<IBuildRun> {
public:
    StoppingBuild(std::wstring prefix, int nth);
    Lines log;
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP GetTextExpander(ITextExpander**) override { return E_NOTIMPL; }
    STDMETHODIMP RunCommandLine(BSTR, BSTR, VARIANT*, long, BSTR, long, long, VARIANT_BOOL, BSTR, long*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP LogMessage(BSTR text, VARIANT_BOOL) override;
    STDMETHODIMP GetStopEvent(long* event) override;

private:
    std::wstring prefix_;
    int remaining_;
    tol::unique_event stop_;
};

struct Outcome {
    HRESULT hr = kGarbage;
    long status = kGarbage; // keeps its garbage when Execute fails
    std::wstring error;     // the description of the error information after a failure
};

// Executes the step through the action component as the host does.
Outcome Execute(const CLSID& action, IBuildRun* build, test::TestStep& step);

bool LogMentions(const Lines& log, const std::wstring& text);

} // namespace complus_test
