// The run routines of the twelve actions.
#pragma once
#include "VelmoraSvr.h"

namespace tol {

long RunWriteRegistry(IBuildRun* build, IBuildStep* step);
long RunWriteFile(IBuildRun* build, IBuildStep* step);
long RunWriteIni(IBuildRun* build, IBuildStep* step);
long RunWait(IBuildRun* build, IBuildStep* step);
long RunService(IBuildRun* build, IBuildStep* step);
long RunCopyFiles(IBuildRun* build, IBuildStep* step);
long RunGacInstall(IBuildRun* build, IBuildStep* step);
long RunFileReplace(IBuildRun* build, IBuildStep* step);
long RunComPlusApplication(IBuildRun* build, IBuildStep* step);
long RunComPlusComponent(IBuildRun* build, IBuildStep* step);
long RunZipFiles(IBuildRun* build, IBuildStep* step);
long RunUnzipFiles(IBuildRun* build, IBuildStep* step);

} // namespace tol
