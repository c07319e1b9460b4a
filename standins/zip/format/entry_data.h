// An entry's data: where it starts behind the local header, and its extraction with the size and CRC-32 checks.
#pragma once
#include "entry.h"
#include "inflater.h"
#include "io.h"
#include "status.h"
#include <cstdint>
#include <vector>

namespace zipformat {

// The offset of the entry's data in the source. Truncated when the local header or the data reach past the end
// of the source, Corrupt when the local header is not one.
[[nodiscard]] Status LocateData(ByteSource& source, const Archive& archive, const Entry& entry, std::uint64_t& dataOffset);

// Extracts entries one after the other with buffers and a decompressor that are kept between them.
class EntryExtractor {
public:
    EntryExtractor();

    // Writes the entry's data to sink. Encrypted and UnsupportedMethod before anything is written; Corrupt when the
    // data does not decompress to exactly the entry's size, BadCrc when its CRC differs, Cancelled when progress
    // asks to stop (asked after every block of output). Whatever reached the sink stays there: the caller drops it.
    [[nodiscard]] Status Extract(ByteSource& source, const Archive& archive, const Entry& entry, DataSink& sink,
                                 Progress* progress);

private:
    Status CopyStored(ByteSource& source, std::uint64_t offset, const Entry& entry, DataSink& sink, Progress* progress);
    Status Inflate(ByteSource& source, std::uint64_t offset, const Entry& entry, DataSink& sink, Progress* progress);
    Status Deliver(const unsigned char* data, std::size_t size, const Entry& entry, DataSink& sink, Progress* progress);

    std::vector<unsigned char> in_, out_;
    Inflater inflater_;
    std::uint64_t done_ = 0;    // bytes delivered of the current entry
    std::uint32_t crc_ = 0;
};

} // namespace zipformat
