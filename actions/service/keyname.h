// From the display name that the Service page lists to the key name that opens the service.
#pragma once
#include <windows.h>
#include <winsvc.h>
#include <string>

namespace tol {

// False, with the platform's error code, when the manager knows no service of that display name; a key name
// that is not also a display name is not found.
[[nodiscard]] bool LookUpKeyName(SC_HANDLE manager, const std::wstring& displayName, std::wstring& keyName);

} // namespace tol
