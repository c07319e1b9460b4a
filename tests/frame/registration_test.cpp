// Registration of the real DLL, read back from the registry of the prefix.
#include "frame/bstr.h"
#include "frame/classes.h"
#include "frame/com_ptr.h"
#include "frame/handles.h"
#include "frame/registry.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <map>
#include <string>

using namespace tol;

namespace {

std::wstring BinFolder() {
    wchar_t path[1024];
    const DWORD length = ::GetModuleFileNameW(nullptr, path, 1024);
    std::wstring text(path, length);
    return text.substr(0, text.find_last_of(L'\\'));
}

struct Library {
    Library() : module(::LoadLibraryW(path.c_str())) {}
    template <class F>
    F* Get(const char* name) const {
        return reinterpret_cast<F*>(::GetProcAddress(module.get(), name));
    }
    HRESULT Register() const { return Get<HRESULT WINAPI()>("DllRegisterServer")(); }
    HRESULT Unregister() const { return Get<HRESULT WINAPI()>("DllUnregisterServer")(); }
    std::wstring path = BinFolder() + L"\\VelmoraExt.dll";
    unique_module module;
};

bool KeyExists(HKEY root, const std::wstring& path) {
    unique_hkey key;
    return ::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

// A value as "type:text" (REG_SZ data must end with exactly one NUL), or "missing".
std::wstring Value(HKEY root, const std::wstring& path, const wchar_t* name) {
    unique_hkey key;
    if (::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return L"missing key";
    DWORD type = 0, size = 0;
    if (::RegQueryValueExW(key.get(), name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return L"missing";
    std::wstring data(size / 2 + 1, L'\0');
    ::RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size);
    if (type == REG_DWORD) return L"dword:" + std::to_wstring(*reinterpret_cast<DWORD*>(data.data()));
    if (type != REG_SZ) return L"type " + std::to_wstring(type);
    if (size < 2 || data[size / 2 - 1] != L'\0') return L"sz without terminating NUL";
    return L"sz:" + data.substr(0, size / 2 - 1);
}

// Every value that registration writes, for comparing two registrations.
std::map<std::wstring, std::wstring> Snapshot() {
    std::map<std::wstring, std::wstring> all;
    for (const ClassEntry& entry : kClasses) {
        const std::wstring clsid = L"CLSID\\" + GuidText(*entry.clsid);
        const std::wstring progId = std::wstring(L"VelmoraExt.") + entry.name;
        for (const auto& [path, name] : std::initializer_list<std::pair<std::wstring, const wchar_t*>>{
                 {clsid, nullptr}, {clsid + L"\\InprocServer32", nullptr}, {clsid + L"\\InprocServer32", L"ThreadingModel"},
                 {clsid + L"\\Programmable", nullptr}, {clsid + L"\\TypeLib", nullptr}, {clsid + L"\\ProgID", nullptr},
                 {progId, nullptr}, {progId + L"\\CLSID", nullptr}})
            all[path + L"|" + (name ? name : L"")] = Value(HKEY_CLASSES_ROOT, path, name);
    }
    for (const CatalogRecord& record : kCatalog) {
        const std::wstring path = std::wstring(kCatalogKey) + L"\\" + record.name;
        for (const wchar_t* name : {static_cast<const wchar_t*>(nullptr), L"Category", L"ActionComponent", L"UIComponent1",
                                    L"UIComponent2", L"FileExtensions", L"HelpContext", L"DefaultProperty", L"Bitmap"})
            all[path + L"|" + (name ? name : L"")] = Value(HKEY_LOCAL_MACHINE, path, name);
    }
    all[L"verb"] = Value(HKEY_CLASSES_ROOT, L"inifile\\shell\\Write with &Velmora\\command", nullptr);
    return all;
}

class Registration : public testing::Test {
protected:
    void TearDown() override { lib.Unregister(); }
    Library lib;
};

} // namespace

TEST_F(Registration, WritesClassesProgIdsTypeLibraryAndCatalogExactly) {
    ASSERT_TRUE(lib.module);
    ASSERT_EQ(lib.Register(), S_OK);
    const auto values = Snapshot();
    for (const ClassEntry& entry : kClasses) {
        const std::wstring clsid = L"CLSID\\" + GuidText(*entry.clsid);
        const std::wstring name = entry.name;
        EXPECT_EQ(values.at(clsid + L"|"), L"sz:" + name);
        EXPECT_EQ(values.at(clsid + L"\\InprocServer32|"), L"sz:" + lib.path);
        EXPECT_EQ(values.at(clsid + L"\\InprocServer32|ThreadingModel"), L"sz:Apartment");
        EXPECT_EQ(values.at(clsid + L"\\Programmable|"), L"sz:");
        EXPECT_EQ(values.at(clsid + L"\\TypeLib|"), L"sz:{5237BB51-730A-4CF8-BFFB-5FF5EDF2C4B6}");
        EXPECT_EQ(values.at(clsid + L"\\ProgID|"), L"sz:VelmoraExt." + name);
        EXPECT_EQ(values.at(L"VelmoraExt." + name + L"|"), L"sz:" + name);
        EXPECT_EQ(values.at(L"VelmoraExt." + name + L"\\CLSID|"), L"sz:" + GuidText(*entry.clsid));
    }
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, L"TypeLib\\{5237BB51-730A-4CF8-BFFB-5FF5EDF2C4B6}\\1.0"));

    const std::wstring ini = std::wstring(kCatalogKey) + L"\\Write INI|";
    EXPECT_EQ(values.at(ini), L"sz:Create, update, or delete a value in an INI file");
    EXPECT_EQ(values.at(ini + L"Category"), L"sz:Files");
    EXPECT_EQ(values.at(ini + L"ActionComponent"), L"sz:VelmoraExt.WriteINIAction");
    EXPECT_EQ(values.at(ini + L"UIComponent1"), L"sz:VelmoraExt.WriteINIUI");
    EXPECT_EQ(values.at(ini + L"FileExtensions"), L"sz:.ini");
    EXPECT_EQ(values.at(ini + L"HelpContext"), L"dword:529");
    EXPECT_EQ(values.at(ini + L"DefaultProperty"), L"sz:Filename");
    EXPECT_EQ(values.at(ini + L"Bitmap"), L"sz:" + lib.path + L",120");
    EXPECT_EQ(values.at(ini + L"UIComponent2"), L"missing");

    const std::wstring zip = std::wstring(kCatalogKey) + L"\\ZIP Files|";
    EXPECT_EQ(values.at(zip + L"UIComponent2"), L"sz:VelmoraExt.ZipFilesOptUI");
    EXPECT_EQ(values.at(zip + L"FileExtensions"), L"missing");
    EXPECT_EQ(values.at(zip + L"Bitmap"), L"sz:" + lib.path + L",123");

    int withSecondPage = 0, withExtensions = 0;
    for (const CatalogRecord& record : kCatalog) {
        const std::wstring key = std::wstring(kCatalogKey) + L"\\" + record.name + L"|";
        withSecondPage += values.at(key + L"UIComponent2") != L"missing";
        withExtensions += values.at(key + L"FileExtensions") != L"missing";
        EXPECT_NE(values.at(key), L"sz:") << "empty description for " << testing::PrintToString(std::wstring(record.name));
    }
    EXPECT_EQ(withSecondPage, 4);
    EXPECT_EQ(withExtensions, 1);
    EXPECT_EQ(values.at(L"verb"), L"sz:\"" + BinFolder() + L"\\Velmora.exe\" \"%1\"");
}

TEST_F(Registration, RegisteringTwiceGivesTheSameContents) {
    ASSERT_EQ(lib.Register(), S_OK);
    const auto first = Snapshot();
    ASSERT_EQ(lib.Register(), S_OK);
    EXPECT_EQ(Snapshot(), first);
}

TEST_F(Registration, UnregisteringRemovesEverythingButTheCatalogKey) {
    ASSERT_EQ(lib.Register(), S_OK);
    ASSERT_EQ(lib.Unregister(), S_OK);
    for (const auto& [key, value] : Snapshot())
        EXPECT_TRUE(value == L"missing key") << testing::PrintToString(key) << " = " << testing::PrintToString(value);
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, kCatalogKey));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, L"inifile\\shell\\Write with &Velmora"));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, L"inifile\\shell\\open\\command"));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, L"TypeLib\\{5237BB51-730A-4CF8-BFFB-5FF5EDF2C4B6}\\1.0"));
    EXPECT_EQ(lib.Unregister(), S_OK); // nothing left to remove is no failure
}

TEST_F(Registration, NoVerbWithoutAnIniFileType) {
    unique_hkey ini;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CLASSES_ROOT, L".ini", 0, KEY_ALL_ACCESS, ini.put()), ERROR_SUCCESS);
    std::wstring fileType;
    ASSERT_TRUE(ReadStringValue(ini.get(), nullptr, fileType));
    ASSERT_EQ(::RegDeleteValueW(ini.get(), nullptr), ERROR_SUCCESS);

    const HRESULT hr = lib.Register();
    const std::wstring verb = Value(HKEY_CLASSES_ROOT, fileType + L"\\shell\\Write with &Velmora\\command", nullptr);
    const std::wstring record = Value(HKEY_LOCAL_MACHINE, std::wstring(kCatalogKey) + L"\\Write INI", L"FileExtensions");
    SetStringValue(ini.get(), nullptr, fileType);

    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(verb, L"missing key");
    EXPECT_EQ(record, L"sz:.ini");
}

TEST_F(Registration, ClassesAreCreatableAndDescribeThemselves) {
    ASSERT_EQ(lib.Register(), S_OK);
    ASSERT_TRUE(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    for (const ClassEntry& entry : kClasses) {
        const std::wstring progId = std::wstring(L"VelmoraExt.") + entry.name;
        CLSID clsid{};
        ASSERT_EQ(::CLSIDFromProgID(progId.c_str(), &clsid), S_OK) << testing::PrintToString(progId);
        EXPECT_TRUE(clsid == *entry.clsid);
        com_ptr<IProvideClassInfo> info;
        ASSERT_EQ(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IProvideClassInfo, info.put_void()), S_OK);
        com_ptr<ITypeInfo> type;
        ASSERT_EQ(info->GetClassInfo(type.put()), S_OK);
        bstr name;
        ASSERT_EQ(type->GetDocumentation(MEMBERID_NIL, name.receive(), nullptr, nullptr, nullptr), S_OK);
        EXPECT_EQ(name.str(), entry.name);
        const IID& primary = entry.kind == ClassKind::Action ? IID_IBuildAction : IID_IActionPage;
        EXPECT_TRUE(info.query<IUnknown>());
        com_ptr<IUnknown> asPrimary;
        EXPECT_EQ(info->QueryInterface(primary, asPrimary.put_void()), S_OK) << testing::PrintToString(progId);
    }
    ::CoUninitialize();
}

TEST_F(Registration, ClassObjectsRefuseAggregationAndUnknownClasses) {
    auto getClassObject = lib.Get<HRESULT WINAPI(REFCLSID, REFIID, void**)>("DllGetClassObject");
    auto canUnloadNow = lib.Get<HRESULT WINAPI()>("DllCanUnloadNow");
    void* object = reinterpret_cast<void*>(1);
    EXPECT_EQ(getClassObject(IID_IBuildAction, IID_IClassFactory, &object), CLASS_E_CLASSNOTAVAILABLE);
    EXPECT_EQ(object, nullptr);

    com_ptr<IClassFactory> factory;
    ASSERT_EQ(getClassObject(CLSID_WriteFileAction, IID_IClassFactory, factory.put_void()), S_OK);
    com_ptr<IUnknown> outer;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IUnknown, outer.put_void()), S_OK);
    com_ptr<IUnknown> inner;
    EXPECT_EQ(factory->CreateInstance(outer.get(), IID_IUnknown, inner.put_void()), CLASS_E_NOAGGREGATION);
    EXPECT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, inner.put_void()), E_NOINTERFACE);
    EXPECT_EQ(canUnloadNow(), S_FALSE);
    outer.reset();
    EXPECT_EQ(canUnloadNow(), S_OK);
}

TEST_F(Registration, Regsvr32RegistersAndUnregisters) {
    auto run = [&](const std::wstring& arguments) {
        std::wstring command = L"regsvr32.exe /s " + arguments + L" \"" + lib.path + L"\"";
        STARTUPINFOW startup{sizeof startup};
        PROCESS_INFORMATION process{};
        if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
            return static_cast<DWORD>(-1);
        unique_process owner(process.hProcess), thread(process.hThread);
        ::WaitForSingleObject(process.hProcess, 60000);
        DWORD code = 0;
        ::GetExitCodeProcess(process.hProcess, &code);
        return code;
    };
    ASSERT_EQ(run(L""), 0u);
    EXPECT_EQ(Value(HKEY_LOCAL_MACHINE, std::wstring(kCatalogKey) + L"\\Wait", L"DefaultProperty"), L"sz:Criteria");
    ASSERT_EQ(run(L"/u"), 0u);
    EXPECT_EQ(Value(HKEY_LOCAL_MACHINE, std::wstring(kCatalogKey) + L"\\Wait", L"DefaultProperty"), L"missing key");
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, kCatalogKey));
}
