#include "result_codes.h"

namespace zipper {

ZipResult ResultOf(zipformat::Status status) noexcept {
    using zipformat::Status;
    switch (status) {
    case Status::Ok: return ZipOk;
    case Status::Truncated: return ZipTruncated;
    case Status::OutOfMemory: return ZipNoMemory;
    case Status::TooLarge: return ZipTooBig;
    case Status::ReadFailed: return ZipReadFailed;
    case Status::WriteFailed: return ZipWriteFailed;
    case Status::Cancelled: return ZipCancelled;
    default: return ZipCorrupt;
    }
}

} // namespace zipper
