// The module lock: one count of live objects, held by each object from its first AddRef to its last Release.
#pragma once
#include <windows.h>

namespace tol {

void LockModule() noexcept;
void UnlockModule() noexcept;
bool IsModuleLocked() noexcept;

} // namespace tol
