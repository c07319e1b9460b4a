// The archive that a dzip call adds to, freshens or updates, when there is one.
#pragma once
#include "options.h"
#include "common/file_source.h"
#include "format/entry.h"

namespace zipper {

struct ExistingArchive {
    bool present = false;   // a file with at least one byte
    zipwin::FileSource source;
    zipformat::Archive archive;
};

// A missing or empty file leaves present false. ZipCreateFailed when the file exists but cannot be opened, the
// reader's result when it is not a whole archive.
ZipResult OpenExisting(const ZipOptions& options, ExistingArchive& existing);

} // namespace zipper
