#include "settings.h"
#include "frame/step.h"

namespace tol {

RegistryTarget ReadRegistryTarget(IBuildRun* build, IBuildStep* step) {
    RegistryTarget target;
    target.subKey = GetStepText(step, build, L"SubKey");
    target.valueName = GetStepText(step, build, L"ValueName");
    target.rootKey = GetStepLong(step, build, L"RootKey");
    target.deleteValue = GetStepBool(step, build, L"DeleteValue");
    return target;
}

} // namespace tol
