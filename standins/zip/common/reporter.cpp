#include "reporter.h"

namespace zipwin {
namespace {

constexpr std::uint64_t kPollEvery = 32;                      // files
constexpr std::uint64_t kPollStep = std::uint64_t(1) << 20;      // bytes
constexpr std::uint64_t kProgressStep = std::uint64_t(64) << 20;

long Clamp(std::uint64_t value) noexcept { return value > 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<long>(value); }

} // namespace

Reporter::Reporter(const Callbacks& callbacks, bool fileMessages) noexcept
    : callbacks_(callbacks), fileMessages_(fileMessages) {}

bool Reporter::Cancelled() noexcept {
    if (cancelled_) return true;
    return calls_++ % kPollEvery == 0 && CancelledNow();
}

bool Reporter::CancelledNow() noexcept {
    if (cancelled_ || !callbacks_.cancel) return cancelled_;
    cancelled_ = callbacks_.cancel(Clamp(done_), Clamp(total_), callbacks_.cancelData) != 0;
    return cancelled_;
}

void Reporter::FileMessage(const std::string& text) noexcept {
    if (fileMessages_ && callbacks_.message) callbacks_.message(text.c_str(), tol::kFileMessageCode, callbacks_.messageData);
}

bool Reporter::Confirm(const std::string& name, long operation, std::uint64_t size, std::uint32_t dosDateTime,
                       std::uint32_t attributes) noexcept {
    if (!callbacks_.confirm) return true;
    return callbacks_.confirm(name.c_str(), operation, static_cast<unsigned long>(size),
                              static_cast<unsigned long>(size >> 32), dosDateTime, attributes,
                              callbacks_.confirmData) != 0;
}

FileProgress::FileProgress(Reporter& reporter, std::string name, std::uint64_t size) noexcept
    : reporter_(reporter), name_(std::move(name)), size_(size), nextPoll_(kPollStep), nextLine_(kProgressStep) {}

bool FileProgress::Continue(std::uint64_t bytesDone) noexcept {
    if (bytesDone >= nextLine_ && size_ > kProgressStep) {
        nextLine_ = bytesDone + kProgressStep;
        try {
            const std::string done = std::to_string(bytesDone >> 20), total = std::to_string(size_ >> 20);
            reporter_.FileMessage("Progress " + name_ + ": " + done + " MiB of " + total + " MiB");
        } catch (...) {
        }
    }
    if (bytesDone < nextPoll_) return true;
    nextPoll_ = bytesDone + kPollStep;
    return !reporter_.CancelledNow();
}

} // namespace zipwin
