#include "file_source.h"
#include <algorithm>
#include <cstring>

namespace zipwin {
namespace {

constexpr std::size_t kWindow = 256 * 1024;

} // namespace

bool FileSource::Open(const std::wstring& systemPath) noexcept {
    windowSize_ = 0;
    file_.reset(::CreateFileW(systemPath.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    LARGE_INTEGER size{};
    if (!file_ || !::GetFileSizeEx(file_.get(), &size)) return false;
    size_ = static_cast<std::uint64_t>(size.QuadPart);
    return true;
}

bool FileSource::ReadDirect(std::uint64_t offset, void* buffer, std::size_t count) noexcept {
    auto* out = static_cast<unsigned char*>(buffer);
    while (count > 0) {
        OVERLAPPED at{};
        at.Offset = static_cast<DWORD>(offset);
        at.OffsetHigh = static_cast<DWORD>(offset >> 32);
        const DWORD want = static_cast<DWORD>(std::min<std::size_t>(count, 1u << 30));
        DWORD read = 0;
        if (!::ReadFile(file_.get(), out, want, &read, &at) || read == 0) return false;
        out += read;
        offset += read;
        count -= read;
    }
    return true;
}

bool FileSource::FillWindow(std::uint64_t offset) noexcept {
    try {
        window_.resize(kWindow);
    } catch (...) {
        return false;
    }
    windowSize_ = static_cast<std::size_t>(std::min<std::uint64_t>(kWindow, size_ - offset));
    windowStart_ = offset;
    if (ReadDirect(offset, window_.data(), windowSize_)) return true;
    windowSize_ = 0;
    return false;
}

bool FileSource::ReadAt(std::uint64_t offset, void* buffer, std::size_t count) noexcept {
    if (offset > size_ || count > size_ - offset) return false;
    if (count == 0) return true;
    if (count >= kWindow / 2) return ReadDirect(offset, buffer, count);
    const bool inWindow = offset >= windowStart_ && offset - windowStart_ + count <= windowSize_;
    if (!inWindow && !FillWindow(offset)) return false;
    std::memcpy(buffer, window_.data() + (offset - windowStart_), count);
    return true;
}

} // namespace zipwin
