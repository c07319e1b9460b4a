#include "calendar.h"
#include <windows.h>

namespace tol {
namespace {

// Days from 1 January of the year 0 to the given date (the civil-from-days algorithm run backwards).
std::int64_t SerialDays(long year, long month, long day) noexcept {
    const std::int64_t y = static_cast<std::int64_t>(year) - (month <= 2 ? 1 : 0);
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const std::int64_t yearOfEra = y - era * 400;
    const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra + 60; // the era count starts on 1 March of the year 0
}

} // namespace

bool IsLeapYear(long year) noexcept { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

long DaysInMonth(long year, long month) noexcept {
    static const long kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12) return 0;
    return month == 2 && IsLeapYear(year) ? 29 : kDays[month - 1];
}

bool IsValidTarget(const WallTime& time) noexcept {
    return time.year >= 0 && time.year <= kLatestYear && time.day >= 1 && time.day <= DaysInMonth(time.year, time.month) &&
           time.hour >= 0 && time.hour <= 23 && time.minute >= 0 && time.minute <= 59;
}

std::int64_t SerialSeconds(const WallTime& time) noexcept {
    return SerialDays(time.year, time.month, time.day) * 86400 + std::int64_t{time.hour} * 3600 +
           std::int64_t{time.minute} * 60 + time.second;
}

WallTime CurrentLocalTime() noexcept {
    SYSTEMTIME now{};
    ::GetLocalTime(&now);
    return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond};
}

} // namespace tol
