#include "classify.h"
#include "fileutil/filehandle.h"
#include "fileutil/filetimes.h"
#include <cmath>

namespace tol {
namespace {

constexpr DWORD kHiddenOrSystem = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
constexpr double kEarliestDate = -657434.0;  // 1 January 100
constexpr double kLatestDate = 2958465.0;    // 31 December 9999
constexpr long long kSecondsPerDay = 24 * 60 * 60;
constexpr long long kTimeTolerance = 2;      // seconds: FAT keeps even seconds only

// What the comparison needs of one file: its local last-write time in whole seconds and its size.
struct FileStamp {
    long long seconds = 0;
    long long size = 0;
};

// An OLE date before 30 December 1899 carries its time of day as a positive fraction (-1.25 is 29 December,
// 06:00): the day and the time are taken apart before counting seconds.
long long DateToSeconds(double date) noexcept {
    const double day = std::trunc(date);
    return static_cast<long long>(day) * kSecondsPerDay + std::llround(std::fabs(date - day) * kSecondsPerDay);
}

// False when the file cannot be opened for reading (openError then holds why), its time cannot be read or
// lies outside the years 100 to 9999, or its size cannot be read: such a file is never the same as another.
bool ReadStamp(const std::wstring& path, FileStamp& stamp, DWORD& openError) noexcept {
    const unique_file file = OpenFileQuiet(path, FileMode::Read);
    openError = file ? ERROR_SUCCESS : ::GetLastError();
    FILETIME written{};
    LARGE_INTEGER size{};
    if (!file || !::GetFileTime(file.get(), nullptr, nullptr, &written) || !::GetFileSizeEx(file.get(), &size))
        return false;
    const double date = FileTimeToLocalDate(written);
    if (date < kEarliestDate || date > kLatestDate) return false;
    stamp = {DateToSeconds(date), size.QuadPart};
    return true;
}

bool IsMissing(DWORD openError) noexcept {
    return openError == ERROR_FILE_NOT_FOUND || openError == ERROR_PATH_NOT_FOUND;
}

} // namespace

bool IsCopiedNow(const CopyFilesRun& run, DWORD attributes) noexcept {
    if (attributes == INVALID_FILE_ATTRIBUTES) return true;
    if (!run.hidden && (attributes & kHiddenOrSystem)) return false;
    return !run.archive || (attributes & FILE_ATTRIBUTE_ARCHIVE);
}

CopyOutcome ClassifyFile(const CopyFilesRun& run, const std::wstring& source, const std::wstring& destination) noexcept {
    if (!run.incremental) return CopyOutcome::Copy;
    FileStamp dest, src;
    DWORD openError = ERROR_SUCCESS;
    if (!ReadStamp(destination, dest, openError)) {
        // A destination that opened no handle because it is not there is new; any other failure (locked, a
        // folder of that name, an unreadable time) is told apart by its attributes.
        if (IsMissing(openError)) return CopyOutcome::New;
        return ::GetFileAttributesW(destination.c_str()) != INVALID_FILE_ATTRIBUTES ? CopyOutcome::Different
                                                                                    : CopyOutcome::New;
    }
    if (!ReadStamp(source, src, openError)) return CopyOutcome::Different;
    const bool same = std::llabs(src.seconds - dest.seconds) <= kTimeTolerance && src.size == dest.size;
    return same ? CopyOutcome::Same : CopyOutcome::Different;
}

} // namespace tol
