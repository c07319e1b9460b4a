#include "central_directory.h"
#include "bytes.h"
#include "end_record.h"
#include "extra_fields.h"
#include "records.h"
#include <new>
#include <string>

namespace zipformat {
namespace {

const unsigned char* Bytes(const std::string& text) noexcept { return reinterpret_cast<const unsigned char*>(text.data()); }

// Fills an entry from the central record at p; the caller has checked that the fixed part and the three
// variable parts lie within the directory.
Status ReadRecord(const unsigned char* p, Entry& entry) {
    entry.madeBy = Get16(p + 4);
    entry.versionNeeded = Get16(p + 6);
    entry.flags = Get16(p + 8);
    entry.method = Get16(p + 10);
    entry.dosDateTime = (static_cast<std::uint32_t>(Get16(p + 14)) << 16) | Get16(p + 12);
    entry.crc = Get32(p + 16);
    entry.compressedSize = Get32(p + 20);
    entry.size = Get32(p + 24);
    const std::size_t nameSize = Get16(p + 28), extraSize = Get16(p + 30), commentSize = Get16(p + 32);
    entry.internalAttributes = Get16(p + 36);
    entry.externalAttributes = Get32(p + 38);
    entry.localOffset = Get32(p + 42);
    const char* variable = reinterpret_cast<const char*>(p + kCentralHeaderSize);
    entry.name.assign(variable, nameSize);
    entry.utf8 = (entry.flags & kFlagUtf8) != 0;
    entry.comment.assign(variable + nameSize + extraSize, commentSize);
    Zip64Needs needs;
    needs.size = entry.size == kMax32;
    needs.compressedSize = entry.compressedSize == kMax32;
    needs.localOffset = entry.localOffset == kMax32;
    needs.disk = Get16(p + 34) == kMax16;
    return ParseCentralExtra(std::string_view(variable + nameSize, extraSize), needs, entry);
}

Status ReadRecords(const std::string& directory, Archive& archive) {
    std::size_t at = 0;
    while (at < directory.size()) {
        const std::size_t left = directory.size() - at;
        const unsigned char* p = Bytes(directory) + at;
        if (left < kCentralHeaderSize || Get32(p) != kCentralSignature) return Status::Corrupt;
        const std::size_t total = kCentralHeaderSize + Get16(p + 28) + Get16(p + 30) + Get16(p + 32);
        if (total > left) return Status::Corrupt;
        Entry entry;
        const Status status = ReadRecord(p, entry);
        if (status != Status::Ok) return status;
        archive.entries.push_back(std::move(entry));
        at += total;
    }
    return Status::Ok;
}

// Where the directory really starts: it ends where the end records begin; a difference to the recorded offset is
// a stub in front of the archive.
Status PlaceDirectory(ByteSource& source, const EndRecord& end, Archive& archive) {
    if (end.centralSize > end.directoryEnd || end.centralOffset > end.directoryEnd - end.centralSize)
        return Status::Corrupt;
    archive.centralSize = end.centralSize;
    archive.centralOffset = end.directoryEnd - end.centralSize;
    archive.shift = static_cast<std::int64_t>(archive.centralOffset - end.centralOffset);
    unsigned char signature[4];
    if (archive.shift != 0 && end.entries > 0 &&
        (!source.ReadAt(archive.centralOffset, signature, 4) || Get32(signature) != kCentralSignature)) {
        archive.centralOffset = end.centralOffset;  // bytes between the directory and its end, not a stub
        archive.shift = 0;
    }
    return Status::Ok;
}

// Counts above 65535 in archives without ZIP64 records are often stored modulo 65536.
bool CountMatches(std::uint64_t read, std::uint64_t recorded, bool zip64) noexcept {
    return read == recorded || (!zip64 && (read & 0xFFFF) == recorded);
}

} // namespace

Status ReadArchive(ByteSource& source, Archive& archive) {
    archive = Archive{};
    EndRecord end;
    Status status = FindEndRecord(source, end);
    if (status != Status::Ok) return status;
    if ((status = PlaceDirectory(source, end, archive)) != Status::Ok) return status;
    archive.comment = std::move(end.comment);
    archive.zip64 = end.zip64;
    if (archive.centralSize > kMaxCentralSize) return Status::OutOfMemory;
    if (end.entries > archive.centralSize / kCentralHeaderSize) return Status::Corrupt;
    try {
        std::string directory(static_cast<std::size_t>(archive.centralSize), '\0');
        if (!source.ReadAt(archive.centralOffset, directory.data(), directory.size())) return Status::ReadFailed;
        if ((status = ReadRecords(directory, archive)) != Status::Ok) return status;
    } catch (const std::bad_alloc&) {
        return Status::OutOfMemory;
    }
    return CountMatches(archive.entries.size(), end.entries, end.zip64) ? Status::Ok : Status::Corrupt;
}

} // namespace zipformat
