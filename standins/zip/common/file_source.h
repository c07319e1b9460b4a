// An archive file read with random access. Small reads are served from a read-ahead window, so that the local
// header and the data of a small entry cost one read of the file between them.
#pragma once
#include "frame/handles.h"
#include "format/io.h"
#include <vector>

namespace zipwin {

class FileSource final : public zipformat::ByteSource {
public:
    FileSource() = default;
    // Opens the file for reading; others may read it and write it meanwhile. False with the platform's error code.
    [[nodiscard]] bool Open(const std::wstring& systemPath) noexcept;
    void Close() noexcept { file_.reset(); }

    std::uint64_t Size() const noexcept override { return size_; }
    [[nodiscard]] bool ReadAt(std::uint64_t offset, void* buffer, std::size_t count) noexcept override;

private:
    [[nodiscard]] bool ReadDirect(std::uint64_t offset, void* buffer, std::size_t count) noexcept;
    [[nodiscard]] bool FillWindow(std::uint64_t offset) noexcept;

    tol::unique_file file_;
    std::uint64_t size_ = 0;
    std::vector<unsigned char> window_;
    std::uint64_t windowStart_ = 0;
    std::size_t windowSize_ = 0;
};

} // namespace zipwin
