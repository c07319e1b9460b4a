// Texts for the archive libraries: narrow strings in the system's ANSI code page.
#pragma once
#include <string>
#include <string_view>

namespace tol {

// The text in the ANSI code page; characters that the code page lacks become its default character.
std::string ToAnsi(std::wstring_view text);

// The same conversion, but a conversion that the platform refuses throws comet::com_error with its Win32 error.
std::string ToAnsiChecked(std::wstring_view text);

} // namespace tol
