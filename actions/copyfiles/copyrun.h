// CopyFilesRun: everything one Copy Files run shares between its pieces, owned by the run routine and passed
// by reference; nothing of it survives the run.
#pragma once
#include "names.h"
#include "settings.h"
#include "stopflag.h"

namespace tol {

struct CopyFilesRun : CopySettings {
    CopyFilesRun(IBuildRun* buildRun, CopySettings settings)
        : CopySettings(std::move(settings)), build(buildRun), stop(buildRun) {}

    IBuildRun* build;
    unsigned long filesCounted = 0;  // copied or moved, or that would be with NoCopy
    unsigned long filesDeleted = 0;  // extra destination files purged, or that would be
    StopFlag stop;
    // With Flat and Purge: every name selected anywhere in the source tree, which the destination root keeps.
    NameSet flatNames;
};

} // namespace tol
