#include "settings.h"
#include "frame/step.h"

namespace tol {

IniSettings ReadIniSettings(IBuildRun* build, IBuildStep* step) {
    IniSettings settings;
    settings.filename = GetStepText(step, build, L"Filename");
    settings.section = GetStepText(step, build, L"Section");
    settings.valueName = GetStepText(step, build, L"ValueName");
    settings.deleteEntry = GetStepBool(step, build, L"Delete");
    // A deletion has no data: the property is not even asked for.
    if (!settings.deleteEntry) settings.valueData = GetStepText(step, build, L"ValueData");
    return settings;
}

} // namespace tol
