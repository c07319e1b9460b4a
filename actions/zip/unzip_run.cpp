// UNZIP Files: extracts files from a ZIP archive into a folder, or freshens or updates them, through DUNZIP32.dll.
#include "actions/actions.h"
#include "ansi.h"
#include "unzip_job.h"
#include "frame/messages.h"

namespace tol {
namespace {

constexpr unsigned kRoots = 66;  // "%1 -> %2"

UnzipSettings ReadUnzipSettings(IBuildRun* build, IBuildStep* step) {
    UnzipSettings s;
    s.source = GetStepText(step, build, L"Source");
    s.masks = GetStepText(step, build, L"Ext");
    s.action = GetStepLong(step, build, L"Action");
    s.pathInfo = GetStepBool(step, build, L"PathInfo");
    s.recurse = GetStepBool(step, build, L"Recurse");
    s.shortNames = GetStepBool(step, build, L"ShortNames");
    s.overwriteReadOnly = GetStepBool(step, build, L"ReadOnly");
    return s;
}

} // namespace

long RunUnzipFiles(IBuildRun* build, IBuildStep* step) {
    std::string destination = ToAnsi(GetStepText(step, build, L"Dest"));
    UnzipJob job(build, GetStepBool(step, build, L"LogDetail"), std::move(destination));
    job.Fill(ReadUnzipSettings(build, step));
    LogMessage(build, FormatResourceMessage(kRoots, {job.ZipFile(), job.Destination()}));
    return job.Run();
}

} // namespace tol
