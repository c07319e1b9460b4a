// Whether two files count as the same by last-write time and size.
#include "filetimes.h"
#include "filehandle.h"
#include <cmath>

namespace tol {
namespace {

constexpr double kEarliestDate = -657434.0;  // 1 January 100
constexpr double kLatestDate = 2958465.0;    // 31 December 9999
constexpr long long kSecondsPerDay = 24 * 60 * 60;
constexpr long long kTimeTolerance = 2;      // seconds: FAT keeps even seconds only

// An OLE date counts its days from 30 December 1899 but, before that day, carries the time of day as a positive
// fraction (-1.25 is 29 December, 06:00): the day and the time are taken apart before counting seconds.
long long DateToSeconds(double date) noexcept {
    const double day = std::trunc(date);
    const double time = std::fabs(date - day);
    return static_cast<long long>(day) * kSecondsPerDay + std::llround(time * kSecondsPerDay);
}

// The local last-write time in whole seconds; false when it cannot be read or lies outside the valid dates.
bool LocalWriteSeconds(const std::wstring& path, long long* seconds) noexcept {
    FILETIME written{};
    if (!GetFileTimes(path, &written)) return false;
    const double date = FileTimeToLocalDate(written);
    if (date < kEarliestDate || date > kLatestDate) return false;
    *seconds = DateToSeconds(date);
    return true;
}

bool SameWriteTime(const std::wstring& first, const std::wstring& second) noexcept {
    long long a = 0, b = 0;
    if (!LocalWriteSeconds(first, &a) || !LocalWriteSeconds(second, &b)) return false;
    return std::llabs(a - b) <= kTimeTolerance;
}

// A file that cannot be opened counts as empty; false only when the size query itself fails.
bool ReadSize(const std::wstring& path, long long* size) noexcept {
    *size = 0;
    unique_file file = OpenFileQuiet(path, FileMode::Read);
    if (!file) return true;
    LARGE_INTEGER value{};
    if (!::GetFileSizeEx(file.get(), &value)) return false;
    *size = value.QuadPart;
    return true;
}

bool SameSize(const std::wstring& first, const std::wstring& second) noexcept {
    long long a = 0, b = 0;
    return ReadSize(first, &a) && ReadSize(second, &b) && a == b;
}

} // namespace

bool CompareFiles(const std::wstring& first, const std::wstring& second, bool byTime, bool bySize) noexcept {
    if (byTime && !SameWriteTime(first, second)) return false;
    if (bySize && !SameSize(first, second)) return false;
    return true;
}

} // namespace tol
