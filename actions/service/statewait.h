// Waiting until a service reaches the running or the stopped state.
#pragma once
#include "outcome.h"
#include <windows.h>
#include <winsvc.h>

namespace tol {

// Reads the status at the interval of the service's last wait hint until its state is the wanted one, watching
// the build's stop event meanwhile. status holds the last status read: cleared before a start (the first read
// then comes at once), the one the stop control returned before a stop (a service already stopped is not read
// again). A start has no time limit; a stop that makes no progress fails with "Service hung while stopping".
ServiceOutcome WaitForServiceState(SC_HANDLE service, SERVICE_STATUS& status, DWORD wanted, HANDLE stopEvent);

} // namespace tol
