// Existence tests and deletes that first clear the read-only bit.
#include "fileops.h"

namespace tol {

bool IsExistingFile(const std::wstring& path) noexcept {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool IsExistingFolder(const std::wstring& path) noexcept {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool ClearReadOnly(const std::wstring& path) noexcept {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_READONLY)) return false;
    const DWORD kept = attributes & ~FILE_ATTRIBUTE_READONLY;
    return ::SetFileAttributesW(path.c_str(), kept ? kept : FILE_ATTRIBUTE_NORMAL) != FALSE;
}

// The outcome of ClearReadOnly does not matter: the delete reports for itself.
bool DeleteFileForced(const std::wstring& path) noexcept {
    (void)ClearReadOnly(path);
    return ::DeleteFileW(path.c_str()) != FALSE;
}

bool RemoveFolderForced(const std::wstring& path) noexcept {
    (void)ClearReadOnly(path);
    return ::RemoveDirectoryW(path.c_str()) != FALSE;
}

} // namespace tol
