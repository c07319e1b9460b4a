#include "walk.h"
#include "classify.h"
#include "copyone.h"
#include "destination.h"
#include "listing.h"
#include "purge.h"
#include "fileutil/fileops.h"
#include "fileutil/paths.h"

namespace tol {
namespace {

StepStatus CopyFiles(CopyFilesRun& run, const std::wstring& folder, const FolderListing& listing, LevelFolder& level) {
    for (const std::wstring& name : listing.fileNames) {
        if (run.stop.IsStopped()) return StepStopped;
        const std::wstring source = CombinePath(folder, name);
        const DWORD attributes = ::GetFileAttributesW(source.c_str());
        if (!IsCopiedNow(run, attributes)) continue;
        const std::wstring destination = CombinePath(run.flat ? run.destRoot : listing.destFolder, name);
        const StepStatus status = CopyOneFile(run, {source, attributes}, destination, level);
        if (status != StepSucceeded) return status;
    }
    return StepSucceeded;
}

StepStatus WalkSubfolders(CopyFilesRun& run, const std::wstring& folder, const std::wstring& relativeLongPath,
                          const FolderListing& listing) {
    for (const auto& [name, longName] : listing.subfolders) {
        const std::wstring subfolder = CombinePath(folder, name);
        const std::wstring relative = relativeLongPath.empty() ? longName : CombinePath(relativeLongPath, longName);
        const StepStatus status = WalkFolder(run, subfolder, relative);
        if (status != StepSucceeded) return status;
        if (!run.noCopy && run.move && run.moveDirs) (void)RemoveFolderForced(subfolder);
    }
    return StepSucceeded;
}

// With Flat every level's files land in the destination root, which is purged once after the walk against
// the names of the whole tree; here the level only adds its names.
StepStatus PurgeLevel(CopyFilesRun& run, FolderListing& listing) {
    if (!run.purge) return StepSucceeded;
    if (run.flat) {
        run.flatNames.merge(listing.fileNames);
        return StepSucceeded;
    }
    if (!IsExistingFolder(listing.destFolder)) return StepSucceeded;
    const PurgeResult result = PurgeFolder(run, listing.destFolder, &listing.fileNames, &listing.subfolders);
    return result == PurgeResult::Stopped ? StepStopped : StepSucceeded;
}

} // namespace

StepStatus WalkFolder(CopyFilesRun& run, const std::wstring& folder, const std::wstring& relativeLongPath) {
    auto listed = ListFolder(run, folder, relativeLongPath);
    if (const StepStatus* status = std::get_if<StepStatus>(&listed)) return *status;
    FolderListing& listing = std::get<FolderListing>(listed);
    LevelFolder level;
    StepStatus status = StepSucceeded;
    if (run.recurse && run.empty && !run.flat && listing.folderPasses)
        status = EnsureDestinationFolder(run, folder, listing.destFolder, false, level);
    if (status == StepSucceeded) status = CopyFiles(run, folder, listing, level);
    if (status == StepSucceeded) status = WalkSubfolders(run, folder, relativeLongPath, listing);
    if (status == StepSucceeded) status = PurgeLevel(run, listing);
    return status;
}

} // namespace tol
