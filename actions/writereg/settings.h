// The step properties that every Write Registry run reads first, in the action's order.
#pragma once
#include "VelmoraSvr.h"
#include <string>

namespace tol {

struct RegistryTarget {
    std::wstring subKey;
    std::wstring valueName; // empty: the key's default value; "*****" with deleteValue: the whole key
    long rootKey = 0;       // a predefined root key as its handle value
    bool deleteValue = false;
};

// A failed read throws comet::com_error with the host's HRESULT.
RegistryTarget ReadRegistryTarget(IBuildRun* build, IBuildStep* step);

// Compared character by character: only this exact text names the whole key.
constexpr const wchar_t kWholeKeyMarker[] = L"*****";

} // namespace tol
