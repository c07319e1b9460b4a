// Local wall-clock date/times in whole seconds on the Gregorian calendar, as the Wait action counts them.
#pragma once
#include <cstdint>

namespace tol {

struct WallTime {
    long year = 0;
    long month = 0;  // 1 to 12
    long day = 0;    // 1 to the length of the month
    long hour = 0;
    long minute = 0;
    long second = 0;
};

constexpr long kEarliestYear = 100;
constexpr long kLatestYear = 9999;

bool IsLeapYear(long year) noexcept;
// 0 for a month outside 1 to 12.
long DaysInMonth(long year, long month) noexcept;

// A calendar date up to the year 9999 with an hour 0 to 23 and a minute 0 to 59; no field may be negative.
// The earliest year is not checked here: see kEarliestYear.
bool IsValidTarget(const WallTime& time) noexcept;

// Seconds since the start of 1 January of the year 0 of the proleptic Gregorian calendar: the difference of
// two of them is the wall-clock distance in seconds.
std::int64_t SerialSeconds(const WallTime& time) noexcept;

// The current local date and time, milliseconds dropped.
WallTime CurrentLocalTime() noexcept;

} // namespace tol
