// The step properties of Replace in File that are read before the input file.
#pragma once
#include "VelmoraSvr.h"
#include <windows.h>
#include <string>

namespace tol {

struct ReplaceSettings {
    UINT codePage = CP_ACP;   // of both files
    std::wstring fileIn;
    std::wstring fileOut;     // may name the input file
    std::wstring find;        // literal mode: one search text per line
    std::wstring replace;     // literal mode: one replacement per line
    bool clearReadOnly = false;  // Attr
    bool caseSensitive = false;
};

// Reads the properties in the order the action asks for them; a failed read throws comet::com_error.
ReplaceSettings ReadReplaceSettings(IBuildRun* build, IBuildStep* step);

} // namespace tol
