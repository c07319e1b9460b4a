// A file written through a buffer: the archive being written, or the temporary file of one extracted entry. Going
// back within the buffer costs nothing; going back further writes at the offset and returns to the end.
#pragma once
#include "frame/handles.h"
#include "format/io.h"
#include <windows.h>
#include <vector>

namespace zipwin {

class FileSink final : public zipformat::ByteSink {
public:
    FileSink();
    // Writes go to the file from position on; what lies after it stays unless the sink is cut.
    [[nodiscard]] bool Attach(tol::unique_file file, std::uint64_t position) noexcept;
    // Writes what is buffered. False with the platform's error code.
    [[nodiscard]] bool Flush() noexcept;
    // Flushes and cuts the file at the position (for a file that held more before).
    [[nodiscard]] bool FlushAndCut() noexcept;
    // The file, flushed or not; the sink is empty afterwards.
    tol::unique_file Detach() noexcept;
    HANDLE get() const noexcept { return file_.get(); }
    // The platform's error code of the first write that failed.
    DWORD LastError() const noexcept { return error_; }

    [[nodiscard]] bool Write(const void* data, std::size_t count) noexcept override;
    std::uint64_t Position() const noexcept override { return base_ + used_; }
    [[nodiscard]] bool Overwrite(std::uint64_t offset, const void* data, std::size_t count) noexcept override;
    [[nodiscard]] bool Truncate(std::uint64_t offset) noexcept override;

private:
    [[nodiscard]] bool WriteBuffer() noexcept;
    [[nodiscard]] bool WriteAt(std::uint64_t offset, const void* data, std::size_t count) noexcept;
    [[nodiscard]] bool Fail() noexcept;

    tol::unique_file file_;
    std::vector<unsigned char> buffer_;
    std::size_t used_ = 0;
    std::uint64_t base_ = 0;  // the file offset of the buffer's first byte
    DWORD error_ = ERROR_SUCCESS;
};

} // namespace zipwin
