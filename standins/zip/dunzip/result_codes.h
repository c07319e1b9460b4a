// dunzip's result codes.
#pragma once
#include "format/status.h"

namespace unzipper {

enum UnzipResult : long {
    UnzipOk = 0,
    UnzipTruncated = 2,
    UnzipCorrupt = 3,
    UnzipNoMemory = 4,
    UnzipNotFound = 9,
    UnzipNothingSelected = 11,
    UnzipCreateFailed = 28,
    UnzipOpenFailed = 29,
    UnzipBadCrc = 39,
    UnzipCancelled = 40,
    UnzipEncrypted = 41,
    UnzipUnknownMethod = 42,
    UnzipSyntaxError = 47,
    UnzipSkipped = 49,
    UnzipDiskFull = 50,
};

// What the reader's or the extractor's status means to the caller.
UnzipResult ResultOf(zipformat::Status status) noexcept;

// Results that end the call at once; the others skip one entry and the rest goes on.
bool EndsExtraction(UnzipResult result) noexcept;

} // namespace unzipper
