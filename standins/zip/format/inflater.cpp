#include "inflater.h"
#include <zlib.h>

namespace zipformat {

struct Inflater::Stream {
    z_stream z{};
    bool ready = false;
    Stream() { ready = inflateInit2(&z, -MAX_WBITS) == Z_OK; }
    ~Stream() {
        if (ready) inflateEnd(&z);
    }
};

Inflater::Inflater() : stream_(std::make_unique<Stream>()) {}
Inflater::~Inflater() = default;

bool Inflater::IsReady() const noexcept { return stream_->ready; }

bool Inflater::Reset() noexcept {
    stream_->z.avail_in = 0;
    return stream_->ready && inflateReset(&stream_->z) == Z_OK;
}

void Inflater::Input(const void* data, std::size_t size) noexcept {
    stream_->z.next_in = static_cast<Bytef*>(const_cast<void*>(data));
    stream_->z.avail_in = static_cast<uInt>(size);
}

std::size_t Inflater::InputLeft() const noexcept { return stream_->z.avail_in; }

Status Inflater::Step(void* out, std::size_t capacity, std::size_t& produced, bool& finished) noexcept {
    z_stream& z = stream_->z;
    z.next_out = static_cast<Bytef*>(out);
    z.avail_out = static_cast<uInt>(capacity);
    const int result = inflate(&z, Z_NO_FLUSH);
    produced = capacity - z.avail_out;
    finished = result == Z_STREAM_END;
    if (result == Z_OK || result == Z_STREAM_END) return Status::Ok;
    if (result == Z_BUF_ERROR) return Status::Ok;  // no progress possible: more input or more room is needed
    return result == Z_MEM_ERROR ? Status::OutOfMemory : Status::Corrupt;
}

} // namespace zipformat
