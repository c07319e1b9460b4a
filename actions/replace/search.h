// Finding one search text in a text, exactly or without regard to case as Replace in File compares.
#pragma once
#include "casemap.h"
#include <string>
#include <string_view>

namespace tol {

class TextSearch {
public:
    // caseless null: characters compare exactly. Otherwise a position matches when its character is the lower- or
    // upper-case form of the needle's first character, and every further character equals the needle's or has the
    // same lower-case form. The needle must not be empty; the map must outlive the search.
    TextSearch(std::wstring_view needle, const CaseMap* caseless);

    // The position of the next occurrence that starts at or after from, or npos.
    std::size_t FindIn(std::wstring_view text, std::size_t from) const noexcept;
    std::size_t length() const noexcept { return needle_.size(); }

private:
    std::size_t FindCaseless(std::wstring_view text, std::size_t from) const noexcept;
    bool RestMatches(const wchar_t* at) const noexcept;

    std::wstring needle_;
    const CaseMap* caseless_;
    std::wstring folded_;  // the needle's lower-case forms, caseless only
    wchar_t firstLower_ = 0;
    wchar_t firstUpper_ = 0;
};

// Exactly, or (caseless) of equal length with every character of the same lower-case form.
[[nodiscard]] bool SameText(std::wstring_view a, std::wstring_view b, const CaseMap* caseless) noexcept;

} // namespace tol
