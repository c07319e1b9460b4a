// The entries below HKLM\SOFTWARE\Microsoft\.NETFramework\AssemblyFolders in which .NET finds further
// assembly folders: one subkey per entry, whose default value is the folder.
#pragma once
#include <string>

namespace tol {

constexpr wchar_t kAssemblyFoldersKey[] = L"SOFTWARE\\Microsoft\\.NETFramework\\AssemblyFolders";

// Creates or opens the entry and sets its default value (REG_SZ) to the folder of assemblyPath without its
// trailing separator (empty for a bare file name). The assembly-folders key must exist. A failure throws
// comet::com_error with the Win32 code as an HRESULT; an entry that names no subkey (only backslashes) fails
// with ERROR_BAD_PATHNAME.
void RecordAssemblyFolder(const std::wstring& entry, const std::wstring& assemblyPath);

// Deletes the entry's default value, then the entry itself unless it has subkeys of its own. Every registry
// failure is passed over. An entry that names no subkey is left alone: its path would open the assembly-folders
// key itself.
void ForgetAssemblyFolder(const std::wstring& entry);

} // namespace tol
