#include "writer.h"
#include "bytes.h"
#include "entry_data.h"
#include "extra_fields.h"
#include "records.h"
#include <zlib.h>
#include <algorithm>

namespace zipformat {
namespace {

constexpr std::size_t kBlock = 1024 * 1024;
constexpr std::uint16_t kMadeBy = kVersionZip64;  // host 0 (FAT attributes), features up to ZIP64

std::uint32_t Crc(std::uint32_t crc, const void* data, std::size_t size) noexcept {
    return static_cast<std::uint32_t>(crc32(crc, static_cast<const Bytef*>(data), static_cast<uInt>(size)));
}

std::uint16_t VersionFor(std::uint16_t method) noexcept { return method == kMethodStored ? 10 : kVersionDefault; }

} // namespace

ArchiveWriter::ArchiveWriter(ByteSink& sink, int level, bool allowZip64)
    : sink_(sink), level_(level), allowZip64_(allowZip64), deflater_(level > 0 ? level : 1) {}

EntryRecord ArchiveWriter::NewRecord(const NewEntry& entry, std::uint16_t method) const {
    EntryRecord r;
    r.name = entry.name;
    r.madeBy = kMadeBy;
    r.versionNeeded = VersionFor(method);
    r.flags = entry.utf8 ? kFlagUtf8 : 0;
    r.method = method;
    r.dosDateTime = entry.dosDateTime;
    r.crc = Crc(0, nullptr, 0);
    r.localOffset = sink_.Position();
    r.externalAttributes = entry.externalAttributes;
    if (entry.modified) r.extra = TimestampExtra(*entry.modified);
    return r;
}

Status ArchiveWriter::Emit(const std::string& bytes) {
    return sink_.Write(bytes.data(), bytes.size()) ? Status::Ok : Status::WriteFailed;
}

void ArchiveWriter::KeepEntry(const Entry& e) {
    EntryRecord r;
    r.name = e.name;
    r.madeBy = e.madeBy;
    r.versionNeeded = e.versionNeeded;
    r.flags = e.flags;
    r.method = e.method;
    r.dosDateTime = e.dosDateTime;
    r.crc = e.crc;
    r.compressedSize = e.compressedSize;
    r.size = e.size;
    r.localOffset = e.localOffset;
    r.internalAttributes = e.internalAttributes;
    r.externalAttributes = e.externalAttributes;
    r.extra = e.extra;
    r.comment = e.comment;
    records_.push_back(std::move(r));
}

Status ArchiveWriter::AddFolder(const NewEntry& entry) {
    EntryRecord r = NewRecord(entry, kMethodStored);
    r.versionNeeded = kVersionDefault;
    const Status status = Emit(LocalHeader(r));
    if (status == Status::Ok) records_.push_back(std::move(r));
    return status;
}

namespace {

// Deflates into out; 0 when zlib fails or the result is not smaller than the data.
std::size_t DeflateWhole(Deflater& deflater, const void* data, std::size_t size, std::vector<unsigned char>& out) {
    if (size == 0 || !deflater.Reset()) return 0;
    out.resize(std::max(out.size(), deflater.Bound(size)));
    deflater.Input(data, size);
    std::size_t produced = 0;
    bool finished = false;
    if (deflater.Step(out.data(), out.size(), true, produced, finished) != Status::Ok || !finished) return 0;
    return produced < size ? produced : 0;
}

} // namespace

Status PrepareData(Deflater& deflater, int level, std::vector<unsigned char> data, PreparedData& prepared) {
    if (level > 0 && !deflater.IsReady()) return Status::OutOfMemory;
    prepared.size = data.size();
    prepared.crc = Crc(Crc(0, nullptr, 0), data.data(), data.size());
    const std::size_t deflated = level > 0 ? DeflateWhole(deflater, data.data(), data.size(), prepared.bytes) : 0;
    prepared.method = deflated ? kMethodDeflated : kMethodStored;
    if (deflated) {
        prepared.bytes.resize(deflated);
    } else {
        prepared.bytes = std::move(data);
    }
    return Status::Ok;
}

Status ArchiveWriter::EmitWhole(EntryRecord r, const void* bytes) {
    r.versionNeeded = VersionFor(r.method);
    Status status = Emit(LocalHeader(r));
    if (status == Status::Ok && r.compressedSize > 0 && !sink_.Write(bytes, static_cast<std::size_t>(r.compressedSize)))
        status = Status::WriteFailed;
    if (status == Status::Ok) records_.push_back(std::move(r));
    return status;
}

Status ArchiveWriter::AddFile(const NewEntry& entry, const void* data, std::size_t size) {
    EntryRecord r = NewRecord(entry, kMethodStored);
    r.crc = Crc(r.crc, data, size);
    r.size = r.compressedSize = size;
    const std::size_t deflated = level_ > 0 ? DeflateWhole(deflater_, data, size, buffer_) : 0;
    if (!deflated) return EmitWhole(std::move(r), data);
    r.method = kMethodDeflated;
    r.compressedSize = deflated;
    return EmitWhole(std::move(r), buffer_.data());
}

Status ArchiveWriter::AddPrepared(const NewEntry& entry, const PreparedData& prepared) {
    EntryRecord r = NewRecord(entry, prepared.method);
    r.crc = prepared.crc;
    r.size = prepared.size;
    r.compressedSize = prepared.bytes.size();
    return EmitWhole(std::move(r), prepared.bytes.data());
}

Status ArchiveWriter::BeginFile(const NewEntry& entry) {
    current_ = NewRecord(entry, level_ > 0 ? kMethodDeflated : kMethodStored);
    current_.localZip64 = entry.expectedSize > kZip64Threshold;
    if (current_.localZip64 && !allowZip64_) return Status::TooLarge;
    if (current_.method == kMethodDeflated && !deflater_.Reset()) return Status::OutOfMemory;
    const Status status = Emit(LocalHeader(current_));
    dataStart_ = sink_.Position();
    return status;
}

Status ArchiveWriter::EmitCompressed(bool finish) {
    if (buffer_.size() < kBlock) buffer_.resize(kBlock);
    for (bool finished = false;;) {
        std::size_t produced = 0;
        if (deflater_.Step(buffer_.data(), buffer_.size(), finish, produced, finished) != Status::Ok)
            return Status::OutOfMemory;
        if (produced > 0 && !sink_.Write(buffer_.data(), produced)) return Status::WriteFailed;
        if (finish ? finished : deflater_.InputLeft() == 0 && produced < buffer_.size()) return Status::Ok;
    }
}

Status ArchiveWriter::WriteData(const void* data, std::size_t size) {
    current_.crc = Crc(current_.crc, data, size);
    current_.size += size;
    if (current_.method == kMethodStored) return sink_.Write(data, size) ? Status::Ok : Status::WriteFailed;
    deflater_.Input(data, size);
    return EmitCompressed(false);
}

Status ArchiveWriter::EndFile(bool& restartStored) {
    restartStored = false;
    if (current_.method == kMethodDeflated) {
        const Status status = EmitCompressed(true);
        if (status != Status::Ok) return status;
    }
    current_.compressedSize = sink_.Position() - dataStart_;
    if (current_.method == kMethodDeflated && current_.compressedSize >= current_.size) {
        restartStored = true;
        return Status::Ok;
    }
    if (!current_.localZip64 && (current_.size >= kMax32 || current_.compressedSize >= kMax32)) return Status::TooLarge;
    const Status status = PatchHeader();
    if (status == Status::Ok) records_.push_back(current_);
    return status;
}

Status ArchiveWriter::RestartStored() {
    if (!sink_.Truncate(dataStart_)) return Status::WriteFailed;
    current_.method = kMethodStored;
    current_.versionNeeded = VersionFor(current_.method);
    current_.crc = Crc(0, nullptr, 0);
    current_.size = 0;
    const std::string header = LocalHeader(current_);
    return sink_.Overwrite(current_.localOffset, header.data(), header.size()) ? Status::Ok : Status::WriteFailed;
}

// The header was written before the data: its CRC and sizes are filled in now.
Status ArchiveWriter::PatchHeader() {
    const std::string header = LocalHeader(current_);
    return sink_.Overwrite(current_.localOffset, header.data(), header.size()) ? Status::Ok : Status::WriteFailed;
}

Status ArchiveWriter::CopyData(ByteSource& source, std::uint64_t offset, std::uint64_t count, Progress* progress) {
    if (buffer_.size() < kBlock) buffer_.resize(kBlock);
    for (std::uint64_t done = 0; done < count;) {
        const std::size_t block = static_cast<std::size_t>(std::min<std::uint64_t>(count - done, buffer_.size()));
        if (!source.ReadAt(offset + done, buffer_.data(), block)) return Status::ReadFailed;
        if (!sink_.Write(buffer_.data(), block)) return Status::WriteFailed;
        done += block;
        if (progress && !progress->Continue(done)) return Status::Cancelled;
    }
    return Status::Ok;
}

// A data descriptor stays only where an encrypted entry's password check depends on it.
Status ArchiveWriter::CopyEntry(ByteSource& source, const Archive& archive, const Entry& entry, Progress* progress) {
    std::uint64_t dataOffset = 0;
    Status status = LocateData(source, archive, entry, dataOffset);
    if (status != Status::Ok) return status;
    KeepEntry(entry);
    EntryRecord& r = records_.back();
    r.localOffset = sink_.Position();
    r.localZip64 = entry.size >= kMax32 || entry.compressedSize >= kMax32;
    const bool descriptor = (entry.flags & kFlagDescriptor) && (entry.flags & kFlagEncrypted);
    if (!descriptor) r.flags = static_cast<std::uint16_t>(r.flags & ~kFlagDescriptor);
    if ((status = Emit(LocalHeader(r))) != Status::Ok) return status;
    if ((status = CopyData(source, dataOffset, entry.compressedSize, progress)) != Status::Ok) return status;
    if (!descriptor) return Status::Ok;
    std::string tail;
    Put32(tail, kDescriptorSignature);
    Put32(tail, r.crc);
    if (r.localZip64) {
        Put64(tail, r.compressedSize);
        Put64(tail, r.size);
    } else {
        Put32(tail, static_cast<std::uint32_t>(r.compressedSize));
        Put32(tail, static_cast<std::uint32_t>(r.size));
    }
    return Emit(tail);
}

Status ArchiveWriter::Finish(std::string_view comment) {
    const std::uint64_t centralOffset = sink_.Position();
    std::string block;
    for (const EntryRecord& r : records_) {
        bool zip64 = false;
        block += CentralHeader(r, zip64);
        if (zip64 && !allowZip64_) return Status::TooLarge;
        if (block.size() >= kBlock) {
            if (Emit(block) != Status::Ok) return Status::WriteFailed;
            block.clear();
        }
    }
    if (Emit(block) != Status::Ok) return Status::WriteFailed;
    bool zip64 = false;
    const std::string end = EndRecords(records_.size(), centralOffset, sink_.Position() - centralOffset, comment, zip64);
    if (zip64 && !allowZip64_) return Status::TooLarge;
    return Emit(end);
}

} // namespace zipformat
