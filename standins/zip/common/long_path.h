// Paths of any length: full paths, and the \\?\ form that the file functions need beyond the classic limit.
#pragma once
#include <string>

namespace zipwin {

// The full path (GetFullPathNameW): "." and ".." resolved, "/" turned into "\"; empty when it cannot be made.
std::wstring FullPath(const std::wstring& path);

// The path as the file functions take it: a full path long enough to need it gets the \\?\ (or \\?\UNC\) prefix.
std::wstring SystemPath(const std::wstring& fullPath);

} // namespace zipwin
