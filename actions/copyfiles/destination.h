// Making a destination folder ready before the first file of a level is copied into it.
#pragma once
#include "copyrun.h"
#include "frame/step.h"
#include <string>

namespace tol {

// The destination folder of one walk level.
struct LevelFolder {
    bool prepared = false;  // made ready: later files of the level skip that step
    bool wasMissing = false;  // it did not exist when prepared: nothing in it predates this run's copies
};

// Prepares the destination folder once per level: logs New Folder when it is missing, creates it (retried as a
// passing error allows; message 10 with destination as the path) unless NoCopy, and gives it the attributes of
// the source folder. forFile: source and destination are a file's paths and the folders are their folder
// parts; otherwise they are the folders themselves.
[[nodiscard]] StepStatus EnsureDestinationFolder(CopyFilesRun& run, const std::wstring& source,
                                                 const std::wstring& destination, bool forFile, LevelFolder& level);

} // namespace tol
