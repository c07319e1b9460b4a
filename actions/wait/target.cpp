#include "target.h"
#include "fields.h"
#include "frame/errors.h"
#include <vector>

namespace tol {
namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

WallTime ReadTarget(const std::vector<long>& fields, const WallTime& now) {
    if (fields.size() < 5) return {now.year, now.month, now.day, fields[0], fields[1], 0};
    return {fields[2], fields[0], fields[1], fields[3], fields[4], 0};
}

} // namespace

TimeWait PlanTimeWait(std::wstring_view criteria, const WallTime& now) {
    const std::vector<long> fields = ReadFields(criteria, kDateTimeSeparators);
    if (fields.size() < 2) return {TimeWait::Invalid};
    const bool timeOfDay = fields.size() < 5;
    const WallTime target = ReadTarget(fields, now);
    if (!IsValidTarget(target)) return {TimeWait::Invalid};
    if (target.year < kEarliestYear) throw truntime_error(L"operation on invalid date");

    std::int64_t seconds = SerialSeconds(target) - SerialSeconds(now);
    if (seconds < 0 && timeOfDay) seconds += kSecondsPerDay; // the same time tomorrow
    if (seconds < 0) return {TimeWait::InPast};
    return {TimeWait::Wait, static_cast<std::uint64_t>(seconds) * 1000};
}

} // namespace tol
