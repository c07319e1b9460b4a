// The retry rule of Copy Files: an error known to pass is retried after a pause on the stop event, a stop ends
// the operation, any other error fails the step with a message naming the path and the platform's text.
#pragma once
#include "copyrun.h"
#include "frame/step.h"
#include <string>

namespace tol {

// done is StepSucceeded, so that every outcome but OutcomeRetry is the status to hand up the walk.
enum RetryOutcome : long {
    OutcomeDone = StepSucceeded,
    OutcomeFailed = StepFailed,
    OutcomeStopped = StepStopped,
    OutcomeRetry = 3,
};

// How an error code is treated.
enum class ErrorClass { Passing, ShareUndefined, Stop, Other };
[[nodiscard]] ErrorClass ClassifyError(DWORD code) noexcept;

// One operation's attempts: created before the first, dropped at the first outcome that is not OutcomeRetry.
struct RetryState {
    unsigned messageId;       // the message that reports giving up (10 or 63)
    const std::wstring& path;  // the path shown in the messages
    CopyFilesRun& run;
    long failures = 0;
    RetryOutcome outcome = OutcomeRetry;
};

// Call with the operation's result at once: on failure the thread's last-error code must still be the
// operation's. Logs message 38 before each pause and the state's message when it gives up; a stop logs nothing.
[[nodiscard]] RetryOutcome ResolveFailure(RetryState& state, bool succeeded);

// Repeats operation (a callable returning the platform call's success) while the rule says to retry; returns
// StepSucceeded, StepFailed or StepStopped.
template <class Operation>
[[nodiscard]] StepStatus RunWithRetries(CopyFilesRun& run, unsigned messageId, const std::wstring& path,
                                        Operation&& operation) {
    RetryState state{messageId, path, run};
    while (ResolveFailure(state, operation()) == OutcomeRetry) {
    }
    return static_cast<StepStatus>(state.outcome);
}

// The pause before the next attempt in milliseconds: Delay seconds, a negative Delay counting as none.
[[nodiscard]] std::uint64_t RetryPauseMilliseconds(long delaySeconds) noexcept;

} // namespace tol
