#include "dos_time.h"
#include <algorithm>

namespace zipformat {

std::uint32_t ToDosDateTime(const CivilTime& t) noexcept {
    if (t.year < 1980) return (1u << 5 | 1u) << 16;
    if (t.year > 2107) return ((127u << 9) | (12u << 5) | 31u) << 16 | (23u << 11) | (59u << 5) | 29u;
    const std::uint32_t date = static_cast<std::uint32_t>((t.year - 1980) << 9 | t.month << 5 | t.day);
    const std::uint32_t time = static_cast<std::uint32_t>(t.hour << 11 | t.minute << 5 | t.second / 2);
    return date << 16 | time;
}

CivilTime FromDosDateTime(std::uint32_t dos) noexcept {
    const std::uint32_t date = dos >> 16, time = dos & 0xFFFF;
    CivilTime t;
    t.year = 1980 + static_cast<int>(date >> 9);
    t.month = std::clamp(static_cast<int>((date >> 5) & 0x0F), 1, 12);
    t.day = std::clamp(static_cast<int>(date & 0x1F), 1, 31);
    t.hour = std::min(static_cast<int>(time >> 11), 23);
    t.minute = std::min(static_cast<int>((time >> 5) & 0x3F), 59);
    t.second = std::min(static_cast<int>(time & 0x1F) * 2, 58);
    return t;
}

} // namespace zipformat
