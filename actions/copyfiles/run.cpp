// Copy Files: copies, moves, mirrors and purges a folder tree with include and exclude masks, incremental
// comparison, retries on passing network and sharing errors, and a display-only mode.
#include "actions/actions.h"
#include "copyrun.h"
#include "purge.h"
#include "retry.h"
#include "walk.h"
#include "fileutil/fileops.h"
#include "frame/messages.h"

namespace tol {
namespace {

constexpr unsigned kCannotCreatePath = 10;  // "Error creating destination path '%1': %2"
constexpr unsigned kFilesDone = 35;         // "%1!d! file(s) %2%3"
constexpr unsigned kFilesDeleted = 36;      // ", %1!d! file(s) %2deleted"
constexpr unsigned kWouldHaveBeen = 37;     // "would have been "
constexpr unsigned kRoots = 66;             // "%1 -> %2"

StepStatus CreateDestinationRoot(CopyFilesRun& run) {
    if (run.noCopy || run.sourceRoot.empty()) return StepSucceeded;
    return RunWithRetries(run, kCannotCreatePath, run.destRoot, [&run] { return CreatePath(run.destRoot); });
}

// With Flat and Purge the destination root keeps what was selected anywhere in the source tree; its
// subfolders have no counterpart in a flat copy and count as extra.
StepStatus PurgeFlatDestination(CopyFilesRun& run) {
    if (!run.flat || !run.purge || !IsExistingFolder(run.destRoot)) return StepSucceeded;
    const FolderNames noSubfolders;
    return PurgeFolder(run, run.destRoot, &run.flatNames, &noSubfolders) == PurgeResult::Stopped ? StepStopped
                                                                                               : StepSucceeded;
}

StepStatus FinishWalk(CopyFilesRun& run, StepStatus status) {
    if (status != StepSucceeded) return status;
    status = PurgeFlatDestination(run);
    if (status == StepSucceeded && !run.noCopy && run.move && run.moveDirs) (void)RemoveFolderForced(run.sourceRoot);
    return status;
}

void LogSummary(const CopyFilesRun& run) {
    const std::wstring qualifier = run.noCopy ? LoadResourceText(kWouldHaveBeen) : std::wstring();
    std::wstring text = FormatResourceMessage(
        kFilesDone, {static_cast<long>(run.filesCounted), qualifier, run.move ? L"moved" : L"copied"});
    if (run.purge) text += FormatResourceMessage(kFilesDeleted, {static_cast<long>(run.filesDeleted), qualifier});
    LogMessage(run.build, text);
}

} // namespace

long RunCopyFiles(IBuildRun* build, IBuildStep* step) {
    std::optional<CopySettings> settings = ReadCopySettings(build, step);
    if (!settings) return StepFailed;
    CopyFilesRun run(build, std::move(*settings));
    const StepStatus created = CreateDestinationRoot(run);
    if (created != StepSucceeded) return created;
    LogMessage(build, FormatResourceMessage(kRoots, {run.sourceRoot, run.destRoot}));
    const StepStatus status = FinishWalk(run, WalkFolder(run, run.sourceRoot, std::wstring()));
    LogSummary(run);
    return status;
}

} // namespace tol
