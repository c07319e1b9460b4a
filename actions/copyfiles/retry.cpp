#include "retry.h"
#include "actions/wait/stopwait.h"
#include "frame/messages.h"
#include <algorithm>

namespace tol {
namespace {

constexpr unsigned kPausing = 38;  // "Error processing '%1': %2, pausing %3!d! seconds before retry..."

struct ErrorRow {
    DWORD code;
    ErrorClass kind;
};

constexpr ErrorRow kErrorClasses[] = {
    {ERROR_PATH_NOT_FOUND, ErrorClass::Passing},   {ERROR_NOT_READY, ErrorClass::Passing},
    {ERROR_CRC, ErrorClass::Passing},              {ERROR_SHARING_VIOLATION, ErrorClass::Passing},
    {ERROR_LOCK_VIOLATION, ErrorClass::Passing},   {ERROR_NETWORK_BUSY, ErrorClass::Passing},
    {ERROR_UNEXP_NET_ERR, ErrorClass::Passing},    {ERROR_SHARING_PAUSED, ErrorClass::Passing},
    {ERROR_REQ_NOT_ACCEP, ErrorClass::Passing},    {ERROR_REDIR_PAUSED, ErrorClass::Passing},
    {ERROR_NET_WRITE_FAULT, ErrorClass::Passing},  {ERROR_DRIVE_LOCKED, ErrorClass::Passing},
    {ERROR_BROKEN_PIPE, ErrorClass::Passing},      {ERROR_OPEN_FAILED, ErrorClass::Passing},
    {ERROR_PATH_BUSY, ErrorClass::Passing},        {ERROR_BUSY, ErrorClass::Passing},
    {ERROR_REM_NOT_LIST, ErrorClass::ShareUndefined}, {ERROR_BAD_NETPATH, ErrorClass::ShareUndefined},
    {ERROR_DEV_NOT_EXIST, ErrorClass::ShareUndefined}, {ERROR_NETNAME_DELETED, ErrorClass::ShareUndefined},
    {ERROR_BAD_NET_NAME, ErrorClass::ShareUndefined},  {ERROR_REQUEST_ABORTED, ErrorClass::Stop},
};

bool IsRetried(const CopyFilesRun& run, ErrorClass kind) noexcept {
    return kind == ErrorClass::Passing || (kind == ErrorClass::ShareUndefined && run.tbd);
}

// Announces the pause and waits it out on the stop event; a stop (or a failing wait) ends the operation.
RetryOutcome PauseBeforeRetry(RetryState& state, const std::wstring& errorText) {
    const std::uint64_t pause = RetryPauseMilliseconds(state.run.delay);
    LogMessage(state.run.build, FormatResourceMessage(kPausing, {state.path, errorText, static_cast<long>(pause / 1000)}));
    if (WaitOnStopEvent(state.run.stop.event(), pause) == WaitEnd::TimedOut) return OutcomeRetry;
    state.run.stop.Latch();
    return OutcomeStopped;
}

} // namespace

ErrorClass ClassifyError(DWORD code) noexcept {
    const auto row = std::find_if(std::begin(kErrorClasses), std::end(kErrorClasses),
                                  [code](const ErrorRow& r) { return r.code == code; });
    return row == std::end(kErrorClasses) ? ErrorClass::Other : row->kind;
}

std::uint64_t RetryPauseMilliseconds(long delaySeconds) noexcept {
    return delaySeconds > 0 ? static_cast<std::uint64_t>(delaySeconds) * 1000 : 0;
}

RetryOutcome ResolveFailure(RetryState& state, bool succeeded) {
    if (succeeded) return state.outcome = OutcomeDone;
    ++state.failures;
    const DWORD code = ::GetLastError();
    const ErrorClass kind = ClassifyError(code);
    if (kind == ErrorClass::Stop) return state.outcome = OutcomeStopped;
    const std::wstring errorText = SystemErrorText(HRESULT_FROM_WIN32(code));
    if (IsRetried(state.run, kind) && state.failures < state.run.retries)
        return state.outcome = PauseBeforeRetry(state, errorText);
    LogMessage(state.run.build, FormatResourceMessage(state.messageId, {state.path, errorText}));
    return state.outcome = OutcomeFailed;
}

} // namespace tol
