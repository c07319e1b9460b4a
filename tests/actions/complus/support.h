// Shared ground of the COM+ tests: the catalog stand-in registered in the prefix with an empty store, the catalog
// seeded and read back through the interfaces the actions call, and the actions run through their components.
#pragma once
#include "actions/complus/values.h"
#include "frame/com_ptr.h"
#include "host_doubles.h"
#include "script_runner.h"
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
    static void SetUpTestSuite() { ASSERT_EQ(test::CallLibrary("DllRegisterServer", L"VelmoraComAdmin.dll"), S_OK); }
    void SetUp() override;
    void TearDown() override { ::CoUninitialize(); }
};

inline std::wstring ExtensionDll() { return test::BinFolder() + L"\\VelmoraExt.dll"; } // 27 classes in its type library

// A property value as the tests write it; read values compare as "text x", "long 3", "bool true".
using Value = std::variant<std::wstring, long, bool>;
using Properties = std::vector<std::pair<const wchar_t*, Value>>;

tol::com_ptr<ICOMAdminCatalog> NewCatalog();
tol::com_ptr<ICatalogCollection> Open(ICOMAdminCatalog* catalog, const wchar_t* name); // populated
void Put(ICatalogObject* object, const wchar_t* property, const Value& value);

// Empties the store, then adds the applications in order, each with its properties, and saves them.
void SeedApplications(const std::vector<std::pair<std::wstring, Properties>>& applications);
void SeedComponents(const std::wstring& application, const std::wstring& dll); // installs a DLL's classes

// What a fresh catalog reads back.
Lines SavedApplications();
Lines SavedComponents(const std::wstring& application);
// A property of the application, or of its component when one is named; "<none>" when there is no such object.
std::wstring SavedValue(const std::wstring& application, const wchar_t* property, const std::wstring& component = L"");

// The stand-in's record of an application's server ("Starts", "Shutdowns"); -1 when none.
long ServerState(const std::wstring& application, const wchar_t* value);

inline void SetLong(test::TestStep& step, const wchar_t* name, long value) { step.Set(name, tol::LongVariant(value).release()); }
void SetTexts(test::TestStep& step, const wchar_t* name, std::initializer_list<const wchar_t*> texts);

struct Outcome {
    HRESULT hr = kGarbage;
    long status = kGarbage; // keeps its garbage when Execute fails
    std::wstring error;     // the description of the error information after a failure
};

// Executes the step through the action component as the host does.
Outcome Execute(const CLSID& action, IBuildRun* build, test::TestStep& step);

bool LogMentions(const Lines& log, const std::wstring& text);

} // namespace complus_test
