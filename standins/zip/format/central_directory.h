// Reading an archive's table of contents: the end records and every central directory record.
#pragma once
#include "entry.h"
#include "io.h"
#include "status.h"

namespace zipformat {

// The largest central directory read into memory (about four million entries).
constexpr std::uint64_t kMaxCentralSize = std::uint64_t(1) << 30;

// Fills archive from the source. Truncated or Corrupt for archives that are not whole or not what they claim,
// OutOfMemory for a central directory above kMaxCentralSize, ReadFailed when the source fails.
[[nodiscard]] Status ReadArchive(ByteSource& source, Archive& archive);

} // namespace zipformat
