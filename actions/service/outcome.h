// What one Service run comes to: a step status, or the one error text that ended the work.
#pragma once
#include "frame/step.h"
#include <string>

namespace tol {

struct ServiceOutcome {
    StepStatus status = StepSucceeded;
    std::wstring error; // logged once at the end of the run; the step then fails
};

// The action's message with the system text of the thread's last error; call right after the failed call.
ServiceOutcome LastErrorOutcome(unsigned messageId);

} // namespace tol
