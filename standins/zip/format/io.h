// What the archive code reads from and writes to: byte sources with random access, data sinks, an archive sink
// that can go back, and a progress callback that can cancel.
#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace zipformat {

class ByteSource {
public:
    virtual ~ByteSource() = default;
    virtual std::uint64_t Size() const noexcept = 0;
    // Exactly count bytes from offset; false when the source cannot give them all.
    [[nodiscard]] virtual bool ReadAt(std::uint64_t offset, void* buffer, std::size_t count) noexcept = 0;
};

// Where extracted data goes.
class DataSink {
public:
    virtual ~DataSink() = default;
    [[nodiscard]] virtual bool Write(const void* data, std::size_t count) noexcept = 0;
};

// Where an archive is written: sequential writes, plus going back to finish a header or to drop a tail.
class ByteSink : public DataSink {
public:
    virtual std::uint64_t Position() const noexcept = 0;
    // Replaces bytes written earlier; offset + count is at most the position.
    [[nodiscard]] virtual bool Overwrite(std::uint64_t offset, const void* data, std::size_t count) noexcept = 0;
    // Drops everything from offset on; the position becomes offset.
    [[nodiscard]] virtual bool Truncate(std::uint64_t offset) noexcept = 0;
};

// Asked between blocks of data; false cancels the operation.
class Progress {
public:
    virtual ~Progress() = default;
    [[nodiscard]] virtual bool Continue(std::uint64_t bytesDone) noexcept = 0;
};

// An archive held in memory (tests and the fuzzer).
class MemorySource final : public ByteSource {
public:
    MemorySource(const void* data, std::size_t size) noexcept : data_(static_cast<const unsigned char*>(data)), size_(size) {}
    std::uint64_t Size() const noexcept override { return size_; }
    [[nodiscard]] bool ReadAt(std::uint64_t offset, void* buffer, std::size_t count) noexcept override {
        if (offset > size_ || count > size_ - offset) return false;
        if (count) std::memcpy(buffer, data_ + offset, count);
        return true;
    }

private:
    const unsigned char* data_;
    std::size_t size_;
};

// An archive written to memory (tests).
class MemorySink final : public ByteSink {
public:
    std::string bytes;
    [[nodiscard]] bool Write(const void* data, std::size_t count) noexcept override {
        try {
            bytes.append(static_cast<const char*>(data), count);
            return true;
        } catch (...) {
            return false;
        }
    }
    std::uint64_t Position() const noexcept override { return bytes.size(); }
    [[nodiscard]] bool Overwrite(std::uint64_t offset, const void* data, std::size_t count) noexcept override {
        if (offset > bytes.size() || count > bytes.size() - offset) return false;
        bytes.replace(static_cast<std::size_t>(offset), count, static_cast<const char*>(data), count);
        return true;
    }
    [[nodiscard]] bool Truncate(std::uint64_t offset) noexcept override {
        if (offset > bytes.size()) return false;
        bytes.resize(static_cast<std::size_t>(offset));
        return true;
    }
};

} // namespace zipformat
