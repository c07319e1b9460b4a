#include "statewait.h"
#include "frame/messages.h"
#include "progress.h"
#include <algorithm>

namespace tol {
namespace {

constexpr unsigned kErrorQueryingStatus = 27; // "Error querying service status: %1"
constexpr unsigned kServiceHung = 28;         // "Service hung while stopping"
constexpr DWORD kShortestPoll = 100;

// The service's own estimate; a service that gives none is polled every 100 ms rather than back to back.
// A cleared record (no service type yet) has not come from the service: it is read at once.
DWORD PollInterval(const SERVICE_STATUS& status) noexcept {
    if (status.dwServiceType == 0) return 0;
    return std::max(status.dwWaitHint, kShortestPoll);
}

} // namespace

ServiceOutcome WaitForServiceState(SC_HANDLE service, SERVICE_STATUS& status, DWORD wanted, HANDLE stopEvent) {
    StopProgress progress(status);
    for (;;) {
        if (status.dwCurrentState == wanted) return {StepSucceeded};
        if (wanted == SERVICE_STOPPED && progress.IsHung(status))
            return {StepFailed, FormatResourceMessage(kServiceHung)};
        if (::WaitForSingleObject(stopEvent, PollInterval(status)) != WAIT_TIMEOUT) return {StepStopped};
        if (!::QueryServiceStatus(service, &status)) return LastErrorOutcome(kErrorQueryingStatus);
    }
}

} // namespace tol
