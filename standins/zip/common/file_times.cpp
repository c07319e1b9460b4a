#include "file_times.h"
#include "format/dos_time.h"

namespace zipwin {
namespace {

constexpr std::int64_t kEpochDifference = 11644473600;  // seconds from 1601 to 1970
constexpr std::int64_t kTicksPerSecond = 10000000;

} // namespace

std::int64_t ToUnixSeconds(const FILETIME& time) noexcept {
    const std::int64_t ticks = static_cast<std::int64_t>((static_cast<std::uint64_t>(time.dwHighDateTime) << 32) |
                                                         time.dwLowDateTime);
    return ticks / kTicksPerSecond - kEpochDifference;
}

FILETIME FromUnixSeconds(std::int64_t seconds) noexcept {
    const std::uint64_t ticks = static_cast<std::uint64_t>((seconds + kEpochDifference) * kTicksPerSecond);
    return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

std::uint32_t ToDosDateTime(const FILETIME& time) noexcept {
    FILETIME local{};
    SYSTEMTIME parts{};
    if (!::FileTimeToLocalFileTime(&time, &local) || !::FileTimeToSystemTime(&local, &parts))
        return zipformat::ToDosDateTime({});
    return zipformat::ToDosDateTime({parts.wYear, parts.wMonth, parts.wDay, parts.wHour, parts.wMinute, parts.wSecond});
}

bool FromDosDateTime(std::uint32_t dosDateTime, FILETIME& time) noexcept {
    const zipformat::CivilTime civil = zipformat::FromDosDateTime(dosDateTime);
    SYSTEMTIME parts{};
    parts.wYear = static_cast<WORD>(civil.year);
    parts.wMonth = static_cast<WORD>(civil.month);
    parts.wDay = static_cast<WORD>(civil.day);
    parts.wHour = static_cast<WORD>(civil.hour);
    parts.wMinute = static_cast<WORD>(civil.minute);
    parts.wSecond = static_cast<WORD>(civil.second);
    FILETIME local{};
    return ::SystemTimeToFileTime(&parts, &local) && ::LocalFileTimeToFileTime(&local, &time);
}

} // namespace zipwin
