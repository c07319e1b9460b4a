// Waiting on the build's stop event for a span that may exceed the platform's 32-bit timeout.
#pragma once
#include <windows.h>
#include <cstdint>

namespace tol {

enum class WaitEnd { TimedOut, Stopped };

// Waits in pieces shorter than INFINITE until the whole span has passed, measured on the tick count, so that a
// span beyond 49.7 days never wraps around. Stopped when the event is set or a wait fails; a span of 0 still
// tests the event once.
[[nodiscard]] WaitEnd WaitOnStopEvent(HANDLE stopEvent, std::uint64_t milliseconds) noexcept;

} // namespace tol
