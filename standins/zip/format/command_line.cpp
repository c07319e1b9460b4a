#include "command_line.h"

namespace zipformat {
namespace {

bool IsBlank(char c) noexcept { return c == ' ' || c == '\t'; }

// Backslashes before a double quote: each pair gives one backslash, an odd one escapes the quote. Elsewhere they are
// taken as they are. Returns the position after what was consumed.
std::size_t TakeBackslashes(std::string_view text, std::size_t at, std::string& argument, bool& escapedQuote) {
    std::size_t count = 0;
    while (at + count < text.size() && text[at + count] == '\\') ++count;
    const bool beforeQuote = at + count < text.size() && text[at + count] == '"';
    argument.append(beforeQuote ? count / 2 : count, '\\');
    escapedQuote = beforeQuote && count % 2 == 1;
    if (escapedQuote) argument += '"';
    return at + count + (escapedQuote ? 1 : 0);
}

} // namespace

bool SplitArguments(std::string_view text, std::vector<std::string>& arguments) {
    arguments.clear();
    std::size_t at = 0;
    while (true) {
        while (at < text.size() && IsBlank(text[at])) ++at;
        if (at >= text.size()) return true;
        std::string argument;
        bool quoted = false;
        while (at < text.size() && (quoted || !IsBlank(text[at]))) {
            bool escaped = false;
            if (text[at] == '\\') {
                at = TakeBackslashes(text, at, argument, escaped);
            } else if (text[at] == '"') {
                quoted = !quoted;
                ++at;
            } else {
                argument += text[at++];
            }
        }
        if (quoted) return false;
        arguments.push_back(std::move(argument));
    }
}

} // namespace zipformat
