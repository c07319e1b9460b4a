#include "elapsed.h"
#include "fields.h"

namespace tol {

std::optional<std::uint64_t> ElapsedMilliseconds(std::wstring_view criteria) {
    const std::vector<long> fields = ReadFields(criteria, kElapsedSeparators);
    if (fields.size() < 3) return std::nullopt;
    const long hours = fields[0], minutes = fields[1], seconds = fields[2];
    if (hours < 0 || minutes < 0 || seconds < 0) return std::nullopt;
    const std::uint64_t total = std::uint64_t(hours) * 3600 + std::uint64_t(minutes) * 60 + std::uint64_t(seconds);
    return total * 1000;
}

} // namespace tol
