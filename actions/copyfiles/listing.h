// One source folder as the walk sees it: its selected files and its subfolders, read in one pass.
#pragma once
#include "copyrun.h"
#include "frame/step.h"
#include <string>
#include <variant>

namespace tol {

struct FolderListing {
    NameSet fileNames;        // files that pass the masks (8.3 names with ShortNames)
    FolderNames subfolders;   // with Recurse: the subfolders to walk
    bool folderPasses = false;  // the folder passes the folder masks: its files may be selected
    std::wstring destFolder;  // the destination root followed by the folder's relative path
};

// Lists folder (a path below the source root, or the root itself). relativeLongPath is the folder's path
// after the source root in long names, which the folder masks are tested on even with ShortNames. A folder
// that cannot be read logs message 64 and gives StepFailed, unless IgnoreSrc lets it count as empty; a stop
// seen between entries gives StepStopped.
std::variant<FolderListing, StepStatus> ListFolder(CopyFilesRun& run, const std::wstring& folder,
                                                   const std::wstring& relativeLongPath);

} // namespace tol
