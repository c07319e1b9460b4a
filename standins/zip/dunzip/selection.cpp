#include "selection.h"
#include "common/text.h"
#include <algorithm>

namespace unzipper {
namespace {

std::wstring Normalized(std::wstring_view text) {
    std::wstring folded = zipwin::FoldCase(text);
    std::replace(folded.begin(), folded.end(), L'\\', L'/');
    return folded;
}

bool MatchesMask(const std::wstring& mask, std::wstring_view text) {
    if (EntrySelection::Matches(mask, text)) return true;
    const bool anyExtension = mask.size() > 2 && mask.compare(mask.size() - 2, 2, L".*") == 0;
    return anyExtension && EntrySelection::Matches(std::wstring_view(mask).substr(0, mask.size() - 2), text);
}

} // namespace

EntrySelection::EntrySelection(const std::vector<std::wstring>& masks, bool recurse) : recurse_(recurse) {
    for (const std::wstring& mask : masks) masks_.push_back(Normalized(mask));
}

bool EntrySelection::Selects(std::wstring_view name) const {
    std::wstring path = Normalized(name);
    while (!path.empty() && path.back() == L'/') path.pop_back();
    const size_t slash = path.find_last_of(L'/');
    const std::wstring_view fileName = slash == std::wstring::npos ? std::wstring_view(path)
                                                                   : std::wstring_view(path).substr(slash + 1);
    for (const std::wstring& mask : masks_) {
        if (MatchesMask(mask, path)) return true;
        if (recurse_ && slash != std::wstring::npos && MatchesMask(mask, fileName)) return true;
    }
    return false;
}

// Greedy with one backtrack point: the last star seen takes one more character when the rest fails.
bool EntrySelection::Matches(std::wstring_view mask, std::wstring_view text) noexcept {
    size_t m = 0, t = 0, star = std::wstring_view::npos, resume = 0;
    while (t < text.size()) {
        if (m < mask.size() && (mask[m] == L'?' || mask[m] == text[t])) {
            ++m;
            ++t;
        } else if (m < mask.size() && mask[m] == L'*') {
            star = m++;
            resume = t;
        } else if (star != std::wstring_view::npos) {
            m = star + 1;
            t = ++resume;
        } else {
            return false;
        }
    }
    while (m < mask.size() && mask[m] == L'*') ++m;
    return m == mask.size();
}

} // namespace unzipper
