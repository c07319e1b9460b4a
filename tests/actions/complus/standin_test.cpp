// The catalog stand-in itself: only what SaveChanges wrote outlives the catalog.
#include "support.h"

namespace complus_test {
namespace {

class StandInTest : public ComPlusTest {};

TEST_F(StandInTest, OnlySavedChangesOutliveTheCatalog) {
    {
        auto applications = Open(NewCatalog().get(), L"Applications");
        tol::com_ptr<IDispatch> added;
        ASSERT_EQ(applications->Add(added.put()), S_OK);
        Put(added.query<ICatalogObject>().get(), L"Name", std::wstring(L"Saved"));
        LONG changes = kGarbage;
        ASSERT_EQ(applications->SaveChanges(&changes), S_OK);
        EXPECT_EQ(changes, 1);
        Put(added.query<ICatalogObject>().get(), L"Description", std::wstring(L"unsaved change"));
        ASSERT_EQ(applications->Add(added.put()), S_OK);
        Put(added.query<ICatalogObject>().get(), L"Name", std::wstring(L"Unsaved"));
    }
    // Everything released, the apartment and the stand-in's DLL gone: a new catalog reads the store afresh.
    ::CoUninitialize();
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    EXPECT_EQ(SavedApplications(), Lines{L"Saved"});
    EXPECT_EQ(SavedValue(L"Saved", L"Description"), L"text ");
}

} // namespace
} // namespace complus_test
