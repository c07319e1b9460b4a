#include "text.h"

namespace zipwin {

std::wstring ToWide(std::string_view text, UINT codePage) {
    if (text.empty()) return {};
    const int size = static_cast<int>(text.size());
    const int length = ::MultiByteToWideChar(codePage, 0, text.data(), size, nullptr, 0);
    if (length <= 0) return {};
    std::wstring wide(static_cast<size_t>(length), L'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), size, wide.data(), length);
    return wide;
}

std::string ToNarrow(std::wstring_view text, UINT codePage) {
    if (text.empty()) return {};
    const int size = static_cast<int>(text.size());
    const int length = ::WideCharToMultiByte(codePage, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    if (length <= 0) return {};
    std::string narrow(static_cast<size_t>(length), '\0');
    ::WideCharToMultiByte(codePage, 0, text.data(), size, narrow.data(), length, nullptr, nullptr);
    return narrow;
}

bool IsAscii(std::wstring_view text) noexcept {
    for (const wchar_t c : text)
        if (c >= 0x80) return false;
    return true;
}

UINT NameCodePage(const zipformat::Entry& entry, UINT otherNames) noexcept {
    if (entry.utf8) return CP_UTF8;
    const unsigned host = entry.madeBy >> 8;
    if ((host != 3 && host != 19) || entry.name.empty()) return otherNames;
    const int size = static_cast<int>(entry.name.size());
    const bool valid = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, entry.name.data(), size, nullptr, 0) > 0;
    return valid ? CP_UTF8 : otherNames;
}

std::wstring FoldCase(std::wstring_view text) {
    std::wstring folded(text);
    if (!folded.empty()) ::CharUpperBuffW(folded.data(), static_cast<DWORD>(folded.size()));
    return folded;
}

} // namespace zipwin
