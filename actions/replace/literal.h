// Literal replacement: search and replacement lines in pairs, each pair one pass over the text.
#pragma once
#include <string>
#include <string_view>

namespace tol {

// Splits find and replace into their non-empty lines and replaces, pair by pair, every occurrence of the search
// line by its partner (the replacement line of the same index, or nothing). Each pair works on the text as the
// earlier pairs left it, and its scan never runs into the text it inserted. A pair whose search line equals its
// partner (without regard to case unless caseSensitive) is skipped. Returns the number of replacements.
// More replacement lines than search lines throws tol::truntime_error with message 59, before any change.
long ReplaceLiteral(std::wstring& text, std::wstring_view find, std::wstring_view replace, bool caseSensitive);

} // namespace tol
