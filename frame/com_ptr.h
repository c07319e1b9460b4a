// A reference-counting pointer for COM interfaces.
#pragma once
#include <unknwn.h>
#include <utility>

namespace tol {

template <class T>
class com_ptr {
public:
    com_ptr() noexcept = default;
    com_ptr(std::nullptr_t) noexcept {}
    // Takes a new reference on p.
    explicit com_ptr(T* p) noexcept : p_(p) {
        if (p_) p_->AddRef();
    }
    com_ptr(const com_ptr& other) noexcept : com_ptr(other.p_) {}
    com_ptr(com_ptr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
    com_ptr& operator=(com_ptr other) noexcept {
        std::swap(p_, other.p_);
        return *this;
    }
    ~com_ptr() { reset(); }

    // Adopts a reference that the caller already owns.
    static com_ptr attach(T* p) noexcept {
        com_ptr r;
        r.p_ = p;
        return r;
    }
    T* get() const noexcept { return p_; }
    T* operator->() const noexcept { return p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }
    T** put() noexcept {
        reset();
        return &p_;
    }
    void** put_void() noexcept { return reinterpret_cast<void**>(put()); }
    T* detach() noexcept { return std::exchange(p_, nullptr); }
    void reset() noexcept {
        if (p_) std::exchange(p_, nullptr)->Release();
    }
    template <class U>
    com_ptr<U> query() const noexcept {
        com_ptr<U> r;
        if (p_) p_->QueryInterface(__uuidof(U), r.put_void());
        return r;
    }

private:
    T* p_ = nullptr;
};

} // namespace tol
