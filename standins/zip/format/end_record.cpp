#include "end_record.h"
#include "bytes.h"
#include "records.h"
#include <algorithm>
#include <vector>

namespace zipformat {
namespace {

// The end record's position in the tail: the last one whose comment reaches the end exactly, else the last one
// whose comment fits; -1 when there is none.
long FindInTail(const std::vector<unsigned char>& tail) {
    long fitting = -1;
    for (long i = static_cast<long>(tail.size() - kEndRecordSize); i >= 0; --i) {
        const unsigned char* p = tail.data() + i;
        if (Get32(p) != kEndSignature) continue;
        const std::size_t end = static_cast<std::size_t>(i) + kEndRecordSize + Get16(p + 20);
        if (end == tail.size()) return i;
        if (end < tail.size() && fitting < 0) fitting = i;
    }
    return fitting;
}

Status ReadEndRecord(const unsigned char* p, std::size_t available, EndRecord& end) {
    if (Get16(p + 4) != 0 || Get16(p + 6) != 0) return Status::Corrupt;  // spans disks
    end.entries = Get16(p + 10);
    end.centralSize = Get32(p + 12);
    end.centralOffset = Get32(p + 16);
    const std::size_t commentSize = std::min<std::size_t>(Get16(p + 20), available - kEndRecordSize);
    end.comment.assign(reinterpret_cast<const char*>(p + kEndRecordSize), commentSize);
    return Status::Ok;
}

bool ReadZip64Record(ByteSource& source, std::uint64_t at, EndRecord& end) {
    unsigned char record[kZip64EndRecordSize];
    if (!source.ReadAt(at, record, sizeof record) || Get32(record) != kZip64EndSignature) return false;
    if (Get32(record + 16) != 0 || Get32(record + 20) != 0) return false;
    end.entries = Get64(record + 32);
    end.centralSize = Get64(record + 40);
    end.centralOffset = Get64(record + 48);
    end.directoryEnd = at;
    end.zip64 = true;
    return true;
}

// The locator sits right before the end record; its ZIP64 record is where it says, or right before it when the
// archive has bytes in front of it.
Status ReadZip64End(ByteSource& source, std::uint64_t endAt, EndRecord& end) {
    unsigned char locator[kZip64LocatorSize];
    if (endAt < kZip64LocatorSize || !source.ReadAt(endAt - kZip64LocatorSize, locator, sizeof locator) ||
        Get32(locator) != kZip64LocatorSignature)
        return Status::Ok;
    const std::uint64_t recorded = Get64(locator + 8);
    const std::uint64_t locatorAt = endAt - kZip64LocatorSize;
    if (recorded < locatorAt && ReadZip64Record(source, recorded, end)) return Status::Ok;
    if (locatorAt >= kZip64EndRecordSize && ReadZip64Record(source, locatorAt - kZip64EndRecordSize, end))
        return Status::Ok;
    return Status::Corrupt;
}

} // namespace

Status FindEndRecord(ByteSource& source, EndRecord& end) {
    const std::uint64_t size = source.Size();
    if (size < kEndRecordSize) return Status::Truncated;
    const std::size_t tailSize = static_cast<std::size_t>(std::min<std::uint64_t>(size, kEndRecordSize + kMaxCommentSize));
    std::vector<unsigned char> tail(tailSize);
    if (!source.ReadAt(size - tailSize, tail.data(), tailSize)) return Status::ReadFailed;
    const long at = FindInTail(tail);
    if (at < 0) return Status::Corrupt;
    const Status status = ReadEndRecord(tail.data() + at, tailSize - static_cast<std::size_t>(at), end);
    if (status != Status::Ok) return status;
    end.directoryEnd = size - tailSize + static_cast<std::uint64_t>(at);
    return ReadZip64End(source, end.directoryEnd, end);
}

} // namespace zipformat
