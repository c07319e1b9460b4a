// The step properties of Write INI, read in the order the action asks for them.
#pragma once
#include "VelmoraSvr.h"
#include <string>

namespace tol {

struct IniSettings {
    std::wstring filename;
    std::wstring section;
    std::wstring valueName;  // empty: the whole section
    bool deleteEntry = false;
    std::wstring valueData;  // read only when writing
};

// A failed read throws comet::com_error with the host's HRESULT.
IniSettings ReadIniSettings(IBuildRun* build, IBuildStep* step);

} // namespace tol
