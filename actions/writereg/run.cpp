// Write Registry: writes one value, deletes one value, or deletes a key tree, here or on another computer.
#include "actions/actions.h"
#include "delete.h"
#include "frame/registry.h"
#include "frame/step.h"
#include "root.h"
#include "settings.h"
#include "write.h"

namespace tol {
namespace {

// A deletion works on this computer's registry below the root key itself; it reads no further property.
void Delete(const RegistryTarget& target) {
    const bool wholeKey = target.valueName == kWholeKeyMarker;
    if (wholeKey) RequireNamedKey(target.subKey);
    const unique_hkey root = OpenRegistryRoot(target.rootKey, std::wstring());
    if (wholeKey) {
        DeleteRegistryKey(root.get(), target.subKey);
    } else {
        DeleteRegistryValue(root.get(), target.subKey, target.valueName);
    }
}

void Write(IBuildRun* build, IBuildStep* step, const RegistryTarget& target) {
    const std::wstring data = GetStepText(step, build, L"ValueData");
    const std::wstring computer = GetStepText(step, build, L"Computer");
    unique_hkey key;
    {
        const unique_hkey root = OpenRegistryRoot(target.rootKey, computer);
        key = CreateKey(root.get(), target.subKey);
    } // the root is closed once the key is open
    const long valueType = GetStepLong(step, build, L"ValueType");
    WriteRegistryValue(key.get(), target.valueName, valueType, data);
}

} // namespace

long RunWriteRegistry(IBuildRun* build, IBuildStep* step) {
    const RegistryTarget target = ReadRegistryTarget(build, step);
    if (target.deleteValue) {
        Delete(target);
    } else {
        Write(build, step, target);
    }
    return StepSucceeded;
}

} // namespace tol
