#include "dword.h"
#include <string>

namespace tol {
namespace {

// The platform's best-fit mapping applies: characters without an ANSI form become '?' and end the number.
std::string ToAnsi(const std::wstring& text) {
    if (text.empty()) return {};
    const int size = static_cast<int>(text.size());
    const int length = ::WideCharToMultiByte(CP_ACP, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    if (length <= 0) return {};
    std::string ansi(static_cast<size_t>(length), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, text.data(), size, ansi.data(), length, nullptr, nullptr);
    return ansi;
}

// White space as the C locale knows it.
constexpr bool IsBlank(char c) noexcept {
    return c == ' ' || c == '\t' || c == '\n' || c == '\v' || c == '\f' || c == '\r';
}

} // namespace

DWORD ParseDwordText(const std::wstring& text) {
    const std::string ansi = ToAnsi(text);
    size_t at = 0;
    while (at < ansi.size() && IsBlank(ansi[at])) ++at;
    const bool negative = at < ansi.size() && ansi[at] == '-';
    if (at < ansi.size() && (ansi[at] == '-' || ansi[at] == '+')) ++at;
    DWORD number = 0; // unsigned arithmetic: overflow wraps modulo 2^32
    for (; at < ansi.size() && ansi[at] >= '0' && ansi[at] <= '9'; ++at) {
        number = number * 10u + static_cast<DWORD>(ansi[at] - '0');
    }
    return negative ? 0u - number : number;
}

} // namespace tol
