#include "stop.h"
#include "frame/errors.h"
#include <atomic>
#include <string>

namespace host {
namespace {

std::atomic<HANDLE> g_stopEvent{nullptr};
std::atomic<Log*> g_log{nullptr};

BOOL WINAPI OnConsoleControl(DWORD type) {
    if (type != CTRL_C_EVENT && type != CTRL_BREAK_EVENT) return FALSE;
    const HANDLE event = g_stopEvent.load();
    if (!event || ::WaitForSingleObject(event, 0) == WAIT_OBJECT_0) return FALSE;
    if (Log* log = g_log.load()) {
        try {
            log->Line(L"== Stop requested (Ctrl+C): stopping");
        } catch (...) {
        }
    }
    ::SetEvent(event);
    return TRUE;
}

} // namespace

StopControl::StopControl(Log& log, long timeoutSeconds)
    : log_(log), event_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)), quit_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    THROW_LAST_ERROR_IF(!event_ || !quit_);
    if (timeoutSeconds > 0) {
        timer_.reset(::CreateWaitableTimerW(nullptr, TRUE, nullptr));
        LARGE_INTEGER due;
        due.QuadPart = -10000000LL * timeoutSeconds; // relative, in 100 ns units
        THROW_LAST_ERROR_IF(!timer_ || !::SetWaitableTimer(timer_.get(), &due, 0, nullptr, nullptr, FALSE));
        watch_ = std::thread([this, timeoutSeconds] { WatchTime(timeoutSeconds); });
    }
    g_log = &log;
    g_stopEvent = event_.get();
    ::SetConsoleCtrlHandler(OnConsoleControl, TRUE);
}

StopControl::~StopControl() {
    ::SetEvent(quit_.get());
    if (watch_.joinable()) watch_.join();
    ::SetConsoleCtrlHandler(OnConsoleControl, FALSE);
    g_stopEvent = nullptr;
    g_log = nullptr;
}

void StopControl::WatchTime(long timeoutSeconds) noexcept {
    const HANDLE handles[] = {quit_.get(), timer_.get()};
    if (::WaitForMultipleObjects(2, handles, FALSE, INFINITE) != WAIT_OBJECT_0 + 1) return;
    try {
        log_.Line(L"== Time limit of " + std::to_wstring(timeoutSeconds) + L" s reached: stopping");
    } catch (...) {
    }
    ::SetEvent(event_.get());
}

} // namespace host
