// The time or date/time criterion: a time of day (today, or tomorrow once it has passed) or a date and time.
#pragma once
#include "calendar.h"
#include <cstdint>
#include <string_view>

namespace tol {

struct TimeWait {
    enum Outcome { Wait, Invalid, InPast };
    Outcome outcome = Invalid;
    std::uint64_t milliseconds = 0; // for Wait: whole seconds from now to the target
};

// Reads "HH:MM" (2 to 4 fields) or "MM/DD/YYYY HH:MM" (5 or more) against the current local time now.
// A valid target before the year 100 throws tol::truntime_error "operation on invalid date".
TimeWait PlanTimeWait(std::wstring_view criteria, const WallTime& now);

} // namespace tol
