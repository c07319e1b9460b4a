// Registry helpers shared by registration and the registry actions.
#pragma once
#include "handles.h"
#include <string>

namespace tol {

// Deletes the key name below parent with everything below it; returns the Win32 code of the first failure.
// Only the named key and what lies below it are ever deleted; an empty name is refused (ERROR_INVALID_PARAMETER).
[[nodiscard]] LONG DeleteKeyTree(HKEY parent, const std::wstring& name) noexcept;

// Creates (or opens) root\path with KEY_ALL_ACCESS; failures throw comet::com_error.
unique_hkey CreateKey(HKEY root, const std::wstring& path);

// Writes a REG_SZ with its terminating NUL; name null is the default value. Failures throw comet::com_error.
void SetStringValue(HKEY key, const wchar_t* name, const std::wstring& text);

// The same without raising: the status code of the write.
[[nodiscard]] LONG TrySetStringValue(HKEY key, const wchar_t* name, const std::wstring& text) noexcept;

// Reads a REG_SZ (or REG_EXPAND_SZ) value; false when it cannot be read.
[[nodiscard]] bool ReadStringValue(HKEY key, const wchar_t* name, std::wstring& text);

std::wstring GuidText(REFGUID guid);

} // namespace tol
