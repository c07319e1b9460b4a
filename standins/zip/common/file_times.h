// File times as the archives keep them: UTC seconds since 1970 and DOS date and time in local time.
#pragma once
#include <windows.h>
#include <cstdint>

namespace zipwin {

std::int64_t ToUnixSeconds(const FILETIME& time) noexcept;
FILETIME FromUnixSeconds(std::int64_t seconds) noexcept;
// The local time of a file time as a DOS date and time.
std::uint32_t ToDosDateTime(const FILETIME& time) noexcept;
// A DOS date and time, taken as local time, as a file time; false when it names no valid moment.
[[nodiscard]] bool FromDosDateTime(std::uint32_t dosDateTime, FILETIME& time) noexcept;

} // namespace zipwin
