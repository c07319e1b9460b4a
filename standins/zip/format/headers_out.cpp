#include "headers_out.h"
#include "bytes.h"
#include "extra_fields.h"
#include "records.h"
#include <algorithm>
#include <optional>

namespace zipformat {
namespace {

std::uint32_t Clamp32(std::uint64_t value) noexcept { return value >= kMax32 ? kMax32 : static_cast<std::uint32_t>(value); }

void PutCommonFields(std::string& out, const EntryRecord& r, std::uint16_t versionNeeded) {
    Put16(out, versionNeeded);
    Put16(out, r.flags);
    Put16(out, r.method);
    Put16(out, r.dosDateTime & 0xFFFF);
    Put16(out, r.dosDateTime >> 16);
    Put32(out, r.crc);
}

} // namespace

std::size_t LocalZip64SizesOffset(const EntryRecord& record) noexcept { return kLocalHeaderSize + record.name.size() + 4; }

std::string LocalHeader(const EntryRecord& r) {
    const std::string zip64 = r.localZip64 ? Zip64Extra(r.size, r.compressedSize, std::nullopt) : std::string();
    std::string out;
    out.reserve(kLocalHeaderSize + r.name.size() + zip64.size() + r.extra.size());
    Put32(out, kLocalSignature);
    PutCommonFields(out, r, r.localZip64 ? std::max(r.versionNeeded, kVersionZip64) : r.versionNeeded);
    Put32(out, r.localZip64 ? kMax32 : static_cast<std::uint32_t>(r.compressedSize));
    Put32(out, r.localZip64 ? kMax32 : static_cast<std::uint32_t>(r.size));
    Put16(out, static_cast<std::uint32_t>(r.name.size()));
    Put16(out, static_cast<std::uint32_t>(zip64.size() + r.extra.size()));
    return out + r.name + zip64 + r.extra;
}

std::string CentralHeader(const EntryRecord& r, bool& zip64) {
    const bool bigSize = r.size >= kMax32, bigCompressed = r.compressedSize >= kMax32, farOffset = r.localOffset >= kMax32;
    zip64 = bigSize || bigCompressed || farOffset;
    const std::string zip64Field = Zip64Extra(bigSize ? std::optional(r.size) : std::nullopt,
                                              bigCompressed ? std::optional(r.compressedSize) : std::nullopt,
                                              farOffset ? std::optional(r.localOffset) : std::nullopt);
    std::string out;
    out.reserve(kCentralHeaderSize + r.name.size() + zip64Field.size() + r.extra.size() + r.comment.size());
    Put32(out, kCentralSignature);
    Put16(out, zip64 && (r.madeBy & 0xFF) < kVersionZip64 ? (r.madeBy & 0xFF00) | kVersionZip64 : r.madeBy);
    PutCommonFields(out, r, zip64 ? std::max(r.versionNeeded, kVersionZip64) : r.versionNeeded);
    Put32(out, Clamp32(r.compressedSize));
    Put32(out, Clamp32(r.size));
    Put16(out, static_cast<std::uint32_t>(r.name.size()));
    Put16(out, static_cast<std::uint32_t>(zip64Field.size() + r.extra.size()));
    Put16(out, static_cast<std::uint32_t>(r.comment.size()));
    Put16(out, 0);  // disk
    Put16(out, r.internalAttributes);
    Put32(out, r.externalAttributes);
    Put32(out, Clamp32(r.localOffset));
    return out + r.name + zip64Field + r.extra + r.comment;
}

std::string EndRecords(std::uint64_t count, std::uint64_t centralOffset, std::uint64_t centralSize,
                       std::string_view comment, bool& zip64) {
    zip64 = count >= kMax16 || centralOffset >= kMax32 || centralSize >= kMax32;
    std::string out;
    if (zip64) {
        const std::uint64_t recordAt = centralOffset + centralSize;
        Put32(out, kZip64EndSignature);
        Put64(out, kZip64EndRecordSize - 12);
        Put16(out, kVersionZip64);
        Put16(out, kVersionZip64);
        Put32(out, 0);
        Put32(out, 0);
        Put64(out, count);
        Put64(out, count);
        Put64(out, centralSize);
        Put64(out, centralOffset);
        Put32(out, kZip64LocatorSignature);
        Put32(out, 0);
        Put64(out, recordAt);
        Put32(out, 1);
    }
    Put32(out, kEndSignature);
    Put16(out, 0);
    Put16(out, 0);
    Put16(out, count >= kMax16 ? kMax16 : static_cast<std::uint32_t>(count));
    Put16(out, count >= kMax16 ? kMax16 : static_cast<std::uint32_t>(count));
    Put32(out, Clamp32(centralSize));
    Put32(out, Clamp32(centralOffset));
    Put16(out, static_cast<std::uint32_t>(comment.size()));
    out.append(comment.data(), comment.size());
    return out;
}

} // namespace zipformat
