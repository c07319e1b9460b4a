#include "output_pipe.h"
#include "frame/errors.h"
#include <atomic>
#include <string>

namespace host {
namespace {

std::wstring UniquePipeName() {
    static std::atomic<unsigned> counter{0};
    return L"\\\\.\\pipe\\velmora-run." + std::to_wstring(::GetCurrentProcessId()) + L"." + std::to_wstring(++counter) + L"." +
           std::to_wstring(::GetTickCount64());
}

} // namespace

OutputPipe CreateOutputPipe() {
    const std::wstring name = UniquePipeName();
    OutputPipe pipe;
    pipe.read.reset(::CreateNamedPipeW(name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
                                       PIPE_TYPE_BYTE | PIPE_READMODE_BYTE | PIPE_WAIT | PIPE_REJECT_REMOTE_CLIENTS, 1, 0, 65536,
                                       0, nullptr));
    THROW_LAST_ERROR_IF(!pipe.read);
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    pipe.write.reset(::CreateFileW(name.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES, 0, &inherit, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
    THROW_LAST_ERROR_IF(!pipe.write);
    return pipe;
}

PipeReader::PipeReader(HANDLE pipe, LineSplitter& lines)
    : pipe_(pipe), lines_(lines), event_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    THROW_LAST_ERROR_IF(!event_);
    overlapped_.hEvent = event_.get();
}

PipeReader::~PipeReader() {
    if (!pending_) return;
    DWORD count = 0;
    ::CancelIoEx(pipe_, &overlapped_);
    ::GetOverlappedResult(pipe_, &overlapped_, &count, TRUE);
}

void PipeReader::Start() noexcept {
    if (pending_ || closed_) return;
    // A read that completes at once signals the event as well; Complete collects it either way.
    if (!::ReadFile(pipe_, buffer_, sizeof buffer_, nullptr, &overlapped_) && ::GetLastError() != ERROR_IO_PENDING) {
        closed_ = true;
        return;
    }
    pending_ = true;
}

void PipeReader::Complete() noexcept {
    DWORD count = 0;
    if (!::GetOverlappedResult(pipe_, &overlapped_, &count, FALSE)) {
        if (::GetLastError() == ERROR_IO_INCOMPLETE) return;
        pending_ = false;
        closed_ = true; // ERROR_BROKEN_PIPE: every writer is gone
        return;
    }
    pending_ = false;
    try {
        lines_.Feed(buffer_, count);
    } catch (...) {
        closed_ = true; // out of memory for the lines: stop relaying rather than fail the wait
        return;
    }
    Start();
}

} // namespace host
