#include "extra_fields.h"
#include "bytes.h"
#include "records.h"
#include <zlib.h>

namespace zipformat {
namespace {

const unsigned char* Bytes(std::string_view text) noexcept { return reinterpret_cast<const unsigned char*>(text.data()); }

// Calls visit(tag, data) for each well-formed field; a truncated last field ends the walk.
template <class Visit>
void ForEachField(std::string_view extra, Visit&& visit) {
    while (extra.size() >= 4) {
        const std::uint16_t tag = Get16(Bytes(extra));
        const std::size_t size = Get16(Bytes(extra) + 2);
        if (size > extra.size() - 4) return;
        visit(tag, extra.substr(4, size));
        extra.remove_prefix(4 + size);
    }
}

bool TakeValue(std::string_view& data, bool wanted, std::uint64_t& value) noexcept {
    if (!wanted) return true;
    if (data.size() < 8) return false;
    value = Get64(Bytes(data));
    data.remove_prefix(8);
    return true;
}

bool ReadZip64(std::string_view data, const Zip64Needs& needs, Entry& entry) noexcept {
    return TakeValue(data, needs.size, entry.size) && TakeValue(data, needs.compressedSize, entry.compressedSize) &&
           TakeValue(data, needs.localOffset, entry.localOffset) && (!needs.disk || data.size() >= 4);
}

void ReadTimestamp(std::string_view data, Entry& entry) noexcept {
    if (data.size() >= 5 && (data[0] & 1))
        entry.modified = static_cast<std::int32_t>(Get32(Bytes(data) + 1));
}

void ReadUnicodePath(std::string_view data, Entry& entry) {
    if (data.size() < 5 || data[0] != 1) return;
    const uLong nameCrc = crc32(0L, Bytes(entry.name), static_cast<uInt>(entry.name.size()));
    if (Get32(Bytes(data) + 1) != nameCrc || data.size() == 5) return;
    entry.name.assign(data.substr(5));
    entry.utf8 = true;
}

} // namespace

Status ParseCentralExtra(std::string_view extra, const Zip64Needs& needs, Entry& entry) {
    const bool zip64Needed = needs.size || needs.compressedSize || needs.localOffset || needs.disk;
    bool zip64Read = false;
    std::string kept;
    ForEachField(extra, [&](std::uint16_t tag, std::string_view data) {
        if (tag == kExtraZip64) {
            zip64Read = zip64Read || ReadZip64(data, needs, entry);
            return;
        }
        if (tag == kExtraTimestamp) ReadTimestamp(data, entry);
        if (tag == kExtraUnicodePath) ReadUnicodePath(data, entry);
        kept.append(data.data() - 4, data.size() + 4);
    });
    entry.extra = std::move(kept);
    return zip64Needed && !zip64Read ? Status::Corrupt : Status::Ok;
}

std::string Zip64Extra(std::optional<std::uint64_t> size, std::optional<std::uint64_t> compressedSize,
                       std::optional<std::uint64_t> localOffset) {
    std::string values;
    for (const auto& value : {size, compressedSize, localOffset})
        if (value) Put64(values, *value);
    if (values.empty()) return {};
    std::string field;
    Put16(field, kExtraZip64);
    Put16(field, static_cast<std::uint32_t>(values.size()));
    return field + values;
}

std::string TimestampExtra(std::int64_t modified) {
    if (modified < INT32_MIN || modified > INT32_MAX) return {};
    std::string field;
    Put16(field, kExtraTimestamp);
    Put16(field, 5);
    field += '\x01';
    Put32(field, static_cast<std::uint32_t>(static_cast<std::int32_t>(modified)));
    return field;
}

std::string WithoutZip64(std::string_view extra) {
    std::string kept;
    ForEachField(extra, [&](std::uint16_t tag, std::string_view data) {
        if (tag != kExtraZip64) kept.append(data.data() - 4, data.size() + 4);
    });
    return kept;
}

} // namespace zipformat
