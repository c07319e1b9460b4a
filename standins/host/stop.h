// The run's stop event: set by Ctrl+C or Ctrl+Break, and when the run's time limit runs out.
#pragma once
#include "log.h"
#include "frame/handles.h"
#include <thread>

namespace host {

// One per process (the console handler is process-wide). A second Ctrl+C, once the event is set, is left to the
// system's default handling, which ends the process.
class StopControl {
public:
    // timeoutSeconds 0: no time limit.
    StopControl(Log& log, long timeoutSeconds);
    ~StopControl();
    StopControl(const StopControl&) = delete;
    StopControl& operator=(const StopControl&) = delete;

    // Manual-reset; once set it stays set.
    HANDLE event() const noexcept { return event_.get(); }

private:
    void WatchTime(long timeoutSeconds) noexcept;

    Log& log_;
    tol::unique_event event_;
    tol::unique_event quit_;  // ends the watch thread
    tol::unique_event timer_; // waitable timer
    std::thread watch_;
};

} // namespace host
