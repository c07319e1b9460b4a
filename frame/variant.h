// An owning VARIANT and SAFEARRAY, held by containment.
#pragma once
#include <windows.h>
#include <oleauto.h>
#include <utility>

namespace tol {

class variant {
public:
    variant() noexcept { ::VariantInit(&v_); }
    variant(variant&& other) noexcept : v_(other.release()) {}
    variant& operator=(variant&& other) noexcept {
        if (this != &other) {
            reset();
            v_ = other.release();
        }
        return *this;
    }
    variant(const variant&) = delete;
    variant& operator=(const variant&) = delete;
    ~variant() { reset(); }

    const VARIANT& get() const noexcept { return v_; }
    VARIANT* ptr() noexcept { return &v_; }
    VARTYPE type() const noexcept { return V_VT(&v_); }
    // For out parameters: clears what is held and hands out the slot.
    VARIANT* receive() noexcept {
        reset();
        return &v_;
    }
    // Hands ownership of the contents to the caller.
    VARIANT release() noexcept {
        VARIANT out = v_;
        ::VariantInit(&v_);
        return out;
    }
    void reset() noexcept {
        ::VariantClear(&v_);
        ::VariantInit(&v_);
    }

private:
    VARIANT v_;
};

class unique_safearray {
public:
    explicit unique_safearray(SAFEARRAY* sa = nullptr) noexcept : sa_(sa) {}
    unique_safearray(unique_safearray&& other) noexcept : sa_(other.release()) {}
    unique_safearray& operator=(unique_safearray&& other) noexcept {
        if (this != &other) reset(other.release());
        return *this;
    }
    unique_safearray(const unique_safearray&) = delete;
    unique_safearray& operator=(const unique_safearray&) = delete;
    ~unique_safearray() { reset(); }

    SAFEARRAY* get() const noexcept { return sa_; }
    SAFEARRAY* release() noexcept { return std::exchange(sa_, nullptr); }
    void reset(SAFEARRAY* sa = nullptr) noexcept {
        if (sa_) ::SafeArrayDestroy(sa_);
        sa_ = sa;
    }
    explicit operator bool() const noexcept { return sa_ != nullptr; }

private:
    SAFEARRAY* sa_;
};

} // namespace tol
