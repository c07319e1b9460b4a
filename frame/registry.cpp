#include "registry.h"
#include "errors.h"
#include <objbase.h>
#include <vector>

namespace tol {

LONG DeleteKeyTree(HKEY parent, const std::wstring& name) noexcept {
    // An empty name would open the parent itself and empty it: never.
    if (name.empty()) return ERROR_INVALID_PARAMETER;
    unique_hkey key;
    LONG status = ::RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ | KEY_WRITE, key.put());
    if (status != ERROR_SUCCESS) return status;
    for (;;) {
        // Index 0 each time: every pass removes the first remaining subkey.
        wchar_t child[256];
        DWORD length = 256;
        if (::RegEnumKeyExW(key.get(), 0, child, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        status = DeleteKeyTree(key.get(), std::wstring(child, length));
        if (status != ERROR_SUCCESS) return status;
    }
    key.reset();
    return ::RegDeleteKeyW(parent, name.c_str());
}

unique_hkey CreateKey(HKEY root, const std::wstring& path) {
    unique_hkey key;
    THROW_IF_WIN32_ERROR(::RegCreateKeyExW(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                                           key.put(), nullptr));
    return key;
}

LONG TrySetStringValue(HKEY key, const wchar_t* name, const std::wstring& text) noexcept {
    return ::RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                            static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

void SetStringValue(HKEY key, const wchar_t* name, const std::wstring& text) {
    THROW_IF_WIN32_ERROR(TrySetStringValue(key, name, text));
}

bool ReadStringValue(HKEY key, const wchar_t* name, std::wstring& text) {
    DWORD type = 0, size = 0;
    if (::RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS) return false;
    if (type != REG_SZ && type != REG_EXPAND_SZ) return false;
    std::vector<wchar_t> buffer(size / sizeof(wchar_t) + 1, L'\0');
    if (::RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size) != ERROR_SUCCESS)
        return false;
    text.assign(buffer.data());
    return true;
}

std::wstring GuidText(REFGUID guid) {
    wchar_t text[40];
    const int length = ::StringFromGUID2(guid, text, 40);
    return std::wstring(text, length > 0 ? length - 1 : 0);
}

} // namespace tol
