#include "names.h"
#include <windows.h>

namespace gac {
namespace {

std::wstring_view Trimmed(std::wstring_view text) noexcept {
    const size_t first = text.find_first_not_of(L" \t");
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(L" \t") - first + 1);
}

bool EndsWithNoCase(std::wstring_view text, std::wstring_view end) noexcept {
    if (text.size() < end.size()) return false;
    const std::wstring_view tail = text.substr(text.size() - end.size());
    return ::CompareStringOrdinal(tail.data(), static_cast<int>(tail.size()), end.data(), static_cast<int>(end.size()),
                                  TRUE) == CSTR_EQUAL;
}

bool IsPath(std::wstring_view argument) noexcept {
    for (wchar_t c : argument)
        if (IsSeparator(c) || c == L':') return true;
    return EndsWithNoCase(argument, L".dll") || EndsWithNoCase(argument, L".exe");
}

} // namespace

std::wstring FileNamePart(std::wstring_view path) {
    size_t start = path.size();
    while (start > 0 && !IsSeparator(path[start - 1])) --start;
    return std::wstring(path.substr(start));
}

std::wstring AssemblyNameOfFile(std::wstring_view path) {
    std::wstring name = FileNamePart(path);
    const size_t dot = name.rfind(L'.');
    if (dot != std::wstring::npos) name.erase(dot);
    return name;
}

std::wstring AssemblyNameOfArgument(std::wstring_view argument) {
    const size_t comma = argument.find(L',');
    if (comma != std::wstring_view::npos) return std::wstring(Trimmed(argument.substr(0, comma)));
    if (IsPath(argument)) return AssemblyNameOfFile(argument);
    return std::wstring(Trimmed(argument));
}

bool IsValidAssemblyName(std::wstring_view name) noexcept {
    if (name.empty() || name == L"." || name == L"..") return false;
    if (name.back() == L'.' || name.back() == L' ') return false;
    for (wchar_t c : name)
        if (c < 32 || std::wstring_view(L"<>:\"/\\|?*").find(c) != std::wstring_view::npos) return false;
    return true;
}

} // namespace gac
