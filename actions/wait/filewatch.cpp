#include "filewatch.h"
#include "fileutil/fileops.h"
#include "fileutil/filetimes.h"
#include "fileutil/paths.h"
#include "frame/handles.h"
#include "frame/messages.h"

namespace tol {
namespace {

constexpr DWORD kWatchedChanges = FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_LAST_WRITE;

// What the file was when the wait began; the start time is never renewed.
struct FileStart {
    bool existed = false;
    double lastWrite = 0; // local, whole seconds; a time that could not be read is the zero file time
};

FileStart ReadStart(const std::wstring& path) {
    FileStart start;
    start.existed = IsExistingFile(path);
    if (start.existed) {
        FILETIME time{};
        if (!GetFileTimes(path, &time)) time = FILETIME{};
        start.lastWrite = FileTimeToLocalDate(time);
    }
    return start;
}

bool HasChanged(const std::wstring& path, const FileStart& start) {
    if (!IsExistingFile(path)) return false;
    if (!start.existed) return true; // created
    FILETIME time{};
    if (!GetFileTimes(path, &time)) return false;
    return FileTimeToLocalDate(time) > start.lastWrite;
}

// True when the notification fired and no stop was requested meanwhile.
bool WaitForNotification(HANDLE notification, HANDLE stopEvent) noexcept {
    const HANDLE handles[2] = {notification, stopEvent};
    if (::WaitForMultipleObjects(2, handles, FALSE, INFINITE) != WAIT_OBJECT_0) return false;
    return ::WaitForSingleObject(stopEvent, 0) == WAIT_TIMEOUT;
}

} // namespace

std::wstring WatchedFolder(const std::wstring& path) {
    const std::wstring folder = DirectoryPart(path, false);
    const bool root = folder.empty() ? !path.empty() && IsPathSeparator(path.front()) : folder.back() == L':';
    return root ? DirectoryPart(path, true) : folder;
}

FileWaitResult WaitForFileChange(const std::wstring& path, HANDLE stopEvent) {
    const FileStart start = ReadStart(path);
    const std::wstring folder = WatchedFolder(path);
    for (;;) {
        unique_change_notification notification(::FindFirstChangeNotificationW(folder.c_str(), FALSE, kWatchedChanges));
        if (!notification) return {FileWaitEnd::CannotMonitor, HResultFromLastError()};
        if (!WaitForNotification(notification.get(), stopEvent)) return {FileWaitEnd::Stopped};
        notification.reset();
        if (HasChanged(path, start)) return {FileWaitEnd::Changed};
    }
}

} // namespace tol
