// A raw-deflate compressor (zlib) at one level, kept across entries and reset for each.
#pragma once
#include "status.h"
#include <cstddef>
#include <memory>

namespace zipformat {

class Deflater {
public:
    explicit Deflater(int level);
    ~Deflater();
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    [[nodiscard]] bool IsReady() const noexcept;
    [[nodiscard]] bool Reset() noexcept;
    // The most that size bytes can become.
    std::size_t Bound(std::size_t size) const noexcept;
    void Input(const void* data, std::size_t size) noexcept;
    std::size_t InputLeft() const noexcept;
    // Compresses into out; finish flushes the stream's end, and finished is set once all of it is out.
    [[nodiscard]] Status Step(void* out, std::size_t capacity, bool finish, std::size_t& produced, bool& finished) noexcept;

private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
};

} // namespace zipformat
