#include "entry_path.h"
#include <algorithm>
#include <cctype>

namespace zipformat {
namespace {

bool IsSeparator(char c) noexcept { return c == '/' || c == '\\'; }

bool HasForbiddenCharacter(std::string_view component) noexcept {
    return std::any_of(component.begin(), component.end(), [](char c) {
        const unsigned char u = static_cast<unsigned char>(c);
        return u < 0x20 || std::string_view("<>:\"|?*").find(c) != std::string_view::npos;
    });
}

std::string Upper(std::string_view text) {
    std::string upper(text);
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return upper;
}

// CON, PRN, AUX, NUL, COM1-9, LPT1-9 and the console names, also with an extension or trailing blanks.
bool IsDeviceName(std::string_view component) {
    std::string base = Upper(component.substr(0, component.find('.')));
    while (!base.empty() && base.back() == ' ') base.pop_back();
    if (base == "CON" || base == "PRN" || base == "AUX" || base == "NUL" || base == "CONIN$" || base == "CONOUT$")
        return true;
    return base.size() == 4 && (base.compare(0, 3, "COM") == 0 || base.compare(0, 3, "LPT") == 0) && base[3] >= '1' &&
           base[3] <= '9';
}

bool IsOnlyDotsAndBlanks(std::string_view component) noexcept {
    return component.find_first_not_of(". ") == std::string_view::npos;
}

} // namespace

bool SplitEntryPath(std::string_view name, EntryPath& path) {
    path = EntryPath{};
    if (name.empty() || IsSeparator(name.front())) return false;
    path.folder = IsSeparator(name.back());
    std::size_t start = 0;
    while (start < name.size()) {
        std::size_t end = start;
        while (end < name.size() && !IsSeparator(name[end])) ++end;
        const std::string_view component = name.substr(start, end - start);
        start = end + 1;
        if (component.empty() || component == ".") continue;
        if (IsOnlyDotsAndBlanks(component) || HasForbiddenCharacter(component) || IsDeviceName(component)) return false;
        path.components.emplace_back(component);
    }
    return !path.components.empty();
}

} // namespace zipformat
