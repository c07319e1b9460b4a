// Reading file times and turning them into local dates.
#include "filetimes.h"
#include "filehandle.h"
#include <oleauto.h>

namespace tol {

bool GetFileTimes(const std::wstring& path, FILETIME* lastWrite, FILETIME* creation, FILETIME* lastAccess) noexcept {
    for (FILETIME* out : {lastWrite, creation, lastAccess})
        if (out) *out = FILETIME{};
    unique_file file = OpenFileQuiet(path, FileMode::Read);
    if (!file) return false;
    const bool read = ::GetFileTime(file.get(), creation, lastAccess, lastWrite) != FALSE;
    const DWORD code = ::GetLastError();
    file.reset();
    ::SetLastError(code);
    return read;
}

double FileTimeToLocalDate(const FILETIME& time) noexcept {
    FILETIME local{};
    SYSTEMTIME parts{};
    double date = 0;
    if (!::FileTimeToLocalFileTime(&time, &local) || !::FileTimeToSystemTime(&local, &parts)) return kInvalidLocalDate;
    parts.wDayOfWeek = 0;
    parts.wMilliseconds = 0;
    if (!::SystemTimeToVariantTime(&parts, &date)) return kInvalidLocalDate;
    return date;
}

} // namespace tol
