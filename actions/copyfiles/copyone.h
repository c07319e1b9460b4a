// Copying (or moving) one selected file, or reporting that it is up to date.
#pragma once
#include "copyrun.h"
#include "destination.h"
#include "frame/step.h"
#include <string>

namespace tol {

// A source file and its attributes as read when its turn came.
struct SourceFile {
    const std::wstring& path;
    DWORD attributes;
};

// Prepares the level's destination folder, classifies the file, logs it, and unless NoCopy copies it (under
// the retry rule, message 63 with the destination path), fixes attributes and, with Move, deletes the source.
// Counts every file copied or that would be. The source of a move is deleted only after its copy succeeded.
[[nodiscard]] StepStatus CopyOneFile(CopyFilesRun& run, const SourceFile& source, const std::wstring& destination,
                                     LevelFolder& level);

// One attempt at the copy itself. With Restartable the platform copies straight onto the destination (and keeps
// a partial copy there to resume after a stop). Without it the copy goes to a temporary name beside the
// destination and replaces the destination only once complete, so a failed or stopped copy never leaves a
// truncated file under the destination's name. False with the failing call's error code.
[[nodiscard]] bool CopyFileOnce(CopyFilesRun& run, const std::wstring& source, const std::wstring& destination) noexcept;

// The name a copy without Restartable is written to before it replaces the destination.
std::wstring PartialCopyName(const std::wstring& destination);

} // namespace tol
