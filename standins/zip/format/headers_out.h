// The records that the writer emits: local headers, central headers and the end records, built as bytes from one
// description of each entry.
#pragma once
#include <cstdint>
#include <string>
#include <string_view>

namespace zipformat {

// One entry as the writer records it, for its local header now and its central header at the end.
struct EntryRecord {
    std::string name;
    std::uint16_t madeBy = 0;
    std::uint16_t versionNeeded = 0;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t dosDateTime = 0;
    std::uint32_t crc = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t size = 0;
    std::uint64_t localOffset = 0;
    std::uint16_t internalAttributes = 0;
    std::uint32_t externalAttributes = 0;
    std::string extra;    // the extra fields but the ZIP64 one, in both headers
    std::string comment;
    bool localZip64 = false;  // the local header carries the sizes in a ZIP64 field
};

// Where the local header's ZIP64 sizes (size, then compressed size) start, from the header's first byte.
std::size_t LocalZip64SizesOffset(const EntryRecord& record) noexcept;

std::string LocalHeader(const EntryRecord& record);
// The central header; zip64 set when it needed a ZIP64 field.
std::string CentralHeader(const EntryRecord& record, bool& zip64);
// The end records after a central directory of count entries: the ZIP64 end record and locator when needed
// (zip64 set), then the end record with the comment.
std::string EndRecords(std::uint64_t count, std::uint64_t centralOffset, std::uint64_t centralSize,
                       std::string_view comment, bool& zip64);

} // namespace zipformat
