// The pipe that a command writes its stdout and stderr into, and the overlapped reader of its other end: the
// host waits for the process, the stop event and the next bytes at once, so that reading cannot block it.
#pragma once
#include "output_lines.h"
#include "frame/handles.h"

namespace host {

struct OutputPipe {
    tol::unique_file read;  // overlapped, kept by the host
    tol::unique_file write; // inheritable, for the child
};

// Failures throw comet::com_error.
OutputPipe CreateOutputPipe();

class PipeReader {
public:
    PipeReader(HANDLE pipe, LineSplitter& lines);
    // Cancels a read still under way and waits until the system has let go of the buffer.
    ~PipeReader();
    PipeReader(const PipeReader&) = delete;
    PipeReader& operator=(const PipeReader&) = delete;

    // Signalled when the read under way has completed.
    HANDLE event() const noexcept { return event_.get(); }
    // Every writer has closed its end, or the pipe failed.
    bool closed() const noexcept { return closed_; }
    // Starts the next read unless one is under way or the pipe is closed.
    void Start() noexcept;
    // Collects the completed read, hands its bytes to the lines and starts the next read.
    void Complete() noexcept;

private:
    HANDLE pipe_;
    LineSplitter& lines_;
    tol::unique_event event_;
    OVERLAPPED overlapped_{};
    char buffer_[4096];
    bool pending_ = false;
    bool closed_ = false;
};

} // namespace host
