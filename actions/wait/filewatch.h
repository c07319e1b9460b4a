// The file criterion: the file is created, or its last-write time moves past the one it had when the wait began.
#pragma once
#include <windows.h>
#include <string>

namespace tol {

enum class FileWaitEnd { Changed, Stopped, CannotMonitor };

struct FileWaitResult {
    FileWaitEnd end = FileWaitEnd::Stopped;
    HRESULT error = S_OK; // CannotMonitor: why the change notification could not be made
};

// The folder whose changes are watched: the path up to its last separator. A drive root ("C:\x", "\\?\C:\x")
// and the root of the current drive ("\x") keep their separator, which names the root rather than the drive's
// current folder. A path without a separator gives an empty folder, which cannot be watched.
std::wstring WatchedFolder(const std::wstring& path);

// Waits for changes in the file's folder with a notification made afresh for every pass, until the file is
// created or its last-write time, local and in whole seconds, is later than at the start, or the stop event is
// set. A stop request wins over a change seen in the same pass.
FileWaitResult WaitForFileChange(const std::wstring& path, HANDLE stopEvent);

} // namespace tol
