// The order in which the new archive is written: entries of the existing archive kept where they lie (growing) or
// copied, and files added, new ones or replacing an entry of the same name.
#pragma once
#include "file_list.h"
#include "format/entry.h"
#include <vector>

namespace zipper {

enum class StepKind { Keep, Copy, Add };

struct PlanStep {
    StepKind kind;
    size_t index;           // into the existing entries (Keep, Copy) or the files (Add)
    bool replaces = false;  // an Add that takes the place of an existing entry
};

struct Plan {
    std::vector<PlanStep> steps;
    size_t additions = 0;   // Adds: files that change the archive
};

// Add takes every file, replacing entries of the same name (compared without regard to case); Update adds new files
// and replaces entries that are older than their file; Freshen only replaces older entries. A folder already in the
// archive stays as it is. Growing keeps every entry that is not replaced in place and adds after them; otherwise a
// replaced entry's file is written where the entry was.
Plan MakePlan(std::int32_t function, const zipformat::Archive* existing, const std::vector<SourceFile>& files,
              bool growing);

} // namespace zipper
