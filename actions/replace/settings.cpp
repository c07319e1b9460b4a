#include "settings.h"
#include "frame/step.h"

namespace tol {
namespace {

// An Encoding that the step does not hold is never read as a number: the files are then in the ANSI code page.
UINT ReadCodePage(IBuildRun* build, IBuildStep* step) {
    if (GetStepStored(step, L"Encoding").empty()) return CP_ACP;
    return static_cast<UINT>(GetStepLong(step, build, L"Encoding"));
}

} // namespace

ReplaceSettings ReadReplaceSettings(IBuildRun* build, IBuildStep* step) {
    ReplaceSettings settings;
    settings.codePage = ReadCodePage(build, step);
    settings.fileIn = GetStepText(step, build, L"FileIn");
    settings.fileOut = GetStepText(step, build, L"FileOut");
    settings.find = GetStepText(step, build, L"Find");
    settings.replace = GetStepText(step, build, L"Replace");
    settings.clearReadOnly = GetStepBool(step, build, L"Attr");
    settings.caseSensitive = GetStepBool(step, build, L"CaseSensitive");
    return settings;
}

} // namespace tol
