#include "text.h"
#include "frame/messages.h"
#include <cwchar>

namespace host {

std::wstring TrimLineEnd(std::wstring text) {
    while (!text.empty() && (text.back() == L'\r' || text.back() == L'\n')) text.pop_back();
    return text;
}

std::wstring SystemText(HRESULT code) { return TrimLineEnd(tol::SystemErrorText(code)); }

std::string Utf8(std::wstring_view text) {
    if (text.empty()) return {};
    const int size = static_cast<int>(text.size());
    const int length = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string result(length > 0 ? length : 0, '\0');
    if (length > 0) ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, result.data(), length, nullptr, nullptr);
    return result;
}

std::wstring HexCode(HRESULT code) {
    wchar_t text[16];
    std::swprintf(text, 16, L"0x%08lX", static_cast<unsigned long>(code));
    return text;
}

} // namespace host
