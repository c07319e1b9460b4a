// DOS date and time, as the archive headers keep a file's local modification time (two-second steps, 1980-2107).
#pragma once
#include <cstdint>

namespace zipformat {

struct CivilTime {
    int year = 1980, month = 1, day = 1, hour = 0, minute = 0, second = 0;
};

// Date in the high 16 bits, time in the low; times before 1980 become 1980-01-01 00:00:00, after 2107 the last
// moment of 2107. Odd seconds round down.
std::uint32_t ToDosDateTime(const CivilTime& time) noexcept;
// Fields that are out of range in the archive are brought into range (month 0 becomes 1, and so on).
CivilTime FromDosDateTime(std::uint32_t dosDateTime) noexcept;

} // namespace zipformat
