#include "result_codes.h"

namespace unzipper {

UnzipResult ResultOf(zipformat::Status status) noexcept {
    using zipformat::Status;
    switch (status) {
    case Status::Ok: return UnzipOk;
    case Status::Truncated: return UnzipTruncated;
    case Status::BadCrc: return UnzipBadCrc;
    case Status::Encrypted: return UnzipEncrypted;
    case Status::UnsupportedMethod: return UnzipUnknownMethod;
    case Status::OutOfMemory: return UnzipNoMemory;
    case Status::ReadFailed: return UnzipOpenFailed;
    case Status::WriteFailed: return UnzipCreateFailed;
    case Status::Cancelled: return UnzipCancelled;
    default: return UnzipCorrupt;
    }
}

bool EndsExtraction(UnzipResult result) noexcept {
    return result == UnzipCancelled || result == UnzipDiskFull || result == UnzipNoMemory || result == UnzipOpenFailed;
}

} // namespace unzipper
