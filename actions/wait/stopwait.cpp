#include "stopwait.h"
#include <algorithm>

namespace tol {
namespace {
constexpr std::uint64_t kLongestPiece = 24ull * 60 * 60 * 1000; // one day
} // namespace

WaitEnd WaitOnStopEvent(HANDLE stopEvent, std::uint64_t milliseconds) noexcept {
    const std::uint64_t deadline = ::GetTickCount64() + milliseconds;
    for (;;) {
        const std::uint64_t now = ::GetTickCount64();
        const std::uint64_t left = deadline > now ? deadline - now : 0;
        const std::uint64_t piece = std::min(left, kLongestPiece);
        if (::WaitForSingleObject(stopEvent, static_cast<DWORD>(piece)) != WAIT_TIMEOUT) return WaitEnd::Stopped;
        if (piece == left) return WaitEnd::TimedOut;
    }
}

} // namespace tol
