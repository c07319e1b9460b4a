#include "settings.h"
#include "frame/step.h"

namespace tol {

ReplaceSettings ReadReplaceSettings(IBuildRun* build, IBuildStep* step) {
    ReplaceSettings settings;
    settings.codePage = GetStepCodePage(step, build);
    settings.fileIn = GetStepText(step, build, L"FileIn");
    settings.fileOut = GetStepText(step, build, L"FileOut");
    settings.find = GetStepText(step, build, L"Find");
    settings.replace = GetStepText(step, build, L"Replace");
    settings.clearReadOnly = GetStepBool(step, build, L"Attr");
    settings.caseSensitive = GetStepBool(step, build, L"CaseSensitive");
    return settings;
}

} // namespace tol
