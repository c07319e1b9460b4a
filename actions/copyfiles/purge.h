// Purging a destination folder of what the source does not have, bottom-up.
#pragma once
#include "copyrun.h"
#include <string>

namespace tol {

enum class PurgeResult {
    Stopped,
    Retained,  // something in the folder stays, so the folder stays
    Emptied,   // the folder was given up and its removal attempted
};

// Deletes the files of folder that the masks select and that fileNames lacks, and purges each subfolder that
// subfolders lacks (null lists: everything counts as extra). Hidden and system files go like any other;
// hidden and system subfolders only with Hidden. With NoCopy nothing is deleted but everything is counted and
// logged as it would be. Delete failures are logged, never errors.
[[nodiscard]] PurgeResult PurgeFolder(CopyFilesRun& run, const std::wstring& folder, const NameSet* fileNames,
                                      const FolderNames* subfolders);

// Removes an emptied extra folder (or counts it as removed with NoCopy) and logs it.
void RemoveExtraFolder(CopyFilesRun& run, const std::wstring& folder);

} // namespace tol
