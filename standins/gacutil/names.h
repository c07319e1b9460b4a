// Assembly names: a file's base name without its extension, or the name an uninstall is given.
#pragma once
#include <string>
#include <string_view>

namespace gac {

constexpr bool IsSeparator(wchar_t c) noexcept { return c == L'\\' || c == L'/'; }

// The text after the last separator.
std::wstring FileNamePart(std::wstring_view path);

// The file name without its extension (the text from its last dot on): "My.Lib.dll" gives "My.Lib".
std::wstring AssemblyNameOfFile(std::wstring_view path);

// What an uninstall names: a display name ("My.Lib, Version=1.0.0.0, ...") gives the text before its first
// comma, blanks trimmed; a path (one with a separator or a colon, or ending in .dll or .exe) gives its
// assembly name;
// anything else is the assembly name as it stands, blanks trimmed.
std::wstring AssemblyNameOfArgument(std::wstring_view argument);

// A name that is a single plain folder name: not empty, not "." or "..", no character that a file name cannot
// hold, no trailing dot or blank (the file system would drop them and so join two names).
bool IsValidAssemblyName(std::wstring_view name) noexcept;

} // namespace gac
