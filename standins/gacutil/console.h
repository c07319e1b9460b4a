// Lines to the standard output and error: wide text on a console, UTF-8 into files and pipes.
#pragma once
#include <string_view>

namespace gac {

void PrintLine(std::wstring_view text);
void PrintError(std::wstring_view text);

} // namespace gac
