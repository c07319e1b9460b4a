#include "search.h"

namespace tol {

TextSearch::TextSearch(std::wstring_view needle, const CaseMap* caseless) : needle_(needle), caseless_(caseless) {
    if (!caseless_ || needle_.empty()) return;
    folded_.reserve(needle_.size());
    for (const wchar_t c : needle_) folded_ += caseless_->Lower(c);
    firstLower_ = caseless_->Lower(needle_[0]);
    firstUpper_ = caseless_->Upper(needle_[0]);
}

std::size_t TextSearch::FindIn(std::wstring_view text, std::size_t from) const noexcept {
    if (needle_.empty() || from > text.size()) return std::wstring_view::npos;
    return caseless_ ? FindCaseless(text, from) : text.find(needle_, from);
}

// The first character is tested against its two case forms only; the rest character by character.
std::size_t TextSearch::FindCaseless(std::wstring_view text, std::size_t from) const noexcept {
    if (text.size() - from < needle_.size()) return std::wstring_view::npos;
    const wchar_t* const start = text.data();
    const wchar_t* const last = start + (text.size() - needle_.size());
    for (const wchar_t* at = start + from; at <= last; ++at) {
        if ((*at == firstLower_ || *at == firstUpper_) && RestMatches(at)) return static_cast<std::size_t>(at - start);
    }
    return std::wstring_view::npos;
}

bool TextSearch::RestMatches(const wchar_t* at) const noexcept {
    for (std::size_t i = 1; i < needle_.size(); ++i) {
        if (at[i] != needle_[i] && caseless_->Lower(at[i]) != folded_[i]) return false;
    }
    return true;
}

bool SameText(std::wstring_view a, std::wstring_view b, const CaseMap* caseless) noexcept {
    if (!caseless || a.size() != b.size()) return a == b;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (a[i] != b[i] && caseless->Lower(a[i]) != caseless->Lower(b[i])) return false;
    }
    return true;
}

} // namespace tol
