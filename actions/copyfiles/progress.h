// The progress routine handed to CopyFileExW: the way a stop request reaches a copy in progress.
#pragma once
#include <windows.h>

namespace tol {

// data is the CopyFilesRun. PROGRESS_CONTINUE while the run's stop test answers false; once it answers true,
// PROGRESS_STOP with Restartable (the platform keeps the partial copy to resume) and PROGRESS_CANCEL without
// (the platform removes it). The copy then fails with ERROR_REQUEST_ABORTED.
DWORD CALLBACK CopyProgress(LARGE_INTEGER totalSize, LARGE_INTEGER totalTransferred, LARGE_INTEGER streamSize,
                            LARGE_INTEGER streamTransferred, DWORD streamNumber, DWORD reason, HANDLE source,
                            HANDLE destination, LPVOID data) noexcept;

} // namespace tol
