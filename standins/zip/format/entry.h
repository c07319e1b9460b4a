// One member of an archive as its central directory describes it, and the archive as a whole.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace zipformat {

struct Entry {
    std::string name;                    // the stored bytes, or the UTF-8 name of a matching unicode path field
    bool utf8 = false;                   // the name is UTF-8 (flag bit 11 or a unicode path field)
    std::uint16_t madeBy = 0;            // host system in the high byte, version in the low
    std::uint16_t versionNeeded = 0;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint32_t dosDateTime = 0;       // date in the high 16 bits, time in the low
    std::uint32_t crc = 0;
    std::uint64_t compressedSize = 0;
    std::uint64_t size = 0;
    std::uint64_t localOffset = 0;       // as recorded: without the archive's shift
    std::uint16_t internalAttributes = 0;
    std::uint32_t externalAttributes = 0;
    std::optional<std::int64_t> modified; // UTC seconds since 1970, from a timestamp field
    std::string extra;                    // the central extra fields but the ZIP64 one, kept when the entry is copied
    std::string comment;

    bool IsFolder() const noexcept;
    bool IsEncrypted() const noexcept;
    // The DOS attributes (read-only 0x01, hidden 0x02, system 0x04, folder 0x10, archive 0x20) when the host
    // system keeps them in the low byte of the external attributes; else only the folder bit from the name.
    std::uint32_t DosAttributes() const noexcept;
};

struct Archive {
    std::vector<Entry> entries;
    std::string comment;
    std::uint64_t centralOffset = 0;  // where the central directory starts in the source
    std::uint64_t centralSize = 0;
    std::int64_t shift = 0;           // bytes in front of the archive (a stub): actual minus recorded offsets
    bool zip64 = false;               // the archive has a ZIP64 end record
};

} // namespace zipformat
