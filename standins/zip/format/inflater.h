// A raw-deflate decompressor (zlib) that is kept across entries and reset for each.
#pragma once
#include "status.h"
#include <cstddef>
#include <memory>

namespace zipformat {

class Inflater {
public:
    Inflater();
    ~Inflater();
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    [[nodiscard]] bool IsReady() const noexcept;
    // Starts a new stream.
    [[nodiscard]] bool Reset() noexcept;
    // Takes input; Step then fills output from it.
    void Input(const void* data, std::size_t size) noexcept;
    std::size_t InputLeft() const noexcept;
    // Decompresses into out; produced is the number of bytes written. Ok while the stream goes on, finished set at
    // its end; Corrupt for data that is not deflate.
    [[nodiscard]] Status Step(void* out, std::size_t capacity, std::size_t& produced, bool& finished) noexcept;

private:
    struct Stream;
    std::unique_ptr<Stream> stream_;
};

} // namespace zipformat
