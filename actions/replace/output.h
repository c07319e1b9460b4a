// Writing the replaced text to the output file.
#pragma once
#include <windows.h>
#include <string>

namespace tol {

// Creates or replaces the file and writes the text in the code page with every line break as CR LF. The text is
// first proven convertible to the code page, so that a code page the platform cannot write fails with
// "Failed to convert text to codepage N" before the file is created or truncated. A NUL character in the text is
// written like any other. clearReadOnly: a read-only file loses that bit first, so that it can be replaced.
void WriteOutputFile(const std::wstring& name, UINT codePage, const std::wstring& text, bool clearReadOnly);

} // namespace tol
