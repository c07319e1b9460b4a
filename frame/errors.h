// The library's exception family and the macros that raise it.
#pragma once
#include "com_ptr.h"
#include <windows.h>
#include <oaidl.h>
#include <exception>
#include <string>

namespace tol {

// Carries a wide message; what() is always the marker text so that the barrier can tell it apart.
class texception : public std::exception {
public:
    explicit texception(std::wstring message) : message_(std::move(message)) {}
    const char* what() const noexcept override { return "tol::texception"; }
    const std::wstring& message() const noexcept { return message_; }

private:
    std::wstring message_;
};

// A failure described in the library's own words.
class truntime_error : public texception {
public:
    using texception::texception;
};

// A failed Win32 call of the file services; the error text is part of the message.
class win32_error : public truntime_error {
public:
    using truntime_error::truntime_error;
};

} // namespace tol

namespace comet {

// A failed HRESULT, with the error information that describes it when there is one.
class com_error : public tol::win32_error {
public:
    explicit com_error(HRESULT hr);
    com_error(HRESULT hr, tol::com_ptr<IErrorInfo> info);
    HRESULT hr() const noexcept { return hr_; }
    IErrorInfo* error_info() const noexcept { return info_.get(); }

private:
    HRESULT hr_;
    tol::com_ptr<IErrorInfo> info_;
};

} // namespace comet

namespace tol {

// Raises the failure of a call on a host object: with the thread's error information when the object
// says that its interface supports it, else with the system text of the HRESULT.
[[noreturn]] void ThrowHostFailure(HRESULT hr, IUnknown* object, REFIID iid);

// Installs a new error information object with this description as the thread's error information.
void SetErrorDescription(const std::wstring& description) noexcept;

[[noreturn]] void ThrowWin32(DWORD code);
[[noreturn]] void ThrowLastError();

} // namespace tol

#define THROW_IF_FAILED(expr)                                                                                              \
    do {                                                                                                                   \
        const HRESULT hr_ = (expr);                                                                                        \
        if (FAILED(hr_)) throw comet::com_error(hr_);                                                                      \
    } while (0)

// Host calls: the host's error information travels with the exception.
#define THROW_IF_HOST_FAILED(object, Interface, expr)                                                                      \
    do {                                                                                                                   \
        const HRESULT hr_ = (expr);                                                                                        \
        if (FAILED(hr_)) ::tol::ThrowHostFailure(hr_, (object), __uuidof(Interface));                                      \
    } while (0)

// A registry status code: non-zero throws comet::com_error with the code as an HRESULT.
#define THROW_IF_WIN32_ERROR(expr)                                                                                         \
    do {                                                                                                                   \
        const LONG code_ = (expr);                                                                                         \
        if (code_ != ERROR_SUCCESS) ::tol::ThrowWin32(static_cast<DWORD>(code_));                                          \
    } while (0)

#define THROW_LAST_ERROR_IF(cond)                                                                                          \
    do {                                                                                                                   \
        if (cond) ::tol::ThrowLastError();                                                                                 \
    } while (0)
