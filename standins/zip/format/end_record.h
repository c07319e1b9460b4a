// The end of an archive: the end-of-central-directory record, found from the end of the source, and the ZIP64
// end record that its locator points to.
#pragma once
#include "io.h"
#include "status.h"
#include <cstdint>
#include <string>

namespace zipformat {

struct EndRecord {
    std::uint64_t entries = 0;
    std::uint64_t centralSize = 0;
    std::uint64_t centralOffset = 0;  // as recorded
    std::uint64_t directoryEnd = 0;   // where the central directory ends in the source: the first end record
    std::string comment;
    bool zip64 = false;
};

// Truncated for a source too short for an end record, Corrupt when none is found or the archive spans disks.
[[nodiscard]] Status FindEndRecord(ByteSource& source, EndRecord& end);

} // namespace zipformat
