// Writing one value: a 32-bit number or a text.
#pragma once
#include <windows.h>
#include <string>

namespace tol {

// ValueType 4 writes REG_DWORD parsed from data; any other type writes data as REG_SZ with its NUL.
// A failed write throws comet::com_error with the Win32 code as an HRESULT.
void WriteRegistryValue(HKEY key, const std::wstring& name, long valueType, const std::wstring& data);

} // namespace tol
