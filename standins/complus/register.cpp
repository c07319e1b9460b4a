// Registration under the catalog's class identifier, only where no other catalog is registered: an existing
// server of that class that is not this DLL (by file name) is left in place and registration fails.
#include "failure.h"
#include "frame/registry.h"
#include <comadmin.h>

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace complus {
namespace {

constexpr wchar_t kFileName[] = L"VelmoraComAdmin.dll";
constexpr const wchar_t* kServerKinds[] = {L"InprocServer32", L"LocalServer32"};

std::wstring ClassKey() { return L"CLSID\\" + tol::GuidText(__uuidof(COMAdminCatalog)); }

std::wstring ModuleFileName() {
    std::wstring name(260, L'\0');
    for (;;) {
        const DWORD length =
            ::GetModuleFileNameW(reinterpret_cast<HMODULE>(&__ImageBase), name.data(), static_cast<DWORD>(name.size()));
        if (length == 0) tol::ThrowLastError();
        if (length < name.size()) return name.substr(0, length);
        name.resize(name.size() * 2);
    }
}

std::wstring FileNamePart(const std::wstring& path) {
    const size_t separator = path.find_last_of(L"\\/");
    std::wstring name = separator == std::wstring::npos ? path : path.substr(separator + 1);
    if (name.size() >= 2 && name.front() == L'"' && name.back() == L'"') name = name.substr(1, name.size() - 2);
    return name;
}

bool SameFileName(const std::wstring& server) { return ::lstrcmpiW(FileNamePart(server).c_str(), kFileName) == 0; }

// The server file registered for the class that is not this stand-in; empty when there is none.
std::wstring ForeignServer() {
    for (const wchar_t* kind : kServerKinds) {
        tol::unique_hkey key;
        if (::RegOpenKeyExW(HKEY_CLASSES_ROOT, (ClassKey() + L"\\" + kind).c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS)
            continue;
        std::wstring server;
        if (!tol::ReadStringValue(key.get(), nullptr, server)) server = L"(unnamed)";
        if (!SameFileName(server)) return server;
    }
    return {};
}

void Register() {
    const std::wstring foreign = ForeignServer();
    if (!foreign.empty())
        Fail(HRESULT_FROM_WIN32(ERROR_CLASS_ALREADY_EXISTS),
             L"A COM+ catalog is already registered (" + foreign + L"); the stand-in leaves it in place.");
    const std::wstring file = ModuleFileName();
    tol::SetStringValue(tol::CreateKey(HKEY_CLASSES_ROOT, ClassKey()).get(), nullptr, L"Velmora COM+ catalog stand-in");
    tol::unique_hkey server = tol::CreateKey(HKEY_CLASSES_ROOT, ClassKey() + L"\\InprocServer32");
    tol::SetStringValue(server.get(), nullptr, file);
    tol::SetStringValue(server.get(), L"ThreadingModel", L"Both");
}

// Only a registration of this stand-in is removed; the catalog's contents stay in the store.
void Unregister() {
    if (!ForeignServer().empty()) return;
    const LONG status = tol::DeleteKeyTree(HKEY_CLASSES_ROOT, ClassKey());
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) tol::ThrowWin32(static_cast<DWORD>(status));
}

} // namespace
} // namespace complus

STDAPI DllRegisterServer() { return complus::Guard(IID_NULL, complus::Register); }

STDAPI DllUnregisterServer() { return complus::Guard(IID_NULL, complus::Unregister); }
