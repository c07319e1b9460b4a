// Turning wildcard masks into regular expressions and testing file names and folder paths against them.
#include "masks.h"
#include "paths.h"
#include "frame/messages.h"
#include <boost/regex.hpp>
// With gcc on Windows the library's default traits follow the C++ "C" locale, which folds only ASCII
// letters; the Win32 traits fold case as the platform does (Ä matches ä), as file names on Windows compare.
#include <boost/regex/v5/w32_regex_traits.hpp>
#include <vector>

namespace tol {

using MaskExpression = boost::basic_regex<wchar_t, boost::w32_regex_traits<wchar_t>>;
using ExpressionList = std::vector<MaskExpression>;

struct FileMaskFilter::Lists {
    bool matchAll;
    ExpressionList includeFiles;
    ExpressionList excludeFiles;
    ExpressionList includeFolders;
    ExpressionList excludeFolders;
};

namespace {

constexpr std::wstring_view kMaskDelimiters = L"\r\n\"";
constexpr std::wstring_view kRegexSpecials = L"+(){}[]^$\\";

// Escapes, then rewrites dots, stars and question marks, each in one pass over the mask.
std::wstring Convert(std::wstring_view mask, bool optionalDots, bool starsSkipDots) {
    std::wstring pattern;
    pattern.reserve(mask.size() * 2 + 8);
    for (const wchar_t c : mask) {
        if (kRegexSpecials.find(c) != std::wstring_view::npos) pattern += L'\\';
        if (c == L'.')
            pattern += optionalDots ? L"\\.{0,1}" : L"\\.";
        else if (c == L'*')
            pattern += starsSkipDots ? L"[^\\.]*" : L".*";
        else if (c == L'?')
            pattern += L'.';
        else
            pattern += c;
    }
    return pattern;
}

void ParseList(std::wstring_view text, ExpressionList& files, ExpressionList& folders) {
    constexpr auto flags = boost::regex_constants::perl | boost::regex_constants::icase;
    for (const std::wstring& mask : SplitTokens(text, kMaskDelimiters)) {
        const bool folder = IsPathSeparator(mask.front());
        const std::wstring pattern = FileMaskFilter::MaskToPattern(folder ? std::wstring_view(mask).substr(1) : mask);
        (folder ? folders : files).emplace_back(pattern, flags);
    }
}

bool MatchesAnyMask(std::wstring_view name, const ExpressionList& list, bool emptyResult) {
    if (list.empty()) return emptyResult;
    for (const MaskExpression& expression : list)
        if (boost::regex_match(name.begin(), name.end(), expression)) return true;
    return false;
}

} // namespace

std::wstring FileMaskFilter::MaskToPattern(std::wstring_view mask) {
    const bool optionalDots = mask.size() > 2 && mask.substr(mask.size() - 2) == L".*";
    const bool noExtension = !optionalDots && mask.size() >= 2 && mask.back() == L'.';
    if (noExtension) mask.remove_suffix(1);
    return Convert(mask, optionalDots, noExtension);
}

FileMaskFilter::FileMaskFilter(std::wstring_view includeMasks, std::wstring_view excludeMasks, bool matchAll) {
    auto lists = std::make_shared<Lists>();
    lists->matchAll = matchAll;
    ParseList(includeMasks, lists->includeFiles, lists->includeFolders);
    ParseList(excludeMasks, lists->excludeFiles, lists->excludeFolders);
    lists_ = std::move(lists);
}

bool FileMaskFilter::MatchesFile(std::wstring_view name) const {
    return MatchesAnyMask(name, lists_->includeFiles, lists_->matchAll) && !MatchesAnyMask(name, lists_->excludeFiles, false);
}

bool FileMaskFilter::MatchesFolderPath(std::wstring_view relativePath) const {
    const Lists& lists = *lists_;
    if (lists.includeFolders.empty() && lists.excludeFolders.empty()) return true;
    const std::vector<std::wstring> components = SplitTokens(relativePath, L"\\/");
    if (components.empty()) return lists.includeFolders.empty();
    bool included = lists.includeFolders.empty();
    for (const std::wstring& component : components) {
        if (MatchesAnyMask(component, lists.excludeFolders, false)) return false;
        included = included || MatchesAnyMask(component, lists.includeFolders, false);
    }
    return included;
}

} // namespace tol
