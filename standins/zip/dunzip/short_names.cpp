#include "short_names.h"
#include "common/text.h"

namespace unzipper {
namespace {

bool IsShortNameCharacter(wchar_t c) noexcept {
    if ((c >= L'A' && c <= L'Z') || (c >= L'0' && c <= L'9')) return true;
    return std::wstring_view(L"!#$%&'()-@^_`{}~").find(c) != std::wstring_view::npos;
}

std::wstring Usable(std::wstring_view text, size_t limit) {
    std::wstring out;
    for (const wchar_t c : zipwin::FoldCase(text)) {
        if (out.size() == limit) break;
        if (c == L' ' || c == L'.') continue;
        out += IsShortNameCharacter(c) ? c : L'_';
    }
    return out;
}

bool Fits(const std::wstring& base, const std::wstring& extension, const std::wstring& name) {
    const size_t dot = name.rfind(L'.');
    const size_t baseLength = dot == std::wstring::npos ? name.size() : dot;
    const size_t extensionLength = dot == std::wstring::npos ? 0 : name.size() - dot - 1;
    return baseLength > 0 && baseLength <= 8 && extensionLength <= 3 && base.size() == baseLength &&
           extension.size() == extensionLength && (dot == std::wstring::npos || extensionLength > 0);
}

} // namespace

std::wstring ShortNamer::ShortName(const std::wstring& folder, const std::wstring& name) {
    const std::wstring key = zipwin::FoldCase(folder + L"\\" + name);
    const auto given = given_.find(key);
    if (given != given_.end()) return given->second;
    const std::wstring candidate = NewShortName(folder, name);
    given_.emplace(key, candidate);
    return candidate;
}

std::wstring ShortNamer::NewShortName(const std::wstring& folder, const std::wstring& name) {
    const size_t dot = name.rfind(L'.');
    const std::wstring base = Usable(std::wstring_view(name).substr(0, dot), 8);
    const std::wstring extension = dot == std::wstring::npos ? L"" : Usable(std::wstring_view(name).substr(dot + 1), 3);
    const std::wstring suffix = extension.empty() ? L"" : L"." + extension;
    std::wstring candidate = base + suffix;
    if (Fits(base, extension, name) && used_.insert(zipwin::FoldCase(folder + L"\\" + candidate)).second) return candidate;
    const std::wstring stem = base.substr(0, 6).empty() ? L"_" : base.substr(0, 6);
    for (unsigned number = 1;; ++number) {
        const std::wstring tail = L"~" + std::to_wstring(number);
        candidate = stem.substr(0, 8 - std::min<size_t>(tail.size(), 7)) + tail + suffix;
        if (used_.insert(zipwin::FoldCase(folder + L"\\" + candidate)).second) return candidate;
    }
}

} // namespace unzipper
