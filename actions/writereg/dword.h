// The number a REG_DWORD step writes, parsed from its text.
#pragma once
#include <windows.h>
#include <string>

namespace tol {

// The text in the ANSI code page read as a signed decimal number: leading white space, an optional sign,
// then digits up to the first other character. Anything else gives 0 ("0x10" is 0); overflow wraps around.
// The whole text is read, however long.
DWORD ParseDwordText(const std::wstring& text);

} // namespace tol
