// Deleting a value, or a key with everything below it.
#pragma once
#include <windows.h>
#include <string>

namespace tol {

// A subKey that names no key (empty, or only backslashes) would make a key-tree deletion take the root
// itself: it is refused with tol::truntime_error.
void RequireNamedKey(const std::wstring& subKey);

// Deletes subKey below root with all its subkeys, after RequireNamedKey; nothing else is ever deleted.
// A failed deletion throws tol::truntime_error with the system's text.
void DeleteRegistryKey(HKEY root, const std::wstring& subKey);

// Deletes one value of subKey below root. A key that does not open or a value that is not there is no failure.
void DeleteRegistryValue(HKEY root, const std::wstring& subKey, const std::wstring& valueName) noexcept;

} // namespace tol
