#include "paths.h"

namespace tol {

std::wstring DirectoryPart(std::wstring_view path, bool keepSeparator) {
    for (size_t i = path.size(); i > 0; --i)
        if (IsPathSeparator(path[i - 1])) return std::wstring(path.substr(0, keepSeparator ? i : i - 1));
    return {};
}

std::wstring CombinePath(std::wstring_view folder, std::wstring_view name) {
    std::wstring result(folder);
    if (!result.empty() && !IsPathSeparator(result.back())) result += L'\\';
    result += name;
    return result;
}

namespace {

bool StartsWithDriveRoot(std::wstring_view path) noexcept {
    return path.size() >= 3 && path[1] == L':' && IsPathSeparator(path[2]);
}

// The position after the separator that ends the name starting at from; the path's length when none does.
std::size_t AfterNextSeparator(std::wstring_view path, std::size_t from) noexcept {
    for (std::size_t i = from; i < path.size(); ++i)
        if (IsPathSeparator(path[i])) return i + 1;
    return path.size();
}

bool StartsWithUncMarker(std::wstring_view path) noexcept {
    return path.size() >= 4 && (path[0] | 0x20) == L'u' && (path[1] | 0x20) == L'n' && (path[2] | 0x20) == L'c' &&
           IsPathSeparator(path[3]);
}

// Behind \\?\ or \\.\ : C:\, UNC\server\ or a volume name such as Volume{...}\.
std::size_t DevicePathRootLength(std::wstring_view path) noexcept {
    constexpr std::size_t prefix = 4;
    const std::wstring_view rest = path.substr(prefix);
    if (StartsWithDriveRoot(rest)) return prefix + 3;
    if (StartsWithUncMarker(rest)) return AfterNextSeparator(path, prefix + 4);
    return AfterNextSeparator(path, prefix);
}

} // namespace

std::size_t PathRootLength(std::wstring_view path) noexcept {
    if (StartsWithDriveRoot(path)) return 3;
    if (path.size() < 3 || !IsPathSeparator(path[0]) || !IsPathSeparator(path[1])) return 0;
    if (path.size() >= 4 && (path[2] == L'?' || path[2] == L'.') && IsPathSeparator(path[3]))
        return DevicePathRootLength(path);
    return AfterNextSeparator(path, 2);
}

} // namespace tol
