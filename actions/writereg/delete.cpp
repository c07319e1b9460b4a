#include "delete.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include "frame/registry.h"

namespace tol {
namespace {

// Backslashes alone name no key: the path would open the root it starts from.
[[nodiscard]] bool NamesNoKey(const std::wstring& subKey) noexcept {
    return subKey.find_first_not_of(L'\\') == std::wstring::npos;
}

} // namespace

void RequireNamedKey(const std::wstring& subKey) {
    // Our guard: the tree of an unnamed key is a whole root key, which no step means to empty.
    if (NamesNoKey(subKey)) {
        throw truntime_error(L"The key to delete must be named: an empty key path would delete the whole root key.");
    }
}

void DeleteRegistryKey(HKEY root, const std::wstring& subKey) {
    RequireNamedKey(subKey);
    const LONG status = DeleteKeyTree(root, subKey);
    if (status != ERROR_SUCCESS) throw truntime_error(SystemErrorText(static_cast<HRESULT>(status)));
}

void DeleteRegistryValue(HKEY root, const std::wstring& subKey, const std::wstring& valueName) noexcept {
    unique_hkey key;
    if (::RegOpenKeyExW(root, subKey.c_str(), 0, KEY_ALL_ACCESS, key.put()) != ERROR_SUCCESS) return;
    (void)::RegDeleteValueW(key.get(), valueName.c_str());
}

} // namespace tol
