#include "progress.h"
#include <algorithm>

namespace tol {
namespace {
constexpr ULONGLONG kShortestAllowance = 10000;
} // namespace

StopProgress::StopProgress(const SERVICE_STATUS& status) noexcept
    : state_(status.dwCurrentState), checkpoint_(status.dwCheckPoint), since_(::GetTickCount64()) {}

bool StopProgress::IsHung(const SERVICE_STATUS& status) noexcept {
    const ULONGLONG now = ::GetTickCount64();
    if (status.dwCurrentState != state_ || status.dwCheckPoint != checkpoint_) {
        state_ = status.dwCurrentState;
        checkpoint_ = status.dwCheckPoint;
        since_ = now;
        return false;
    }
    return now - since_ > std::max<ULONGLONG>(2ull * status.dwWaitHint, kShortestAllowance);
}

} // namespace tol
