// Wait: holds the build until an amount of time has elapsed, a time or date/time is reached, or a file is
// created or changed. Every wait also ends at once when the build's stop event is set.
#include "actions/actions.h"
#include "calendar.h"
#include "elapsed.h"
#include "filewatch.h"
#include "frame/messages.h"
#include "frame/step.h"
#include "stopwait.h"
#include "target.h"

namespace tol {
namespace {

enum WaitCriterion : long { ElapsedTime = 0, TimeOrDate = 1, FileChange = 2 };

constexpr unsigned kElapsedTimePassed = 13;    // "Elapsed time has passed"
constexpr unsigned kDateTimeReached = 14;      // "Specified date/time has been reached"
constexpr unsigned kFileChanged = 15;          // "File has been created or modified"
constexpr unsigned kCannotMonitorFolder = 16;  // "Unable to monitor directory '%1' for changes: %2"
constexpr unsigned kDateInPast = 17;           // "Specified date is in the past."
constexpr unsigned kInvalidElapsedTime = 18;   // "Invalid amount of time specified, must be in format HH:MM:SS."
constexpr unsigned kInvalidDateTime = 19;      // "Invalid date/time specified, must be a valid time (HH:MM) ..."

StepStatus LogAndReturn(IBuildRun* build, unsigned messageId, StepStatus status) {
    LogMessage(build, FormatResourceMessage(messageId));
    return status;
}

// A stop request logs nothing; a wait that ran its course logs the criterion's completion message.
StepStatus Finish(IBuildRun* build, WaitEnd end, unsigned completionId) {
    if (end == WaitEnd::Stopped) return StepStopped;
    return LogAndReturn(build, completionId, StepSucceeded);
}

StepStatus WaitForElapsedTime(IBuildRun* build, const std::wstring& criteria, HANDLE stopEvent) {
    const std::optional<std::uint64_t> milliseconds = ElapsedMilliseconds(criteria);
    if (!milliseconds) return LogAndReturn(build, kInvalidElapsedTime, StepFailed);
    return Finish(build, WaitOnStopEvent(stopEvent, *milliseconds), kElapsedTimePassed);
}

StepStatus WaitForTimeOrDate(IBuildRun* build, const std::wstring& criteria, HANDLE stopEvent) {
    const WallTime now = CurrentLocalTime();
    const TimeWait plan = PlanTimeWait(criteria, now);
    if (plan.outcome == TimeWait::Invalid) return LogAndReturn(build, kInvalidDateTime, StepFailed);
    if (plan.outcome == TimeWait::InPast) return LogAndReturn(build, kDateInPast, StepFailed);
    return Finish(build, WaitOnStopEvent(stopEvent, plan.milliseconds), kDateTimeReached);
}

StepStatus WaitForFile(IBuildRun* build, const std::wstring& path, HANDLE stopEvent) {
    const FileWaitResult result = WaitForFileChange(path, stopEvent);
    switch (result.end) {
    case FileWaitEnd::Changed:
        return LogAndReturn(build, kFileChanged, StepSucceeded);
    case FileWaitEnd::CannotMonitor:
        LogMessage(build, FormatResourceMessage(kCannotMonitorFolder, {path, SystemErrorText(result.error)}));
        return StepFailed;
    default:
        return StepStopped;
    }
}

} // namespace

// Any WaitFor other than 0 and 2 is the time criterion, and completes with that criterion's message.
long RunWait(IBuildRun* build, IBuildStep* step) {
    const std::wstring criteria = GetStepText(step, build, L"Criteria");
    const long waitFor = GetStepLong(step, build, L"WaitFor");
    const StopSignal stop(build);
    if (waitFor == ElapsedTime) return WaitForElapsedTime(build, criteria, stop.event());
    if (waitFor == FileChange) return WaitForFile(build, criteria, stop.event());
    return WaitForTimeOrDate(build, criteria, stop.event());
}

} // namespace tol
