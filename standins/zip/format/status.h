// What an archive operation came to; each library maps it onto its own result codes.
#pragma once

namespace zipformat {

enum class Status {
    Ok,
    Truncated,          // the archive ends before a record or an entry's data does
    Corrupt,            // a record or an entry's data is not what it claims to be
    BadCrc,             // the data does not match its CRC-32
    Encrypted,          // the entry is encrypted
    UnsupportedMethod,  // a compression method other than stored and deflated
    TooLarge,           // sizes, offsets or counts that need ZIP64 where it is not allowed or not prepared
    ReadFailed,         // the source could not be read
    WriteFailed,        // the sink could not be written
    OutOfMemory,
    Cancelled,          // the progress callback asked to stop
};

} // namespace zipformat
