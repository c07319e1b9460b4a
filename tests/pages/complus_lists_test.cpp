// The computer and application lists of the COM+ pages, filled from the catalog stand-in registered in the prefix.
#include "frame/bstr.h"
#include "page_host.h"
#include <comadmin.h>
#include <gtest/gtest.h>

namespace test {
namespace {

using Names = std::vector<std::wstring>;

HRESULT CallStandIn(const char* entry) {
    tol::unique_module standIn(::LoadLibraryW(L"VelmoraComAdmin.dll"));   // from the test program's folder
    if (!standIn) return HRESULT_FROM_WIN32(::GetLastError());
    auto function = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(::GetProcAddress(standIn.get(), entry));
    return function ? function() : E_NOTIMPL;
}

// Saves an object of each name in the catalog's top-level collection named with it.
void Seed(std::initializer_list<std::pair<const wchar_t*, const wchar_t*>> objects) {
    tol::com_ptr<ICOMAdminCatalog> catalog;
    ASSERT_EQ(::CoCreateInstance(__uuidof(COMAdminCatalog), nullptr, CLSCTX_INPROC_SERVER, __uuidof(ICOMAdminCatalog),
                                 catalog.put_void()), S_OK);
    for (const auto& [collectionName, name] : objects) {
        tol::com_ptr<IDispatch> object, added;
        ASSERT_EQ(catalog->GetCollection(tol::bstr(collectionName).get(), object.put()), S_OK);
        const auto collection = object.query<ICatalogCollection>();
        tol::variant value;
        V_VT(value.receive()) = VT_BSTR;
        V_BSTR(value.ptr()) = ::SysAllocString(name);
        LONG changes = 0;
        ASSERT_TRUE(SUCCEEDED(collection->Populate()) && SUCCEEDED(collection->Add(added.put())) &&
                    SUCCEEDED(added.query<ICatalogObject>()->put_Value(tol::bstr(L"Name").get(), value.get())) &&
                    SUCCEEDED(collection->SaveChanges(&changes)));
    }
}

class ComPlusLists : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
        ASSERT_EQ(CallStandIn("DllRegisterServer"), S_OK);
        const LONG status = ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Tolvane\\VelmoraComPlus");
        ASSERT_TRUE(status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND) << status;
    }
    void TearDown() override { ::CoUninitialize(); }
};

TEST_F(ComPlusLists, PagesListTheLocalCatalogsComputersAndApplications) {
    Seed({{L"Applications", L"Sales"}, {L"Applications", L"Billing"}, {L"ComputerList", L"BUILDSRV"}});
    for (const wchar_t* className : {L"COMPlusAppUI", L"COMPlusCompUI"}) {
        PageHost host(className);
        EXPECT_EQ(host.ListItems(1034), Names{L"BUILDSRV"}) << className;
        EXPECT_EQ(host.ListItems(1080), (Names{L"*", L"Billing", L"Sales"})) << className;
        EXPECT_EQ(host.Text(1080), L"") << className; // no entry is chosen for the user
        // A name that the catalog does not know can still be typed and saved.
        host.Load(nullptr);
        host.SetText(1080, L"Inventory");
        host.SetText(1088, L"inventory.dll");
        PageStep step;
        ASSERT_TRUE(host.Save(step)) << className;
        EXPECT_EQ(step.Text(L"Application"), L"Inventory") << className;
    }
}

// Without a catalog the page still works: the operation list is there, the catalog lists stay empty.
TEST_F(ComPlusLists, WithoutCatalogThePageHasNoLists) {
    ASSERT_EQ(CallStandIn("DllUnregisterServer"), S_OK);
    {
        PageHost host(L"COMPlusAppUI");
        EXPECT_EQ(host.ListItems(1080), Names{});
        EXPECT_EQ(host.ListItems(1065).size(), 4u);
    }
    ASSERT_EQ(CallStandIn("DllRegisterServer"), S_OK);
}

} // namespace
} // namespace test
