#include "literal.h"
#include "search.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include <climits>
#include <optional>
#include <vector>

namespace tol {
namespace {

constexpr unsigned kCountsMustMatch = 59; // "Number of search and replacement strings must match."
constexpr std::wstring_view kLineBreaks = L"\r\n";

struct LinePair {
    std::wstring search;
    std::wstring partner;  // empty when the search line has no replacement line
};

// Blank lines are dropped before pairing, so a blank replacement line does not hold a place.
std::vector<LinePair> PairLines(std::wstring_view find, std::wstring_view replace) {
    std::vector<std::wstring> searches = SplitTokens(find, kLineBreaks);
    std::vector<std::wstring> replacements = SplitTokens(replace, kLineBreaks);
    if (replacements.size() > searches.size()) throw truntime_error(FormatResourceMessage(kCountsMustMatch));
    std::vector<LinePair> pairs(searches.size());
    for (std::size_t i = 0; i < searches.size(); ++i) {
        pairs[i].search = std::move(searches[i]);
        if (i < replacements.size()) pairs[i].partner = std::move(replacements[i]);
    }
    return pairs;
}

// One pass: the result is built once, from the pieces between the occurrences and the partner.
std::size_t ReplaceAll(std::wstring& text, const TextSearch& search, std::wstring_view partner) {
    std::size_t found = search.FindIn(text, 0);
    if (found == std::wstring::npos) return 0;
    std::wstring result;
    result.reserve(text.size());
    std::size_t done = 0;
    std::size_t count = 0;
    for (; found != std::wstring::npos; found = search.FindIn(text, done), ++count) {
        result.append(text, done, found - done).append(partner);
        done = found + search.length();
    }
    result.append(text, done, std::wstring::npos);
    text.swap(result);
    return count;
}

} // namespace

long ReplaceLiteral(std::wstring& text, std::wstring_view find, std::wstring_view replace, bool caseSensitive) {
    const std::vector<LinePair> pairs = PairLines(find, replace);
    std::optional<CaseMap> caseless;
    if (!caseSensitive && !pairs.empty()) caseless.emplace();
    const CaseMap* fold = caseless ? &*caseless : nullptr;

    std::size_t total = 0;
    for (const LinePair& pair : pairs) {
        if (SameText(pair.search, pair.partner, fold)) continue;
        total += ReplaceAll(text, TextSearch(pair.search, fold), pair.partner);
    }
    return total > static_cast<std::size_t>(LONG_MAX) ? LONG_MAX : static_cast<long>(total);
}

} // namespace tol
