#include "file_sink.h"
#include <algorithm>
#include <cstring>

namespace zipwin {
namespace {

constexpr std::size_t kBuffer = 1024 * 1024;

bool Seek(HANDLE file, std::uint64_t offset) noexcept {
    LARGE_INTEGER to;
    to.QuadPart = static_cast<LONGLONG>(offset);
    return ::SetFilePointerEx(file, to, nullptr, FILE_BEGIN) != FALSE;
}

bool WriteAll(HANDLE file, const void* data, std::size_t count) noexcept {
    const auto* p = static_cast<const unsigned char*>(data);
    while (count > 0) {
        const DWORD want = static_cast<DWORD>(std::min<std::size_t>(count, 1u << 30));
        DWORD written = 0;
        if (!::WriteFile(file, p, want, &written, nullptr) || written == 0) return false;
        p += written;
        count -= written;
    }
    return true;
}

} // namespace

FileSink::FileSink() : buffer_(kBuffer) {}

bool FileSink::Fail() noexcept {
    if (error_ == ERROR_SUCCESS) error_ = ::GetLastError() ? ::GetLastError() : ERROR_WRITE_FAULT;
    return false;
}

bool FileSink::Attach(tol::unique_file file, std::uint64_t position) noexcept {
    file_ = std::move(file);
    used_ = 0;
    base_ = position;
    error_ = ERROR_SUCCESS;
    return Seek(file_.get(), position) || Fail();
}

bool FileSink::WriteBuffer() noexcept {
    if (used_ == 0) return true;
    if (!WriteAll(file_.get(), buffer_.data(), used_)) return Fail();
    base_ += used_;
    used_ = 0;
    return true;
}

bool FileSink::Flush() noexcept { return WriteBuffer(); }

bool FileSink::FlushAndCut() noexcept { return WriteBuffer() && (::SetEndOfFile(file_.get()) || Fail()); }

tol::unique_file FileSink::Detach() noexcept {
    used_ = 0;
    base_ = 0;
    return std::move(file_);
}

bool FileSink::Write(const void* data, std::size_t count) noexcept {
    if (count <= buffer_.size() - used_) {
        std::memcpy(buffer_.data() + used_, data, count);
        used_ += count;
        return true;
    }
    if (!WriteBuffer()) return false;
    if (count < buffer_.size()) return Write(data, count);
    if (!WriteAll(file_.get(), data, count)) return Fail();
    base_ += count;
    return true;
}

bool FileSink::WriteAt(std::uint64_t offset, const void* data, std::size_t count) noexcept {
    return (Seek(file_.get(), offset) && WriteAll(file_.get(), data, count) && Seek(file_.get(), base_)) || Fail();
}

bool FileSink::Overwrite(std::uint64_t offset, const void* data, std::size_t count) noexcept {
    if (offset > Position() || count > Position() - offset) return false;
    if (offset >= base_) {
        std::memcpy(buffer_.data() + (offset - base_), data, count);
        return true;
    }
    if (!WriteBuffer()) return false;
    return WriteAt(offset, data, count);
}

bool FileSink::Truncate(std::uint64_t offset) noexcept {
    if (offset > Position()) return false;
    if (offset >= base_) {
        used_ = static_cast<std::size_t>(offset - base_);
        return true;
    }
    used_ = 0;
    base_ = offset;
    return (Seek(file_.get(), offset) && ::SetEndOfFile(file_.get())) || Fail();
}

} // namespace zipwin
