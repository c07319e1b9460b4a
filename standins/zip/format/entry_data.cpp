#include "entry_data.h"
#include "bytes.h"
#include "records.h"
#include <zlib.h>
#include <algorithm>

namespace zipformat {
namespace {

constexpr std::size_t kInputBlock = 256 * 1024;
constexpr std::size_t kOutputBlock = 1024 * 1024;

bool FitsIn(std::uint64_t offset, std::uint64_t count, std::uint64_t size) noexcept {
    return offset <= size && count <= size - offset;
}

} // namespace

Status LocateData(ByteSource& source, const Archive& archive, const Entry& entry, std::uint64_t& dataOffset) {
    const std::uint64_t size = source.Size();
    const std::uint64_t shift = static_cast<std::uint64_t>(archive.shift);
    if (entry.localOffset > UINT64_MAX - shift) return Status::Corrupt;
    const std::uint64_t local = entry.localOffset + shift;
    unsigned char header[kLocalHeaderSize];
    if (!FitsIn(local, kLocalHeaderSize, size)) return Status::Truncated;
    if (!source.ReadAt(local, header, sizeof header)) return Status::ReadFailed;
    if (Get32(header) != kLocalSignature) return Status::Corrupt;
    dataOffset = local + kLocalHeaderSize + Get16(header + 26) + Get16(header + 28);
    return FitsIn(dataOffset, entry.compressedSize, size) ? Status::Ok : Status::Truncated;
}

EntryExtractor::EntryExtractor() : in_(kInputBlock), out_(kOutputBlock) {}

Status EntryExtractor::Extract(ByteSource& source, const Archive& archive, const Entry& entry, DataSink& sink,
                               Progress* progress) {
    if (entry.IsEncrypted()) return Status::Encrypted;
    if (entry.method != kMethodStored && entry.method != kMethodDeflated) return Status::UnsupportedMethod;
    std::uint64_t offset = 0;
    const Status located = LocateData(source, archive, entry, offset);
    if (located != Status::Ok) return located;
    done_ = 0;
    crc_ = static_cast<std::uint32_t>(crc32(0L, Z_NULL, 0));
    const Status status = entry.method == kMethodStored ? CopyStored(source, offset, entry, sink, progress)
                                                        : Inflate(source, offset, entry, sink, progress);
    if (status != Status::Ok) return status;
    if (done_ != entry.size) return Status::Corrupt;
    return crc_ == entry.crc ? Status::Ok : Status::BadCrc;
}

Status EntryExtractor::CopyStored(ByteSource& source, std::uint64_t offset, const Entry& entry, DataSink& sink,
                                  Progress* progress) {
    if (entry.compressedSize != entry.size) return Status::Corrupt;
    std::uint64_t left = entry.size;
    while (left > 0) {
        const std::size_t block = static_cast<std::size_t>(std::min<std::uint64_t>(left, out_.size()));
        if (!source.ReadAt(offset, out_.data(), block)) return Status::ReadFailed;
        const Status status = Deliver(out_.data(), block, entry, sink, progress);
        if (status != Status::Ok) return status;
        offset += block;
        left -= block;
    }
    return Status::Ok;
}

Status EntryExtractor::Inflate(ByteSource& source, std::uint64_t offset, const Entry& entry, DataSink& sink,
                               Progress* progress) {
    if (!inflater_.Reset()) return Status::OutOfMemory;
    std::uint64_t left = entry.compressedSize;
    for (bool finished = false; !finished;) {
        if (inflater_.InputLeft() == 0 && left > 0) {
            const std::size_t block = static_cast<std::size_t>(std::min<std::uint64_t>(left, in_.size()));
            if (!source.ReadAt(offset, in_.data(), block)) return Status::ReadFailed;
            inflater_.Input(in_.data(), block);
            offset += block;
            left -= block;
        }
        std::size_t produced = 0;
        const Status status = inflater_.Step(out_.data(), out_.size(), produced, finished);
        if (status != Status::Ok) return status;
        if (produced == 0 && !finished && inflater_.InputLeft() == 0 && left == 0) return Status::Corrupt;
        const Status delivered = Deliver(out_.data(), produced, entry, sink, progress);
        if (delivered != Status::Ok) return delivered;
    }
    return Status::Ok;
}

// More data than the entry's size ends the extraction at once: a small archive cannot fill a disk.
Status EntryExtractor::Deliver(const unsigned char* data, std::size_t size, const Entry& entry, DataSink& sink,
                               Progress* progress) {
    if (size == 0) return Status::Ok;
    if (size > entry.size - done_) return Status::Corrupt;
    crc_ = static_cast<std::uint32_t>(crc32(crc_, data, static_cast<uInt>(size)));
    if (!sink.Write(data, size)) return Status::WriteFailed;
    done_ += size;
    if (progress && !progress->Continue(done_)) return Status::Cancelled;
    return Status::Ok;
}

} // namespace zipformat
