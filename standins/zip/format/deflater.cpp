#include "deflater.h"
#include <zlib.h>

namespace zipformat {

struct Deflater::Stream {
    z_stream z{};
    bool ready = false;
    explicit Stream(int level) { ready = deflateInit2(&z, level, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) == Z_OK; }
    ~Stream() {
        if (ready) deflateEnd(&z);
    }
};

Deflater::Deflater(int level) : stream_(std::make_unique<Stream>(level)) {}
Deflater::~Deflater() = default;

bool Deflater::IsReady() const noexcept { return stream_->ready; }

bool Deflater::Reset() noexcept {
    stream_->z.avail_in = 0;
    return stream_->ready && deflateReset(&stream_->z) == Z_OK;
}

std::size_t Deflater::Bound(std::size_t size) const noexcept { return deflateBound(&stream_->z, static_cast<uLong>(size)); }

void Deflater::Input(const void* data, std::size_t size) noexcept {
    stream_->z.next_in = static_cast<Bytef*>(const_cast<void*>(data));
    stream_->z.avail_in = static_cast<uInt>(size);
}

std::size_t Deflater::InputLeft() const noexcept { return stream_->z.avail_in; }

Status Deflater::Step(void* out, std::size_t capacity, bool finish, std::size_t& produced, bool& finished) noexcept {
    z_stream& z = stream_->z;
    z.next_out = static_cast<Bytef*>(out);
    z.avail_out = static_cast<uInt>(capacity);
    const int result = deflate(&z, finish ? Z_FINISH : Z_NO_FLUSH);
    produced = capacity - z.avail_out;
    finished = result == Z_STREAM_END;
    if (result == Z_OK || result == Z_STREAM_END || result == Z_BUF_ERROR) return Status::Ok;
    return Status::OutOfMemory;
}

} // namespace zipformat
