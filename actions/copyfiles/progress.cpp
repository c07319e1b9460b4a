#include "progress.h"
#include "copyrun.h"

namespace tol {

DWORD CALLBACK CopyProgress(LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, LARGE_INTEGER, DWORD, DWORD, HANDLE, HANDLE,
                            LPVOID data) noexcept {
    const CopyFilesRun& run = *static_cast<const CopyFilesRun*>(data);
    if (!run.stop.IsStopped()) return PROGRESS_CONTINUE;
    return run.restartable ? PROGRESS_STOP : PROGRESS_CANCEL;
}

} // namespace tol
