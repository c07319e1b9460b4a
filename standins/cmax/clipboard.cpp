#include "clipboard.h"
#include "frame/handles.h"
#include <algorithm>
#include <cstring>

namespace cmax {
namespace {

// Holds the clipboard open for its lifetime.
class OpenClipboard {
public:
    explicit OpenClipboard(HWND owner) noexcept : open_(::OpenClipboard(owner) != FALSE) {}
    ~OpenClipboard() {
        if (open_) ::CloseClipboard();
    }
    OpenClipboard(const OpenClipboard&) = delete;
    OpenClipboard& operator=(const OpenClipboard&) = delete;
    explicit operator bool() const noexcept { return open_; }

private:
    bool open_;
};

} // namespace

bool PutClipboardText(HWND owner, const std::wstring& text) {
    const size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    tol::unique_hglobal memory(::GlobalAlloc(GMEM_MOVEABLE, bytes));
    if (!memory) return false;
    void* const data = ::GlobalLock(memory.get());
    if (!data) return false;
    std::memcpy(data, text.c_str(), bytes);
    ::GlobalUnlock(memory.get());
    const OpenClipboard clipboard(owner);
    if (!clipboard || !::EmptyClipboard() || !::SetClipboardData(CF_UNICODETEXT, memory.get())) return false;
    memory.release();   // the clipboard owns it now
    return true;
}

std::optional<std::wstring> ClipboardText(HWND owner) {
    const OpenClipboard clipboard(owner);
    if (!clipboard) return std::nullopt;
    const HANDLE memory = ::GetClipboardData(CF_UNICODETEXT);
    const auto* data = memory ? static_cast<const wchar_t*>(::GlobalLock(memory)) : nullptr;
    if (!data) return std::nullopt;
    // The block may lack its terminator: read no further than its size.
    const size_t limit = ::GlobalSize(memory) / sizeof(wchar_t);
    std::wstring text(data, std::find(data, data + limit, L'\0'));
    ::GlobalUnlock(memory);
    return text;
}

} // namespace cmax
