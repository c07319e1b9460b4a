// Whether a listed file is copied now, and how its destination compares with it.
#pragma once
#include "copyrun.h"
#include <string>

namespace tol {

enum class CopyOutcome {
    New,        // copy: the destination is missing
    Different,  // copy: the destination exists and is not the same
    Copy,       // copy: Incremental is off
    Same,       // up to date: no copy
};

// The copy-time filter, given the attributes read (GetFileAttributesW) when the file's turn comes: false for a
// file passed over now (hidden or system without Hidden; archive bit clear with Archive). A file whose
// attributes could not be read is not passed over: its copy reports why.
[[nodiscard]] bool IsCopiedNow(const CopyFilesRun& run, DWORD attributes) noexcept;

// With Incremental, the two files are the same when both can be opened for reading, their last-write times,
// local and in whole seconds, are at most 2 seconds apart, and their sizes are equal. Each file is opened at
// most once (its time and size read through the one handle), the destination first: a missing destination
// needs no look at the source.
[[nodiscard]] CopyOutcome ClassifyFile(const CopyFilesRun& run, const std::wstring& source,
                                       const std::wstring& destination) noexcept;

} // namespace tol
