#include "fields.h"
#include "frame/messages.h"
#include <climits>
#include <cwctype>

namespace tol {

long FieldValue(std::wstring_view field) noexcept {
    size_t i = 0;
    while (i < field.size() && std::iswspace(field[i])) ++i;
    bool negative = false;
    if (i < field.size() && (field[i] == L'+' || field[i] == L'-')) negative = field[i++] == L'-';
    long long magnitude = 0;
    for (; i < field.size() && field[i] >= L'0' && field[i] <= L'9'; ++i) {
        magnitude = magnitude * 10 + (field[i] - L'0');
        if (magnitude > LONG_MAX) return negative ? LONG_MIN : LONG_MAX;
    }
    return static_cast<long>(negative ? -magnitude : magnitude);
}

std::vector<long> ReadFields(std::wstring_view text, std::wstring_view separators) {
    std::vector<long> values;
    for (const std::wstring& field : SplitTokens(text, separators)) values.push_back(FieldValue(field));
    return values;
}

} // namespace tol
