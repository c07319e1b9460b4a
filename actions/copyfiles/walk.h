// The walk of the source tree: per folder, list it, copy its files in order, walk its subfolders in order, then
// purge its destination folder. One listing is held per folder level, never the whole tree.
#pragma once
#include "copyrun.h"
#include "frame/step.h"
#include <string>

namespace tol {

// folder: the source root or a folder below it; relativeLongPath: its path after the root in long names.
// Each level stops at the first status that is not StepSucceeded and then skips its purge.
[[nodiscard]] StepStatus WalkFolder(CopyFilesRun& run, const std::wstring& folder, const std::wstring& relativeLongPath);

} // namespace tol
