// Shared ground of the COM+ tests: the catalog stand-in registered in the prefix with an empty store, the catalog
// read and seeded through the same interfaces the actions call, and the actions run through their components.
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

constexpr long kGarbage = 0x5A5A;
constexpr wchar_t kStoreKey[] = L"Software\\Tolvane\\VelmoraComPlus";

// Each test starts from an empty catalog in an apartment of its own; the stand-in is registered once.
class ComPlusTest : public ::testing::Test {
protected:
    static void SetUpTestSuite();
    void SetUp() override;
    void TearDown() override;
};

// Empties the stand-in's store: a catalog without applications.
void ClearStore();

// The folder of the test programs (with VelmoraExt.dll and the stand-in), without a trailing separator.
std::wstring BinFolder();
std::wstring ExtensionDll();         // bin\VelmoraExt.dll: a DLL with a type library of 27 classes
std::wstring ExtensionTypeLibrary(); // its type library as a file of its own
std::wstring StandInDll();           // the stand-in: a DLL without a type library

// A property value as the tests write it, and a read value as they compare it: "text x", "long 3", "bool true".
using Value = std::variant<std::wstring, long, bool>;
tol::variant ToVariant(const Value& value);
std::wstring Describe(const VARIANT& value);

// Catalog access through the stand-in's interfaces; every failure fails the test at the call.
tol::com_ptr<ICOMAdminCatalog> NewCatalog();
tol::com_ptr<ICatalogCollection> Open(ICOMAdminCatalog* catalog, const wchar_t* name);
tol::com_ptr<ICatalogCollection> OpenComponents(ICatalogCollection* applications, const std::wstring& application);
tol::com_ptr<ICatalogObject> ItemAt(ICatalogCollection* collection, long index);
tol::com_ptr<ICatalogObject> FindByName(ICatalogCollection* collection, const std::wstring& name); // null if none
std::vector<std::wstring> Names(ICatalogCollection* collection);
std::wstring ValueOf(ICatalogObject* object, const wchar_t* property);
std::wstring NameOf(ICatalogObject* object);
std::wstring KeyOf(ICatalogObject* object);
void Put(ICatalogObject* object, const wchar_t* property, const Value& value);

using Properties = std::vector<std::pair<const wchar_t*, Value>>;

// Adds the applications in order, each with its properties, and saves them.
void SeedApplications(const std::vector<std::pair<std::wstring, Properties>>& applications);
// Installs the DLL (with a type library when given) into the application through the catalog.
void SeedComponents(const std::wstring& application, const std::wstring& dll, const std::wstring& typeLibrary = L"");

// What a fresh catalog reads: the names of the applications, or of one application's components, and one value.
std::vector<std::wstring> SavedApplications();
std::vector<std::wstring> SavedComponents(const std::wstring& application);
std::wstring SavedValue(const std::wstring& application, const wchar_t* property);
std::wstring SavedComponentValue(const std::wstring& application, const std::wstring& component, const wchar_t* property);

// The stand-in's record of an application's server process ("Running", "Starts", "Shutdowns"); -1 when none.
long ServerState(const std::wstring& application, const wchar_t* value);
// A value of the application's store key as text, read with the registry API; "<none>" when it is missing.
std::wstring StoredText(const std::wstring& application, const wchar_t* value);

// Step properties.
void SetLong(test::TestStep& step, const wchar_t* name, long value);
void SetBool(test::TestStep& step, const wchar_t* name, bool value);
void SetTexts(test::TestStep& step, const wchar_t* name, std::initializer_list<const wchar_t*> texts);

// A build whose stop event is signalled while it logs the nth line that starts with the prefix.
class StoppingBuild final : public test::StackObject<IBuildRun> {
public:
    StoppingBuild(std::wstring prefix, int nth);
    std::vector<std::wstring> log;
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP GetTextExpander(ITextExpander** expander) override;
    STDMETHODIMP RunCommandLine(BSTR, BSTR, VARIANT*, long, BSTR, long, long, VARIANT_BOOL, BSTR, long*) override;
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
    std::wstring error;     // the description of the thread's error information after a failure
};

// Executes the step through the action component as the host does.
Outcome Execute(const CLSID& action, IBuildRun* build, test::TestStep& step);

// Whether any log line contains the text.
bool LogMentions(const std::vector<std::wstring>& log, const std::wstring& text);

std::wstring SystemText(HRESULT code);

} // namespace complus_test
