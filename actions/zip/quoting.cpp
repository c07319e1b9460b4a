#include "quoting.h"
#include "ansi.h"

namespace tol {

std::string QuoteArgument(std::string_view text) {
    std::string quoted;
    quoted.reserve(text.size() + 4);
    for (const char c : text) {
        if (c == '"') quoted += '\\';
        quoted += c;
    }
    if (text.find(' ') == std::string_view::npos) return quoted;
    if (!quoted.empty() && quoted.back() == '\\') quoted += '\\';
    return '"' + quoted + '"';
}

std::string QuoteMaskList(std::wstring_view masks) {
    const std::string ansi = ToAnsiChecked(masks);
    std::string list;
    size_t start = 0;
    while (start < ansi.size()) {
        size_t end = ansi.find_first_of("\r\n", start);
        if (end == std::string::npos) end = ansi.size();
        if (end > start) {
            if (!list.empty()) list += ' ';
            list += QuoteArgument(std::string_view(ansi).substr(start, end - start));
        }
        start = end + 1;
    }
    return list;
}

} // namespace tol
