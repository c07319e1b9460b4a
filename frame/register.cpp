// Registration of the classes, the type library, the action catalog and the shell verb.
#include "barrier.h"
#include "classes.h"
#include "component.h"
#include "fileutil/paths.h"
#include "messages.h"
#include "module.h"
#include "registry.h"
#include "VelmoraExt.h"

namespace tol {
namespace {

std::wstring ModuleFileName() {
    std::wstring name(260, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(ResourceModule(), name.data(), static_cast<DWORD>(name.size()));
        if (length == 0) ThrowLastError();
        if (length < name.size()) {
            name.resize(length);
            return name;
        }
        name.resize(name.size() * 2);
    }
}

std::wstring ProgId(const wchar_t* className) { return std::wstring(kProgIdPrefix) + className; }

void RegisterClass(const ClassEntry& entry, const std::wstring& file) {
    const std::wstring clsid = GuidText(*entry.clsid);
    const std::wstring classKey = L"CLSID\\" + clsid;
    const std::wstring progId = ProgId(entry.name);

    unique_hkey server = CreateKey(HKEY_CLASSES_ROOT, classKey + L"\\InprocServer32");
    SetStringValue(server.get(), nullptr, file);
    SetStringValue(server.get(), L"ThreadingModel", L"Apartment");
    SetStringValue(CreateKey(HKEY_CLASSES_ROOT, classKey + L"\\Programmable").get(), nullptr, L"");
    SetStringValue(CreateKey(HKEY_CLASSES_ROOT, classKey + L"\\TypeLib").get(), nullptr, GuidText(LIBID_VelmoraExt));
    SetStringValue(CreateKey(HKEY_CLASSES_ROOT, classKey + L"\\ProgID").get(), nullptr, progId);
    SetStringValue(CreateKey(HKEY_CLASSES_ROOT, progId + L"\\CLSID").get(), nullptr, clsid);
    SetStringValue(CreateKey(HKEY_CLASSES_ROOT, progId).get(), nullptr, entry.name);
    SetStringValue(CreateKey(HKEY_CLASSES_ROOT, classKey).get(), nullptr, entry.name);
}

void UnregisterClass(const ClassEntry& entry) noexcept {
    (void)DeleteKeyTree(HKEY_CLASSES_ROOT, L"CLSID\\" + GuidText(*entry.clsid));
    (void)DeleteKeyTree(HKEY_CLASSES_ROOT, ProgId(entry.name));
}

// The key of the extension's file type below which the verb lives; empty when the extension has no file type.
std::wstring VerbKeyPath(const std::wstring& extension, const wchar_t* verb) {
    unique_hkey key;
    if (::RegOpenKeyExW(HKEY_CLASSES_ROOT, extension.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return {};
    std::wstring fileType;
    if (!ReadStringValue(key.get(), nullptr, fileType) || fileType.empty()) return {};
    return fileType + L"\\shell\\" + verb;
}

void RegisterVerbs(const CatalogRecord& record, const std::wstring& file) {
    if (!record.extensions || !record.verb) return;
    const std::wstring host = CombinePath(DirectoryPart(file, false), kHostExecutable);
    const std::wstring command = L"\"" + host + L"\" \"%1\"";
    for (const std::wstring& extension : SplitTokens(record.extensions, L";")) {
        const std::wstring path = VerbKeyPath(extension, record.verb);
        if (path.empty()) continue;
        unique_hkey key;
        if (::RegCreateKeyExW(HKEY_CLASSES_ROOT, (path + L"\\command").c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE,
                              KEY_ALL_ACCESS, nullptr, key.put(), nullptr) == ERROR_SUCCESS)
            (void)TrySetStringValue(key.get(), nullptr, command);
    }
}

void UnregisterVerbs(const CatalogRecord& record) {
    if (!record.extensions || !record.verb) return;
    for (const std::wstring& extension : SplitTokens(record.extensions, L";")) {
        const std::wstring path = VerbKeyPath(extension, record.verb);
        if (!path.empty()) (void)DeleteKeyTree(HKEY_CLASSES_ROOT, path);
    }
}

// Catalog records are written on a best-effort basis: a failed write leaves the rest of the registration intact.
void WriteCatalogRecord(const CatalogRecord& record, const std::wstring& file) {
    unique_hkey catalog, key;
    if (::RegCreateKeyExW(HKEY_LOCAL_MACHINE, kCatalogKey, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                          catalog.put(), nullptr) != ERROR_SUCCESS)
        return;
    if (::RegCreateKeyExW(catalog.get(), record.name, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, key.put(),
                          nullptr) != ERROR_SUCCESS)
        return;
    const HKEY k = key.get();
    (void)TrySetStringValue(k, nullptr, LoadResourceText(record.descriptionId));
    (void)TrySetStringValue(k, L"Category", record.category);
    (void)TrySetStringValue(k, L"ActionComponent", ProgId(record.action));
    (void)TrySetStringValue(k, L"UIComponent1", ProgId(record.page1));
    if (record.extensions)
        (void)TrySetStringValue(k, L"FileExtensions", record.extensions);
    else
        ::RegDeleteValueW(k, L"FileExtensions");
    RegisterVerbs(record, file);
    if (record.helpContext) {
        const DWORD help = record.helpContext;
        ::RegSetValueExW(k, L"HelpContext", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&help), sizeof help);
    } else {
        ::RegDeleteValueW(k, L"HelpContext");
    }
    if (record.defaultProperty)
        (void)TrySetStringValue(k, L"DefaultProperty", record.defaultProperty);
    else
        ::RegDeleteValueW(k, L"DefaultProperty");
    (void)TrySetStringValue(k, L"Bitmap", FormatMessageText(L"%1,%2!d!", {file, record.bitmap}));
    if (record.page2) (void)TrySetStringValue(k, L"UIComponent2", ProgId(record.page2));
}

void RemoveCatalogRecord(const CatalogRecord& record) {
    UnregisterVerbs(record);
    unique_hkey catalog;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kCatalogKey, 0, KEY_ALL_ACCESS, catalog.put()) == ERROR_SUCCESS)
        (void)DeleteKeyTree(catalog.get(), record.name);
}

void RegisterTypeLibrary(const std::wstring& file) {
    com_ptr<ITypeLib> library;
    THROW_IF_FAILED(::LoadTypeLib(file.c_str(), library.put()));
    THROW_IF_FAILED(::RegisterTypeLib(library.get(), const_cast<LPOLESTR>(file.c_str()), nullptr));
}

void UnregisterTypeLibrary(const std::wstring& file) noexcept {
    com_ptr<ITypeLib> library;
    if (FAILED(::LoadTypeLib(file.c_str(), library.put()))) return;
    TLIBATTR* attributes = nullptr;
    if (FAILED(library->GetLibAttr(&attributes))) return;
    const TLIBATTR a = *attributes;
    library->ReleaseTLibAttr(attributes);
    ::UnRegisterTypeLib(a.guid, a.wMajorVerNum, a.wMinorVerNum, a.lcid, a.syskind);
}

void RegisterAll() {
    const std::wstring file = ModuleFileName();
    RegisterTypeLibrary(file);
    for (const ClassEntry& entry : kClasses) {
        RegisterClass(entry, file);
        if (const CatalogRecord* record = RecordOfFirstPage(entry)) WriteCatalogRecord(*record, file);
    }
}

} // namespace
} // namespace tol

using namespace tol;

STDAPI DllUnregisterServer() {
    try {
        UnregisterTypeLibrary(ModuleFileName());
        for (const ClassEntry& entry : kClasses) {
            if (const CatalogRecord* record = RecordOfFirstPage(entry)) RemoveCatalogRecord(*record);
            UnregisterClass(entry);
        }
    } catch (...) {
        // Unregistration removes what it can.
    }
    return S_OK;
}

STDAPI DllRegisterServer() {
    try {
        RegisterAll();
        return S_OK;
    } catch (const comet::com_error& e) {
        DllUnregisterServer();
        SetErrorDescription(e.message());
        return E_FAIL;
    } catch (const std::exception& e) {
        DllUnregisterServer();
        ::OutputDebugStringA(e.what());
        return E_FAIL;
    }
}
