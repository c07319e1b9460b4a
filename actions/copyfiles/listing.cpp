#include "listing.h"
#include "loglines.h"
#include "fileutil/finder.h"
#include "fileutil/paths.h"
#include "frame/messages.h"

namespace tol {
namespace {

constexpr unsigned kCannotQuerySource = 64;  // "Error querying source path '%1': %2"
constexpr DWORD kHiddenOrSystem = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

bool IsHiddenFolder(const DirectoryFinder& finder) {
    const DWORD attributes = ::GetFileAttributesW(finder.FullPath().c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & kHiddenOrSystem);
}

void AddSubfolder(const CopyFilesRun& run, const DirectoryFinder& finder, FolderListing& listing) {
    if (!run.recurse || finder.IsDotEntry()) return;
    if (!run.hidden && IsHiddenFolder(finder)) return;
    listing.subfolders.emplace(run.shortNames ? finder.ShortName() : finder.LongName(), finder.LongName());
}

void AddFile(const CopyFilesRun& run, const DirectoryFinder& finder, FolderListing& listing) {
    if (!listing.folderPasses || !run.filter.MatchesFile(finder.LongName())) return;
    listing.fileNames.emplace(run.shortNames ? finder.ShortName() : finder.LongName());
}

} // namespace

std::variant<FolderListing, StepStatus> ListFolder(CopyFilesRun& run, const std::wstring& folder,
                                                   const std::wstring& relativeLongPath) {
    FolderListing listing;
    listing.destFolder = run.destRoot + std::wstring(RelativeTo(folder, run.sourceRoot));
    DirectoryFinder finder;
    if (folder.empty() || !finder.FindFirst(CombinePath(folder, L"*"))) {
        if (run.ignoreSrc) return listing;
        const HRESULT error = HResultFromLastError();
        LogMessage(run.build, FormatResourceMessage(kCannotQuerySource, {folder, SystemErrorText(error)}));
        return StepFailed;
    }
    listing.folderPasses = run.filter.MatchesFolderPath(relativeLongPath);
    while (finder.FindNext()) {
        if (run.stop.IsStopped()) return StepStopped;
        if (finder.IsFolder())
            AddSubfolder(run, finder, listing);
        else
            AddFile(run, finder, listing);
    }
    return listing;
}

} // namespace tol
