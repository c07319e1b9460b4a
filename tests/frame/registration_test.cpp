// Registration of the real DLL, read back from the registry of the prefix.
#include "frame/bstr.h"
#include "frame/classes.h"
#include "frame/com_ptr.h"
#include "frame/handles.h"
#include "frame/registry.h"
#include "script_runner.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <map>
#include <string>

using namespace tol;

namespace {

const std::wstring kLibid = L"{5237BB51-730A-4CF8-BFFB-5FF5EDF2C4B6}", kTypeLib = L"TypeLib\\" + kLibid + L"\\1.0";

std::wstring LibraryPath() { return test::BinFolder() + L"\\VelmoraExt.dll"; }
HRESULT Register() { return test::CallLibrary("DllRegisterServer"); }
HRESULT Unregister() { return test::CallLibrary("DllUnregisterServer"); }

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

// The host's view of each action; components are ProgIDs without "VelmoraExt.".
struct Record {
    const wchar_t *name, *category, *action, *page1, *page2;
    DWORD help;
    const wchar_t* property;
    int bitmap;
};
const Record kRecords[] = {
    {L"Write Registry", L"Miscellaneous", L"WriteRegAction", L"WriteRegUI", nullptr, 519, L"SubKey", 104},
    {L"Write File", L"Files", L"WriteFileAction", L"WriteFileUI", nullptr, 518, L"Filename", 114},
    {L"Write INI", L"Files", L"WriteINIAction", L"WriteINIUI", nullptr, 529, L"Filename", 120},
    {L"Wait", L"Miscellaneous", L"WaitAction", L"WaitUI", nullptr, 517, L"Criteria", 115},
    {L"Service", L"Server", L"ServiceAction", L"ServiceUI", nullptr, 523, L"Service", 116},
    {L"Copy Files", L"Files", L"CopyFilesAction", L"CopyFilesUI", L"CopyFilesOptUI", 524, L"SourceDir", 117},
    {L"GAC Install", L"Server", L"GACInstallAction", L"GACInstallUI", nullptr, 525, L"Filename", 118},
    {L"Replace in File", L"Files", L"FileReplaceAction", L"FileReplaceUI", nullptr, 527, L"FileIn", 119},
    {L"COM+ Application", L"Server", L"COMPlusAppAction", L"COMPlusAppUI", L"COMPlusPropUI", 530, L"Application", 121},
    {L"COM+ Component", L"Server", L"COMPlusCompAction", L"COMPlusCompUI", L"COMPlusPropUI", 531, L"Component", 122},
    {L"ZIP Files", L"Files", L"ZipFilesAction", L"ZipFilesUI", L"ZipFilesOptUI", 535, L"Dest", 123},
    {L"UNZIP Files", L"Files", L"UnzipFilesAction", L"UnzipFilesUI", nullptr, 536, L"Source", 124},
};
constexpr wchar_t kAnyText[] = L"sz:*"; // the descriptions but one: loaded from the string table

// Every value that registration writes, as "key|value name", and what it should hold. Keys under "Software\" are
// below HKEY_LOCAL_MACHINE, the others below HKEY_CLASSES_ROOT.
std::map<std::wstring, std::wstring> Expected() {
    std::map<std::wstring, std::wstring> all;
    for (const ClassEntry& entry : kClasses) {
        const std::wstring name = entry.name, clsid = L"CLSID\\" + GuidText(*entry.clsid), progId = L"VelmoraExt." + name;
        all.insert({{clsid + L"|", L"sz:" + name}, {clsid + L"\\InprocServer32|", L"sz:" + LibraryPath()},
                    {clsid + L"\\InprocServer32|ThreadingModel", L"sz:Apartment"}, {clsid + L"\\Programmable|", L"sz:"},
                    {clsid + L"\\TypeLib|", L"sz:" + kLibid}, {clsid + L"\\ProgID|", L"sz:" + progId},
                    {progId + L"|", L"sz:" + name}, {progId + L"\\CLSID|", L"sz:" + GuidText(*entry.clsid)}});
    }
    const auto sz = [](const wchar_t* text, const wchar_t* prefix = L"") {
        return text ? L"sz:" + std::wstring(prefix) + text : std::wstring(L"missing");
    };
    const wchar_t* const prog = L"VelmoraExt.";
    for (const Record& r : kRecords) {
        const std::wstring key = std::wstring(kCatalogKey) + L"\\" + r.name + L"|", ini = L"Write INI";
        all.insert({{key, kAnyText}, {key + L"Category", sz(r.category)}, {key + L"ActionComponent", sz(r.action, prog)},
                    {key + L"UIComponent1", sz(r.page1, prog)}, {key + L"UIComponent2", sz(r.page2, prog)},
                    {key + L"FileExtensions", sz(r.name == ini ? L".ini" : nullptr)},
                    {key + L"HelpContext", L"dword:" + std::to_wstring(r.help)}, {key + L"DefaultProperty", sz(r.property)},
                    {key + L"Bitmap", L"sz:" + LibraryPath() + L"," + std::to_wstring(r.bitmap)}});
    }
    all[std::wstring(kCatalogKey) + L"\\Write INI|"] = L"sz:Create, update, or delete a value in an INI file";
    all[L"inifile\\shell\\Write with &Velmora\\command|"] = L"sz:\"" + test::BinFolder() + L"\\Velmora.exe\" \"%1\"";
    return all;
}

// What the registry holds for each value of Expected().
std::map<std::wstring, std::wstring> Snapshot() {
    std::map<std::wstring, std::wstring> all;
    for (const auto& [key, expected] : Expected()) {
        const std::wstring path = key.substr(0, key.find(L'|')), name = key.substr(path.size() + 1);
        const HKEY root = path.rfind(L"Software\\", 0) == 0 ? HKEY_LOCAL_MACHINE : HKEY_CLASSES_ROOT;
        all[key] = Value(root, path, name.empty() ? nullptr : name.c_str());
    }
    return all;
}

class Registration : public testing::Test {
protected:
    void TearDown() override { Unregister(); }
};

} // namespace

TEST_F(Registration, WritesClassesTypeLibraryAndCatalogTheSameEachTime) {
    ASSERT_EQ(Register(), S_OK);
    const auto values = Snapshot();
    for (const auto& [key, expected] : Expected()) {
        const std::wstring& value = values.at(key);
        if (expected == kAnyText)
            EXPECT_TRUE(value.size() > 3 && value.compare(0, 3, L"sz:") == 0) << testing::PrintToString(key);
        else
            EXPECT_EQ(value, expected) << testing::PrintToString(key);
    }
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, kTypeLib));

    ASSERT_EQ(Register(), S_OK);
    EXPECT_EQ(Snapshot(), values) << "registering again changed the registry";
}

// Through regsvr32 as a user registers; unregistering removes every value that registration writes.
TEST_F(Registration, Regsvr32UnregistersEverythingButTheCatalogKey) {
    const test::ScratchFolder folder;
    const auto regsvr32 = [&](const std::wstring& options) {
        return test::RunProgram(L"regsvr32.exe /s " + options + L"\"" + LibraryPath() + L"\"", folder.path()).exitCode;
    };
    ASSERT_EQ(regsvr32(L""), 0u);
    EXPECT_EQ(Value(HKEY_LOCAL_MACHINE, std::wstring(kCatalogKey) + L"\\Wait", L"DefaultProperty"), L"sz:Criteria");
    ASSERT_EQ(regsvr32(L"/u "), 0u);
    for (const auto& [key, value] : Snapshot())
        EXPECT_TRUE(value == L"missing key") << testing::PrintToString(key) << " = " << testing::PrintToString(value);
    EXPECT_TRUE(KeyExists(HKEY_LOCAL_MACHINE, kCatalogKey));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, L"inifile\\shell\\Write with &Velmora"));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, L"inifile\\shell\\open\\command"));
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, kTypeLib));
    EXPECT_EQ(Unregister(), S_OK); // nothing left to remove is no failure
}

TEST_F(Registration, NoVerbWithoutAnIniFileType) {
    unique_hkey ini;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CLASSES_ROOT, L".ini", 0, KEY_ALL_ACCESS, ini.put()), ERROR_SUCCESS);
    std::wstring fileType;
    ASSERT_TRUE(ReadStringValue(ini.get(), nullptr, fileType));
    ASSERT_EQ(::RegDeleteValueW(ini.get(), nullptr), ERROR_SUCCESS);

    const HRESULT hr = Register();
    const std::wstring verb = Value(HKEY_CLASSES_ROOT, fileType + L"\\shell\\Write with &Velmora\\command", nullptr);
    const std::wstring record = Value(HKEY_LOCAL_MACHINE, std::wstring(kCatalogKey) + L"\\Write INI", L"FileExtensions");
    SetStringValue(ini.get(), nullptr, fileType);

    EXPECT_EQ(hr, S_OK);
    EXPECT_EQ(verb, L"missing key");
    EXPECT_EQ(record, L"sz:.ini");
}

// Through each ProgID as the host creates them: the class that answers names itself as its type information does.
TEST_F(Registration, ClassesAreCreatableAndDescribeThemselves) {
    ASSERT_EQ(Register(), S_OK);
    ASSERT_TRUE(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    for (const ClassEntry& entry : kClasses) {
        const std::wstring progId = std::wstring(L"VelmoraExt.") + entry.name;
        SCOPED_TRACE(testing::PrintToString(progId));
        CLSID clsid{};
        ASSERT_EQ(::CLSIDFromProgID(progId.c_str(), &clsid), S_OK);
        com_ptr<IProvideClassInfo> info;
        ASSERT_EQ(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IProvideClassInfo, info.put_void()), S_OK);
        com_ptr<ITypeInfo> type;
        ASSERT_EQ(info->GetClassInfo(type.put()), S_OK);
        bstr name;
        ASSERT_EQ(type->GetDocumentation(MEMBERID_NIL, name.receive(), nullptr, nullptr, nullptr), S_OK);
        EXPECT_EQ(name.str(), entry.name);
        com_ptr<IUnknown> primary;
        EXPECT_EQ(info->QueryInterface(entry.kind == ClassKind::Action ? IID_IBuildAction : IID_IActionPage,
                                       primary.put_void()),
                  S_OK);
    }
    ::CoUninitialize();
}

TEST_F(Registration, ClassObjectsRefuseAggregationAndUnknownClasses) {
    const unique_module library(::LoadLibraryW(LibraryPath().c_str()));
    using GetClassObject = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
    const auto getClassObject = reinterpret_cast<GetClassObject>(::GetProcAddress(library.get(), "DllGetClassObject"));
    const auto canUnloadNow = reinterpret_cast<HRESULT(WINAPI*)()>(::GetProcAddress(library.get(), "DllCanUnloadNow"));
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
