// ZIP Files: adds a folder's files to a ZIP archive, or freshens or updates one, through DZIP32.dll.
#include "actions/actions.h"
#include "zip_job.h"
#include "fileutil/fileops.h"
#include "frame/errors.h"
#include "frame/messages.h"

namespace tol {
namespace {

constexpr unsigned kFolderEmpty = 34;  // "%1 Folder cannot be empty"
constexpr unsigned kRoots = 66;        // "%1 -> %2"

// In the action's order; PathInfo only matters, and is only read, when NoPaths is off.
ZipSettings ReadZipSettings(IBuildRun* build, IBuildStep* step) {
    ZipSettings s;
    s.action = GetStepLong(step, build, L"Action");
    s.dest = GetStepText(step, build, L"Dest");
    s.source = GetStepText(step, build, L"Source");
    s.recurse = GetStepBool(step, build, L"Recurse");
    s.compression = GetStepLong(step, build, L"Compression");
    s.noPaths = GetStepBool(step, build, L"NoPaths");
    s.comment = GetStepText(step, build, L"Comment");
    s.include = GetStepText(step, build, L"Ext");
    s.exclude = GetStepText(step, build, L"ExclExt");
    s.hidden = GetStepBool(step, build, L"Hidden");
    s.grow = GetStepBool(step, build, L"Grow");
    if (!s.noPaths) s.pathInfo = GetStepBool(step, build, L"PathInfo");
    s.shortNames = GetStepBool(step, build, L"ShortNames");
    s.skipLocked = GetStepBool(step, build, L"SkipLocked");
    s.archiveOnly = GetStepBool(step, build, L"Archive");
    s.clearArchive = GetStepBool(step, build, L"ClearArchive");
    return s;
}

// The outcome of the deletion is the library's to find out: a file that stays is zipped into.
void DeleteExistingArchive(const std::wstring& zipFile) {
    if (::GetFileAttributesW(zipFile.c_str()) != INVALID_FILE_ATTRIBUTES) (void)DeleteFileForced(zipFile);
}

} // namespace

// An empty Source would zip whatever folder the host runs in: the step fails before anything is touched.
long RunZipFiles(IBuildRun* build, IBuildStep* step) {
    ZipJob job(build, GetStepBool(step, build, L"LogDetail"));
    const ZipSettings settings = ReadZipSettings(build, step);
    const bool deleteFirst = GetStepBool(step, build, L"Delete");
    if (settings.source.empty()) throw truntime_error(FormatResourceMessage(kFolderEmpty, {L"Source"}));
    job.Fill(settings);
    if (deleteFirst) DeleteExistingArchive(settings.dest);
    LogMessage(build, FormatResourceMessage(kRoots, {job.SourceFolder(), job.ZipFile()}));
    return job.Run();
}

} // namespace tol
