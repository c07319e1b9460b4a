#include "assembly_folders.h"
#include "fileutil/paths.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/registry.h"

namespace tol {
namespace {

// Backslashes alone name no subkey: below the assembly-folders key they lead back to that key.
bool NamesSubkey(const std::wstring& entry) noexcept { return entry.find_first_not_of(L'\\') != std::wstring::npos; }

[[nodiscard]] LONG OpenKey(const std::wstring& path, unique_hkey& key) noexcept {
    return ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_ALL_ACCESS, key.put());
}

} // namespace

void RecordAssemblyFolder(const std::wstring& entry, const std::wstring& assemblyPath) {
    if (!NamesSubkey(entry)) ThrowWin32(ERROR_BAD_PATHNAME);
    unique_hkey folders;
    THROW_IF_WIN32_ERROR(OpenKey(kAssemblyFoldersKey, folders));
    unique_hkey key;
    THROW_IF_WIN32_ERROR(::RegCreateKeyExW(folders.get(), entry.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                           key.put(), nullptr));
    SetStringValue(key.get(), nullptr, DirectoryPart(assemblyPath, false));
}

void ForgetAssemblyFolder(const std::wstring& entry) {
    if (!NamesSubkey(entry)) return;
    const std::wstring path = std::wstring(kAssemblyFoldersKey) + L"\\" + entry;
    unique_hkey key;
    if (OpenKey(path, key) == ERROR_SUCCESS) {
        (void)::RegDeleteValueW(key.get(), nullptr);
        key.reset();
    }
    unique_hkey folders;
    if (OpenKey(kAssemblyFoldersKey, folders) == ERROR_SUCCESS) {
        (void)::RegDeleteKeyW(folders.get(), entry.c_str()); // fails, and so keeps it, when it has subkeys
    }
}

} // namespace tol
