// Command-line quoting of the texts that the archive libraries parse as arguments: the item and the masks.
#pragma once
#include <string>
#include <string_view>

namespace tol {

// Every double quote gets a backslash before it; a text with a space is then enclosed in double quotes, and when it
// ends with a backslash that backslash is doubled before the closing quote. A text without spaces is not enclosed.
std::string QuoteArgument(std::string_view text);

// A mask box (one mask per line) as one argument list: converted to ANSI (a refused conversion throws
// comet::com_error), cut at carriage returns and line feeds with blank lines dropped, each line quoted, the
// results joined with single spaces. An empty box gives an empty string.
std::string QuoteMaskList(std::wstring_view masks);

} // namespace tol
