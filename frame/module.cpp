#include "module.h"

namespace tol {
namespace {
volatile LONG g_locks = 0;
}

void LockModule() noexcept { ::InterlockedIncrement(&g_locks); }
void UnlockModule() noexcept { ::InterlockedDecrement(&g_locks); }
bool IsModuleLocked() noexcept { return ::InterlockedCompareExchange(&g_locks, 0, 0) != 0; }

} // namespace tol
