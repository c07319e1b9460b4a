#include "purge.h"
#include "loglines.h"
#include "fileutil/fileops.h"
#include "fileutil/finder.h"
#include "fileutil/paths.h"
#include "frame/messages.h"

namespace tol {
namespace {

constexpr unsigned kFileNotDeleted = 48;    // " (error deleting file: %1)"
constexpr unsigned kFolderNotDeleted = 49;  // " (error deleting folder: %1)"
constexpr DWORD kHiddenOrSystem = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;

// The platform's text for the failed delete, as the purge line's tail.
std::wstring DeleteFailure(unsigned messageId) {
    const HRESULT error = HResultFromLastError();
    return FormatResourceMessage(messageId, {SystemErrorText(error)});
}

template <class Names>
bool Holds(const Names* names, const wchar_t* name) {
    return names && names->find(name) != names->end();
}

PurgeResult PurgeFile(CopyFilesRun& run, const DirectoryFinder& finder, const std::wstring& folder, bool passes,
                      const NameSet* fileNames) {
    if (Holds(fileNames, finder.LongName()) || !passes || !run.filter.MatchesFile(finder.LongName()))
        return PurgeResult::Retained;
    const std::wstring path = CombinePath(folder, run.shortNames ? finder.ShortName() : finder.LongName());
    const bool deleted = run.noCopy || DeleteFileForced(path);
    const std::wstring tail = deleted ? std::wstring() : DeleteFailure(kFileNotDeleted);
    if (deleted) ++run.filesDeleted;
    if (run.logCopied) LogItem(run, LinePrefix::kExtraFile, path, run.destRoot, tail);
    return PurgeResult::Emptied;
}

PurgeResult PurgeSubfolder(CopyFilesRun& run, const DirectoryFinder& finder, const std::wstring& folder,
                           const FolderNames* subfolders) {
    if (finder.IsDotEntry()) return PurgeResult::Emptied;
    if (!run.hidden) {
        const DWORD attributes = ::GetFileAttributesW(finder.FullPath().c_str());
        if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & kHiddenOrSystem)) return PurgeResult::Retained;
    }
    if (Holds(subfolders, finder.LongName())) return PurgeResult::Retained;
    const std::wstring path = CombinePath(folder, run.shortNames ? finder.ShortName() : finder.LongName());
    return PurgeFolder(run, path, nullptr, nullptr);
}

// Every entry of the folder in turn: Emptied while nothing has stayed (a dot entry changes nothing), Stopped as
// soon as the stop test answers true, so that a folder left half purged is not given up.
PurgeResult PurgeEntries(CopyFilesRun& run, const std::wstring& folder, bool passes, const NameSet* fileNames,
                         const FolderNames* subfolders) {
    PurgeResult result = passes ? PurgeResult::Emptied : PurgeResult::Retained;
    DirectoryFinder finder;
    if (!finder.FindFirst(CombinePath(folder, L"*"))) return result;
    while (finder.FindNext()) {
        if (run.stop.IsStopped()) return PurgeResult::Stopped;
        const PurgeResult entry = finder.IsFolder() ? PurgeSubfolder(run, finder, folder, subfolders)
                                                    : PurgeFile(run, finder, folder, passes, fileNames);
        if (entry != PurgeResult::Emptied) result = entry;
        if (result == PurgeResult::Stopped) return result;
    }
    return result;
}

} // namespace

PurgeResult PurgeFolder(CopyFilesRun& run, const std::wstring& folder, const NameSet* fileNames,
                        const FolderNames* subfolders) {
    const std::wstring relative(RelativeTo(folder, run.destRoot));
    PurgeResult result = PurgeEntries(run, folder, run.filter.MatchesFolderPath(relative), fileNames, subfolders);
    if (result == PurgeResult::Emptied) {
        if (run.empty && IsExistingFolder(run.sourceRoot + relative))
            result = PurgeResult::Retained;
        else
            RemoveExtraFolder(run, folder);
    }
    return run.stop.IsStopped() ? PurgeResult::Stopped : result;
}

void RemoveExtraFolder(CopyFilesRun& run, const std::wstring& folder) {
    const bool removed = run.noCopy || RemoveFolderForced(folder);
    const std::wstring tail = removed ? std::wstring() : DeleteFailure(kFolderNotDeleted);
    if (run.logCopied) LogItem(run, LinePrefix::kExtraFolder, folder, run.destRoot, tail);
}

} // namespace tol
