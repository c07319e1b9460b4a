// The elapsed-time criterion: HH:MM:SS with no upper bounds, as a span of milliseconds.
#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

namespace tol {

// Hours, minutes and seconds from the first three ":"-separated fields (further fields ignored). Empty when
// there are fewer than three fields, or when one of the three is negative: a negative amount of time is a
// mistake in the step, never a reason to complete at once.
std::optional<std::uint64_t> ElapsedMilliseconds(std::wstring_view criteria);

} // namespace tol
