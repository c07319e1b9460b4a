#include "ansi.h"
#include "frame/errors.h"
#include <windows.h>

namespace tol {
namespace {

// 0 with the platform's error code when the conversion fails; an empty text converts to an empty string.
[[nodiscard]] bool Convert(std::wstring_view text, std::string& out) noexcept {
    out.clear();
    if (text.empty()) return true;
    const int wide = static_cast<int>(text.size());
    const int length = ::WideCharToMultiByte(CP_ACP, 0, text.data(), wide, nullptr, 0, nullptr, nullptr);
    if (length <= 0) return false;
    try {
        out.resize(static_cast<size_t>(length));
    } catch (...) {
        ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
    return ::WideCharToMultiByte(CP_ACP, 0, text.data(), wide, out.data(), length, nullptr, nullptr) == length;
}

} // namespace

std::string ToAnsi(std::wstring_view text) {
    std::string out;
    if (!Convert(text, out)) out.clear();
    return out;
}

std::string ToAnsiChecked(std::wstring_view text) {
    std::string out;
    THROW_LAST_ERROR_IF(!Convert(text, out));
    return out;
}

} // namespace tol
