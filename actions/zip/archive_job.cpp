#include "archive_job.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include <cstring>

namespace tol {
namespace {

constexpr unsigned kFilesProcessed = 65;  // "%1!d! files processed"

// A file message begins with "Item ", or is any text without " of " (which marks a progress line).
bool IsFileMessage(const char* text) {
    return std::strncmp(text, "Item ", 5) == 0 || !std::strstr(text, " of ");
}

} // namespace

ArchiveJob::ArchiveJob(IBuildRun* build, bool logDetail)
    : build_(build), stop_(build), logSink_(logDetail ? build : nullptr) {}

StepStatus ArchiveJob::CallLibrary(ArchiveLibrary& library, void* block, const ResultTable& results) {
    const ArchiveEntry entry = library.Entry();
    count_ = 0;
    failure_ = nullptr;
    const long result = entry(block);
    if (failure_) std::rethrow_exception(failure_);
    return Finish(result, results);
}

StepStatus ArchiveJob::Finish(long result, const ResultTable& results) {
    const ResultKind kind = results.Classify(result);
    if (kind == ResultKind::Error) throw truntime_error(results.Text(result));
    LogMessage(build_, FormatResourceMessage(kFilesProcessed, {count_}));
    return kind == ResultKind::Cancelled ? StepStopped : StepSucceeded;
}

void ArchiveJob::HandleMessage(const char* text) {
    if (!IsFileMessage(text)) return;
    ++count_;
    if (logSink_) LogLibraryMessage(text);
}

// A failure kept from a callback also asks the library to cancel, so that it returns soon.
long __stdcall ArchiveJob::OnCancel(long, long, void* job) noexcept {
    ArchiveJob& self = *static_cast<ArchiveJob*>(job);
    return self.stop_.IsStopped() || self.failure_ ? 1 : 0;
}

long __stdcall ArchiveJob::OnMessage(const char* text, unsigned long code, void* job) noexcept {
    ArchiveJob& self = *static_cast<ArchiveJob*>(job);
    if (code != kFileMessageCode || !text || self.failure_) return 0;
    try {
        self.HandleMessage(text);
    } catch (...) {
        self.failure_ = std::current_exception();
    }
    return 0;
}

long __stdcall ArchiveJob::OnConfirm(const char*, long, unsigned long, unsigned long, unsigned long, unsigned long,
                                     void*) noexcept {
    return 1;
}

} // namespace tol
