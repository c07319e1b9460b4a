// The catalog stand-in itself, through its interfaces: what it keeps across processes, the values new objects
// start with, the connection, the rules of its objects, the ErrorInfo entries of an installation, and its
// registration beside another catalog.
#include "support.h"
#include "frame/bstr.h"
#include "frame/handles.h"
#include "frame/registry.h"
#include <algorithm>

namespace complus_test {
namespace {

using Lines = std::vector<std::wstring>;

IDispatch* Garbage() { return reinterpret_cast<IDispatch*>(static_cast<uintptr_t>(0x5A5A5A5A)); }

// What reg.exe, a process of its own, prints for the store's applications.
std::string QueryStoreInAnotherProcess() {
    const std::wstring output = BinFolder() + L"\\complus-reg-query.txt";
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    tol::unique_file file(::CreateFileW(output.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS, 0, nullptr));
    STARTUPINFOW startup{sizeof startup};
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = file.get();
    std::wstring command = L"reg.exe query HKLM\\" + std::wstring(kStoreKey) + L"\\Applications /s";
    PROCESS_INFORMATION process{};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process))
        return "<reg.exe did not start>";
    tol::unique_process owner(process.hProcess), thread(process.hThread);
    ::WaitForSingleObject(process.hProcess, 30000);
    file.reset();
    tol::unique_file reader(::CreateFileW(output.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    std::string text(reader ? ::GetFileSize(reader.get(), nullptr) : 0, '\0');
    DWORD read = 0;
    if (!text.empty()) ::ReadFile(reader.get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr);
    text.resize(read);
    reader.reset();
    ::DeleteFileW(output.c_str());
    return text;
}

class StandInTest : public ComPlusTest {};

TEST_F(StandInTest, OnlySavedChangesOutliveTheCatalogAndReachOtherProcesses) {
    {
        auto catalog = NewCatalog();
        auto applications = Open(catalog.get(), L"Applications");
        tol::com_ptr<IDispatch> added;
        ASSERT_EQ(applications->Add(added.put()), S_OK);
        Put(added.query<ICatalogObject>().get(), L"Name", std::wstring(L"Saved"));
        LONG changes = kGarbage;
        ASSERT_EQ(applications->SaveChanges(&changes), S_OK);
        EXPECT_EQ(changes, 1);
        Put(added.query<ICatalogObject>().get(), L"Description", std::wstring(L"unsaved change"));
        ASSERT_EQ(applications->Add(added.put()), S_OK);
        Put(added.query<ICatalogObject>().get(), L"Name", std::wstring(L"Unsaved"));

        const std::string listed = QueryStoreInAnotherProcess();
        EXPECT_NE(listed.find("Saved"), std::string::npos) << listed;
        EXPECT_EQ(listed.find("Unsaved"), std::string::npos) << listed;
        EXPECT_EQ(listed.find("unsaved change"), std::string::npos) << listed;
    }
    // Everything released, the apartment and the stand-in's DLL gone: a new catalog reads the store afresh.
    ::CoUninitialize();
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    EXPECT_EQ(SavedApplications(), Lines{L"Saved"});
    EXPECT_EQ(SavedValue(L"Saved", L"Description"), L"text ");
}

TEST_F(StandInTest, PopulateDropsWhatWasNotSaved) {
    SeedApplications({{L"Kept", {}}});
    auto catalog = NewCatalog();
    auto applications = Open(catalog.get(), L"Applications");
    ASSERT_EQ(applications->Remove(0), S_OK);
    tol::com_ptr<IDispatch> added;
    ASSERT_EQ(applications->Add(added.put()), S_OK);
    ASSERT_EQ(applications->Populate(), S_OK);
    EXPECT_EQ(Names(applications.get()), Lines{L"Kept"});
}

struct DefaultCase {
    const wchar_t* property;
    std::wstring value;
};

TEST_F(StandInTest, NewObjectsStartWithThePlatformsDefaults) {
    const DefaultCase application[] = {
        {L"Name", L"text New Application"},      {L"Deleteable", L"bool true"},  {L"Activation", L"long 1"},
        {L"Identity", L"text Interactive User"}, {L"RunForever", L"bool false"}, {L"ShutdownAfter", L"long 3"},
        {L"Password", L"text ****************"},
    };
    auto catalog = NewCatalog();
    auto applications = Open(catalog.get(), L"Applications");
    tol::com_ptr<IDispatch> added;
    ASSERT_EQ(applications->Add(added.put()), S_OK);
    auto fresh = added.query<ICatalogObject>();
    for (const DefaultCase& c : application) EXPECT_EQ(ValueOf(fresh.get(), c.property), c.value) << c.property;
    EXPECT_EQ(KeyOf(fresh.get()).size(), 38u) << "the ID is a new GUID";

    const DefaultCase component[] = {
        {L"Transaction", L"long 1"},
        {L"Synchronization", L"long 1"},
        {L"JustInTimeActivation", L"bool false"},
        {L"ComponentTransactionTimeoutEnabled", L"bool false"},
        {L"ComponentTransactionTimeout", L"long 60"},
        {L"DLL", L"text " + ExtensionDll()},
        {L"ProgID", L"text VelmoraExt.WriteINIAction"},
    };
    SeedApplications({{L"Tools", {}}});
    SeedComponents(L"Tools", ExtensionDll());
    for (const DefaultCase& c : component)
        EXPECT_EQ(SavedComponentValue(L"Tools", L"VelmoraExt.WriteINIAction", c.property), c.value) << c.property;
}

struct ConnectCase {
    std::wstring computer;
    HRESULT hr;
};

TEST_F(StandInTest, ConnectReachesOnlyThisComputer) {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD size = MAX_COMPUTERNAME_LENGTH + 1;
    ASSERT_TRUE(::GetComputerNameW(name, &size));
    const HRESULT badPath = HRESULT_FROM_WIN32(ERROR_BAD_NETPATH);
    const ConnectCase cases[] = {
        {L"", S_OK},
        {L".", S_OK},
        {L"localhost", S_OK},
        {name, S_OK},
        {std::wstring(L"\\\\") + name, S_OK},
        {L"FARAWAY", badPath},
        {L"\\\\FARAWAY", badPath},
    };
    auto catalog = NewCatalog();
    for (const ConnectCase& c : cases) {
        SCOPED_TRACE(std::string(c.computer.begin(), c.computer.end()));
        IDispatch* root = Garbage();
        ::SetErrorInfo(0, nullptr);
        EXPECT_EQ(catalog->Connect(tol::bstr(c.computer).get(), &root), c.hr);
        tol::com_ptr<IDispatch> owner = tol::com_ptr<IDispatch>::attach(root);
        EXPECT_EQ(root != nullptr, c.hr == S_OK);
        if (c.hr == S_OK) continue;
        tol::com_ptr<IErrorInfo> info;
        ASSERT_EQ(::GetErrorInfo(0, info.put()), S_OK);
        tol::bstr description;
        info->GetDescription(description.receive());
        EXPECT_EQ(description.str(), SystemText(badPath));
    }
}

struct PutCase {
    const char* name;
    const wchar_t* property;
    Value value;
    HRESULT hr;
    std::wstring after; // the value read back
};

TEST_F(StandInTest, PutValueConvertsToThePropertysTypeOrRefuses) {
    const PutCase cases[] = {
        {"a number as text into an integer", L"ShutdownAfter", std::wstring(L"12"), S_OK, L"long 12"},
        {"a boolean into a text", L"Description", true, S_OK, L"text True"},
        {"a text that is no integer leaves the value", L"ShutdownAfter", std::wstring(L"soon"), DISP_E_TYPEMISMATCH, L"long 12"},
        {"an unknown property", L"Colour", std::wstring(L"blue"), E_INVALIDARG, L""},
        {"the key", L"ID", std::wstring(L"{00000000-0000-0000-0000-000000000000}"), E_ACCESSDENIED, L""},
    };
    auto catalog = NewCatalog();
    auto applications = Open(catalog.get(), L"Applications");
    tol::com_ptr<IDispatch> added;
    ASSERT_EQ(applications->Add(added.put()), S_OK);
    auto object = added.query<ICatalogObject>();
    for (const PutCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(object->put_Value(tol::bstr(c.property).get(), ToVariant(c.value).get()), c.hr);
        if (!c.after.empty()) {
            EXPECT_EQ(ValueOf(object.get(), c.property), c.after);
        }
    }
    IDispatch* item = Garbage();
    EXPECT_EQ(applications->get_Item(1, &item), E_INVALIDARG);
    EXPECT_EQ(item, nullptr);
}

TEST_F(StandInTest, CollectionsAreEmptyUntilPopulated) {
    SeedApplications({{L"Tools", {}}});
    auto catalog = NewCatalog();
    tol::com_ptr<IDispatch> object;
    ASSERT_EQ(catalog->GetCollection(tol::bstr(L"Applications").get(), object.put()), S_OK);
    auto applications = object.query<ICatalogCollection>();
    LONG count = kGarbage;
    ASSERT_EQ(applications->get_Count(&count), S_OK);
    EXPECT_EQ(count, 0);
    ASSERT_EQ(applications->Populate(), S_OK);
    ASSERT_EQ(applications->get_Count(&count), S_OK);
    EXPECT_EQ(count, 1);
    object.reset();
    EXPECT_EQ(catalog->GetCollection(tol::bstr(L"Roles").get(), object.put()), E_INVALIDARG);
}

TEST_F(StandInTest, PropertyInfoDescribesEveryPropertyPasswordIncluded) {
    auto catalog = NewCatalog();
    auto applications = Open(catalog.get(), L"Applications");
    tol::com_ptr<IDispatch> object;
    tol::variant empty;
    ASSERT_EQ(applications->GetCollection(tol::bstr(L"PropertyInfo").get(), empty.get(), object.put()), S_OK);
    auto properties = object.query<ICatalogCollection>();
    ASSERT_EQ(properties->Populate(), S_OK);
    const Lines names = Names(properties.get());
    EXPECT_EQ(names.front(), L"ID");
    EXPECT_NE(std::find(names.begin(), names.end(), L"Password"), names.end());
    EXPECT_NE(std::find(names.begin(), names.end(), L"Deleteable"), names.end());
}

struct InstallCase {
    const char* name;
    std::wstring application, dll, typeLibrary;
    HRESULT hr;
    std::vector<long> codes; // ErrorCode of each ErrorInfo entry
};

TEST_F(StandInTest, InstallComponentFillsTheErrorInfoCollection) {
    const std::wstring missing = BinFolder() + L"\\no-such.dll";
    const long fileNotFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    // clang-format off
    const InstallCase cases[] = {
        {"a missing DLL", L"Tools", missing, L"", COMADMIN_E_OBJECTERRORS, {fileNotFound}},
        {"a missing DLL and type library", L"Tools", missing, missing + L".tlb", COMADMIN_E_OBJECTERRORS,
         {fileNotFound, fileNotFound}},
        {"a DLL without type library", L"Tools", StandInDll(), L"", COMADMIN_E_OBJECTERRORS,
         {HRESULT_FROM_WIN32(ERROR_RESOURCE_TYPE_NOT_FOUND)}},
        {"an unknown application", L"Nowhere", ExtensionDll(), L"", COMADMIN_E_OBJECT_DOES_NOT_EXIST, {}},
        {"classes that another application has", L"Other", ExtensionDll(), L"", COMADMIN_E_OBJECTERRORS,
         std::vector<long>(27, COMADMIN_E_ALREADYINSTALLED)},
        {"again into the same application", L"Tools", ExtensionDll(), L"", S_OK, {}},
    };
    // clang-format on
    SeedApplications({{L"Tools", {}}, {L"Other", {}}});
    SeedComponents(L"Tools", ExtensionDll());
    auto catalog = NewCatalog();
    for (const InstallCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(catalog->InstallComponent(tol::bstr(c.application).get(), tol::bstr(c.dll).get(),
                                            tol::bstr(c.typeLibrary).get(), tol::bstr(L"").get()),
                  c.hr);
        auto errors = Open(catalog.get(), L"ErrorInfo");
        std::vector<long> codes;
        for (size_t i = 0; i < Names(errors.get()).size(); ++i) {
            const std::wstring code = ValueOf(ItemAt(errors.get(), static_cast<long>(i)).get(), L"ErrorCode");
            codes.push_back(std::wcstol(code.c_str() + 5, nullptr, 10));
        }
        EXPECT_EQ(codes, c.codes);
        EXPECT_EQ(SavedComponents(L"Tools").size(), 27u);
        EXPECT_TRUE(SavedComponents(L"Other").empty());
    }
}

// Registration leaves another catalog's server in place and fails; it registers again once that is gone.
TEST_F(StandInTest, RegistrationRefusesToReplaceAnotherCatalog) {
    const std::wstring classKey = L"CLSID\\" + tol::GuidText(__uuidof(COMAdminCatalog));
    const std::wstring server = classKey + L"\\InprocServer32";
    tol::unique_module standIn(::LoadLibraryW(StandInDll().c_str()));
    ASSERT_TRUE(standIn);
    using RegisterServer = HRESULT(STDAPICALLTYPE*)();
    auto registerServer = reinterpret_cast<RegisterServer>(::GetProcAddress(standIn.get(), "DllRegisterServer"));
    ASSERT_NE(registerServer, nullptr);
    // Whatever happens below, the next test finds the stand-in registered again.
    struct Restore {
        const std::wstring& key;
        RegisterServer reregister;
        ~Restore() {
            (void)tol::DeleteKeyTree(HKEY_CLASSES_ROOT, key);
            reregister();
        }
    } restore{classKey, registerServer};

    tol::SetStringValue(tol::CreateKey(HKEY_CLASSES_ROOT, server).get(), nullptr, L"C:\\windows\\system32\\othercatalog.dll");
    EXPECT_EQ(registerServer(), HRESULT_FROM_WIN32(ERROR_CLASS_ALREADY_EXISTS));
    std::wstring registered;
    EXPECT_TRUE(tol::ReadStringValue(tol::CreateKey(HKEY_CLASSES_ROOT, server).get(), nullptr, registered));
    EXPECT_EQ(registered, L"C:\\windows\\system32\\othercatalog.dll");

    ASSERT_EQ(tol::DeleteKeyTree(HKEY_CLASSES_ROOT, classKey), ERROR_SUCCESS);
    EXPECT_EQ(registerServer(), S_OK);
    EXPECT_TRUE(tol::ReadStringValue(tol::CreateKey(HKEY_CLASSES_ROOT, server).get(), nullptr, registered));
    EXPECT_EQ(registered, StandInDll());
    EXPECT_EQ(registerServer(), S_OK) << "registering itself again";
}

} // namespace
} // namespace complus_test
