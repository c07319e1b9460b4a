#include "stopflag.h"
#include "frame/step.h"

namespace tol {

StopFlag::StopFlag(IBuildRun* build) : event_(StopSignal(build).event()), state_(std::make_unique<State>()) {
    HANDLE wait = nullptr;
    if (::RegisterWaitForSingleObject(&wait, event_, OnSignalled, state_.get(), INFINITE,
                                      WT_EXECUTEONLYONCE | WT_EXECUTEINWAITTHREAD))
        wait_.reset(wait);
}

void CALLBACK StopFlag::OnSignalled(void* context, BOOLEAN timedOut) noexcept {
    if (!timedOut) static_cast<State*>(context)->stopped.store(true, std::memory_order_release);
}

bool StopFlag::IsStopped() const noexcept {
    if (state_->stopped.load(std::memory_order_acquire)) return true;
    if (wait_) return false;
    if (::WaitForSingleObject(event_, 0) == WAIT_OBJECT_0) state_->stopped.store(true, std::memory_order_release);
    return state_->stopped.load(std::memory_order_acquire);
}

} // namespace tol
