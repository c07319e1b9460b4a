#include "console.h"
#include <windows.h>
#include <string>

namespace gac {
namespace {

std::string Utf8(std::wstring_view text) {
    if (text.empty()) return {};
    const int size = static_cast<int>(text.size());
    const int length = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(length > 0 ? length : 0), '\0');
    if (length > 0) ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, bytes.data(), length, nullptr, nullptr);
    return bytes;
}

void WriteLine(DWORD which, std::wstring_view text) {
    const HANDLE out = ::GetStdHandle(which);
    if (!out || out == INVALID_HANDLE_VALUE) return;
    const std::wstring line = std::wstring(text) + L"\r\n";
    DWORD mode = 0, written = 0;
    if (::GetConsoleMode(out, &mode)) {
        ::WriteConsoleW(out, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        return;
    }
    const std::string bytes = Utf8(line);
    ::WriteFile(out, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

} // namespace

void PrintLine(std::wstring_view text) { WriteLine(STD_OUTPUT_HANDLE, text); }
void PrintError(std::wstring_view text) { WriteLine(STD_ERROR_HANDLE, text); }

} // namespace gac
