// dzip's result codes.
#pragma once
#include "format/status.h"

namespace zipper {

enum ZipResult : long {
    ZipOk = 0,
    ZipTruncated = 2,
    ZipCorrupt = 3,
    ZipNoMemory = 4,
    ZipTooBig = 6,
    ZipBadComment = 7,
    ZipCancelled = 9,
    ZipTempFailed = 10,
    ZipReadFailed = 11,
    ZipNothingToDo = 12,
    ZipMissingArchive = 13,
    ZipWriteFailed = 14,
    ZipCreateFailed = 15,
    ZipBadParameters = 16,
    ZipFileNotFound = 18,
};

// What a failed archive operation means to the caller.
ZipResult ResultOf(zipformat::Status status) noexcept;

} // namespace zipper
