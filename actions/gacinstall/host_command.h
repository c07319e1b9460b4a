// Running the gacutil command line through the host, which owns the process, its output and its exit code.
#pragma once
#include "VelmoraSvr.h"
#include <string>

namespace tol {

// The step status that the host reports for the command. A host that answers S_OK without writing a status
// gives StepFailed: only a reported success counts as one. A failing HRESULT throws comet::com_error.
long RunHostCommand(IBuildRun* build, const std::wstring& commandLine);

} // namespace tol
