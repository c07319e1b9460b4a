// Creating every missing folder of a path, one component after the other.
#include "fileops.h"
#include "paths.h"
#include <new>

namespace tol {
namespace {

bool IsBareDrive(const std::wstring& path) noexcept { return path.size() == 2 && path[1] == L':'; }

std::size_t NextSeparator(const std::wstring& path, std::size_t from) noexcept {
    for (std::size_t i = from; i < path.size(); ++i)
        if (IsPathSeparator(path[i])) return i;
    return std::wstring::npos;
}

// A folder that another process creates between the test and the create is present all the same.
bool EnsureFolder(const std::wstring& folder) noexcept {
    if (::GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    if (::CreateDirectoryW(folder.c_str(), nullptr)) return true;
    const DWORD code = ::GetLastError();
    if (code == ERROR_ALREADY_EXISTS && ::GetFileAttributesW(folder.c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    ::SetLastError(code);
    return false;
}

// The path grows in a string, so components and whole paths of any length (\\?\ paths) pass.
bool CreateEachFolder(const std::wstring& base, const std::wstring& path) {
    std::size_t position = PathRootLength(path);
    std::wstring current = base + path.substr(0, position);
    for (std::size_t separator = NextSeparator(path, position); separator != std::wstring::npos;
         separator = NextSeparator(path, position)) {
        current = CombinePath(current, std::wstring_view(path).substr(position, separator - position));
        position = separator + 1;
        if (!IsBareDrive(current) && !EnsureFolder(current)) return false;
    }
    return true;
}

} // namespace

bool CreatePath(const std::wstring& path) noexcept { return CreatePath(std::wstring(), path); }

bool CreatePath(const std::wstring& base, const std::wstring& path) noexcept {
    try {
        return CreateEachFolder(base, path);
    } catch (const std::bad_alloc&) {
        ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
}

} // namespace tol
