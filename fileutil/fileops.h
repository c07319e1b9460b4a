// File-system helpers that report success as a boolean and leave the failing call's error code
// (GetLastError) for the caller; none of them throws.
#pragma once
#include <windows.h>
#include <string>

namespace tol {

// The path exists and is not a folder.
[[nodiscard]] bool IsExistingFile(const std::wstring& path) noexcept;
// The path exists and is a folder.
[[nodiscard]] bool IsExistingFolder(const std::wstring& path) noexcept;

// True when the item was read-only and that bit is now cleared; every other attribute is kept. False when the
// attributes cannot be read or changed, or the item was not read-only.
[[nodiscard]] bool ClearReadOnly(const std::wstring& path) noexcept;
// Clears the read-only bit (whatever that gives), then deletes the file or removes the empty folder.
[[nodiscard]] bool DeleteFileForced(const std::wstring& path) noexcept;
[[nodiscard]] bool RemoveFolderForced(const std::wstring& path) noexcept;

// Creates every missing folder of base + path. Only components followed by a separator are folders: pass
// folder paths with a trailing separator. A drive root, a server name (\\server\...) and the \\?\ and
// \\.\ prefixes are taken whole; an existing item of any kind counts as present. On failure the error code is
// that of the CreateDirectoryW that failed.
[[nodiscard]] bool CreatePath(const std::wstring& path) noexcept;
[[nodiscard]] bool CreatePath(const std::wstring& base, const std::wstring& path) noexcept;

} // namespace tol
