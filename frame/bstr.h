// An owning BSTR, held by containment.
#pragma once
#include <windows.h>
#include <oleauto.h>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace tol {

class bstr {
public:
    bstr() noexcept = default;
    // Copies the text; a failed allocation throws std::bad_alloc.
    explicit bstr(std::wstring_view text) : s_(::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()))) {
        if (!s_) throw std::bad_alloc();
    }
    bstr(bstr&& other) noexcept : s_(std::exchange(other.s_, nullptr)) {}
    bstr& operator=(bstr&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    bstr(const bstr&) = delete;
    bstr& operator=(const bstr&) = delete;
    ~bstr() { reset(); }

    BSTR get() const noexcept { return s_; }
    // For out parameters: frees what is held and hands out the slot.
    BSTR* receive() noexcept {
        reset();
        return &s_;
    }
    // Hands ownership to the caller.
    BSTR release() noexcept { return std::exchange(s_, nullptr); }
    void reset(BSTR s = nullptr) noexcept {
        if (s_) ::SysFreeString(s_);
        s_ = s;
    }
    // The text up to its first NUL character; a null BSTR is empty.
    std::wstring str() const { return s_ ? std::wstring(s_) : std::wstring(); }
    // Every character the BSTR holds, embedded NULs included.
    std::wstring_view view() const noexcept { return s_ ? std::wstring_view(s_, ::SysStringLen(s_)) : std::wstring_view(); }

private:
    BSTR s_ = nullptr;
};

} // namespace tol
