#include "destination.h"
#include "loglines.h"
#include "retry.h"
#include "fileutil/fileops.h"
#include "fileutil/paths.h"

namespace tol {
namespace {

constexpr unsigned kCannotCreatePath = 10;  // "Error creating destination path '%1': %2"

// Failures are of no consequence: the folder is there, only its attributes may differ.
void CopyFolderAttributes(const std::wstring& sourceFolder, const std::wstring& destFolder) noexcept {
    const DWORD attributes = ::GetFileAttributesW(sourceFolder.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) (void)::SetFileAttributesW(destFolder.c_str(), attributes);
}

} // namespace

StepStatus EnsureDestinationFolder(CopyFilesRun& run, const std::wstring& source, const std::wstring& destination,
                                   bool forFile, LevelFolder& level) {
    if (level.prepared) return StepSucceeded;
    const std::wstring folder = forFile ? DirectoryPart(destination, true) : destination;
    const std::wstring sourceFolder = forFile ? DirectoryPart(source, false) : source;
    level.wasMissing = !IsExistingFolder(folder);
    if (level.wasMissing) {
        if (run.logCopied) LogItem(run, LinePrefix::kNewFolder, folder, run.destRoot);
        if (!run.noCopy) {
            const std::wstring path = CombinePath(folder);
            const StepStatus created =
                RunWithRetries(run, kCannotCreatePath, destination, [&path] { return CreatePath(path); });
            if (created != StepSucceeded) return created;
        }
    }
    if (!run.noCopy) CopyFolderAttributes(sourceFolder, folder);
    level.prepared = true;
    return StepSucceeded;
}

} // namespace tol
