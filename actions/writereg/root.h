// The root key a run works below: a predefined key of this computer, or that key of another computer.
#pragma once
#include "frame/handles.h"
#include <string>

namespace tol {

// Only the platform's root keys are accepted; any other number would be taken as a handle of this process.
// An empty computer gives the local root (closing it has no effect); otherwise the root is connected on
// \\computer. A failed connection throws tol::truntime_error with the system's text.
unique_hkey OpenRegistryRoot(long rootKey, const std::wstring& computer);

} // namespace tol
