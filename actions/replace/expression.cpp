#include "expression.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include "regex_traits.h"
#include <iterator>

namespace tol {
namespace {

// With gcc on Windows the library's default traits follow the C++ "C" locale, which folds only ASCII letters;
// these fold case and classify characters as the platform does.
using Traits = PlatformRegexTraits;
using Expression = boost::basic_regex<wchar_t, Traits>;
using MatchIterator = boost::regex_iterator<std::wstring::const_iterator, wchar_t, Traits>;

Expression Compile(const std::wstring& find, bool caseSensitive) {
    const boost::regex_constants::syntax_option_type flags =
        caseSensitive ? boost::regex_constants::perl : boost::regex_constants::perl | boost::regex_constants::icase;
    try {
        return Expression(find, flags);
    } catch (const boost::regex_error& e) {
        const std::wstring why = Widen(boost::w32_regex_traits<wchar_t>().error_string(e.code()));
        throw truntime_error(FormatMessageText(L"Invalid regular expression '%1': %2 (at position %3!d!)",
                                               {find, why, static_cast<long>(e.position())}));
    }
}

// What regex_replace does, with the pieces between matches appended whole to one output string.
std::wstring ReplaceMatches(const std::wstring& text, const Expression& expression, const std::wstring& format) {
    std::wstring result;
    result.reserve(text.size());
    auto rest = text.cbegin();
    for (MatchIterator match(text.cbegin(), text.cend(), expression), end; match != end; ++match) {
        result.append(match->prefix().first, match->prefix().second);
        match->format(std::back_inserter(result), format, boost::format_default, expression);
        rest = (*match)[0].second;
    }
    result.append(rest, text.cend());
    return result;
}

} // namespace

bool ReplaceExpression(std::wstring& text, const std::wstring& find, const std::wstring& format, bool caseSensitive) {
    const Expression expression = Compile(find, caseSensitive);
    std::wstring result;
    try {
        result = ReplaceMatches(text, expression, format);
    } catch (const std::runtime_error& e) {  // the library's limits on matching, regex_error among them
        throw truntime_error(FormatMessageText(L"Failed to match regular expression '%1': %2", {find, Widen(e.what())}));
    }
    if (result == text) return false;
    text.swap(result);
    return true;
}

} // namespace tol
