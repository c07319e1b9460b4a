// Path texts: separators, the folder part of a path, and joining a folder and a name.
#pragma once
#include <string>
#include <string_view>

namespace tol {

constexpr bool IsPathSeparator(wchar_t c) noexcept { return c == L'\\' || c == L'/'; }

// The text before the last separator, followed by that separator when keepSeparator is set;
// empty when the path has no separator.
std::wstring DirectoryPart(std::wstring_view path, bool keepSeparator);

// The folder, one backslash unless the folder is empty or already ends in a separator, then the name.
std::wstring CombinePath(std::wstring_view folder, std::wstring_view name = {});

// The length of the root that path creation takes whole, its trailing separator included: a drive root (C:\),
// a server name (\\server\), or behind the \\?\ and \\.\ prefixes a drive root, UNC\server\ or a volume
// name. 0 when the path starts with none of them; the whole length when the root has no separator after it.
std::size_t PathRootLength(std::wstring_view path) noexcept;

} // namespace tol
