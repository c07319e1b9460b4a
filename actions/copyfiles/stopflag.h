// The build's stop event as Copy Files watches it: a registered wait latches a flag the moment the event is
// set, so that the stop test made before every entry, every file and inside every copy is a memory read and
// not a call into the platform (a zero wait costs about 0.1 ms under Wine: more than comparing a file).
#pragma once
#include "frame/handles.h"
#include "VelmoraSvr.h"
#include <atomic>
#include <memory>

namespace tol {

class StopFlag {
public:
    // Takes the build's stop event (GetStopEvent); the host owns it, it is only waited on here.
    explicit StopFlag(IBuildRun* build);
    StopFlag(const StopFlag&) = delete;
    StopFlag& operator=(const StopFlag&) = delete;

    // Latched: true once the event has been seen set, even if the host resets it afterwards.
    [[nodiscard]] bool IsStopped() const noexcept;
    // Records a stop that a wait on the event itself has seen.
    void Latch() noexcept { state_->stopped.store(true, std::memory_order_release); }
    HANDLE event() const noexcept { return event_; }

private:
    struct State {
        std::atomic<bool> stopped{false};
    };
    struct wait_traits {
        using type = HANDLE;
        static type invalid() noexcept { return nullptr; }
        // Waits for a callback that is running to return, so the state outlives every callback.
        static void close(type h) noexcept { ::UnregisterWaitEx(h, INVALID_HANDLE_VALUE); }
    };
    using unique_wait = unique_handle<wait_traits>;

    static void CALLBACK OnSignalled(void* context, BOOLEAN timedOut) noexcept;

    HANDLE event_ = nullptr;
    std::unique_ptr<State> state_;
    unique_wait wait_;  // none when the platform refused the registration: the test then polls the event
};

} // namespace tol
