// Splitting an argument list written with the platform's command-line quoting: blanks separate arguments, double
// quotes group, a backslash escapes a double quote, and backslashes before a quote pair up.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace zipformat {

// False for a list whose last double quote is not closed.
[[nodiscard]] bool SplitArguments(std::string_view text, std::vector<std::string>& arguments);

} // namespace zipformat
