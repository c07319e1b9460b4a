// The numeric fields of a Wait criterion.
#pragma once
#include <string_view>
#include <vector>

namespace tol {

constexpr wchar_t kElapsedSeparators[] = L":";
constexpr wchar_t kDateTimeSeparators[] = L"-/: ";

// The value of one field: leading white space skipped, an optional sign, then decimal digits up to the first
// other character. A field that does not begin with digits is 0; values beyond the 32-bit range saturate.
long FieldValue(std::wstring_view field) noexcept;

// The fields of the text between runs of separators, each as its value; no field is ever empty.
std::vector<long> ReadFields(std::wstring_view text, std::wstring_view separators);

} // namespace tol
