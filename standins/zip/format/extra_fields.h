// The extra fields of the central directory that the reader understands (ZIP64 sizes and offset, the UTC
// modification time, a UTF-8 name) and the ones that the writer makes.
#pragma once
#include "entry.h"
#include "status.h"
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zipformat {

// Which 32-bit fields of a central header hold the ZIP64 marker, so that the ZIP64 field carries their values.
struct Zip64Needs {
    bool size = false;
    bool compressedSize = false;
    bool localOffset = false;
    bool disk = false;
};

// Reads the central extra fields of an entry whose other fields are already filled: the ZIP64 values, the time and
// a unicode path field (taken when its CRC matches the stored name). Everything but the ZIP64 field is kept in
// entry.extra. Corrupt when a needed ZIP64 value is missing.
[[nodiscard]] Status ParseCentralExtra(std::string_view extra, const Zip64Needs& needs, Entry& entry);

// The ZIP64 field with the values given, in the record's order.
std::string Zip64Extra(std::optional<std::uint64_t> size, std::optional<std::uint64_t> compressedSize,
                       std::optional<std::uint64_t> localOffset);

// The timestamp field with the modification time; empty when the time does not fit its signed 32 bits.
std::string TimestampExtra(std::int64_t modified);

// The extra fields of a record without the ZIP64 one.
std::string WithoutZip64(std::string_view extra);

} // namespace zipformat
