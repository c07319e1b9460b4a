// Regular-expression replacement: one wide expression, every match replaced through a format.
#pragma once
#include <string>

namespace tol {

// Replaces every match of the expression find (normal Perl-like syntax, case-insensitive unless caseSensitive) by
// format in the library's default format syntax ($&, $1, ...); the text between matches stays as it was. Returns
// whether the text changed. An invalid expression throws tol::truntime_error "Invalid regular expression ..."
// and an error of the library while matching "Failed to match regular expression ...", both before any change.
bool ReplaceExpression(std::wstring& text, const std::wstring& find, const std::wstring& format, bool caseSensitive);

} // namespace tol
