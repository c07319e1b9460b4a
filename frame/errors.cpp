#include "errors.h"
#include "bstr.h"
#include "messages.h"

namespace comet {
namespace {
std::wstring DescribeFailure(HRESULT hr, IErrorInfo* info) {
    if (info) {
        tol::bstr description;
        if (SUCCEEDED(info->GetDescription(description.receive())) && description.get()) return description.str();
    }
    return tol::SystemErrorText(hr);
}
} // namespace

com_error::com_error(HRESULT hr) : tol::win32_error(tol::SystemErrorText(hr)), hr_(hr) {}

com_error::com_error(HRESULT hr, tol::com_ptr<IErrorInfo> info)
    : tol::win32_error(DescribeFailure(hr, info.get())), hr_(hr), info_(std::move(info)) {}

} // namespace comet

namespace tol {

void ThrowHostFailure(HRESULT hr, IUnknown* object, REFIID iid) {
    com_ptr<IErrorInfo> info;
    if (object) {
        com_ptr<ISupportErrorInfo> support;
        if (SUCCEEDED(object->QueryInterface(IID_ISupportErrorInfo, support.put_void())) &&
            support->InterfaceSupportsErrorInfo(iid) == S_OK) {
            if (::GetErrorInfo(0, info.put()) != S_OK) info.reset();
        }
    }
    if (info) throw comet::com_error(hr, std::move(info));
    throw comet::com_error(hr);
}

void SetErrorDescription(const std::wstring& description) noexcept {
    com_ptr<ICreateErrorInfo> create;
    if (FAILED(::CreateErrorInfo(create.put()))) return;
    create->SetDescription(const_cast<LPOLESTR>(description.c_str()));
    com_ptr<IErrorInfo> info = create.query<IErrorInfo>();
    ::SetErrorInfo(0, info.get());
}

void ThrowWin32(DWORD code) { throw comet::com_error(static_cast<HRESULT>(0x80070000u | (code & 0xFFFFu))); }

void ThrowLastError() {
    const DWORD code = ::GetLastError();
    ThrowWin32(code ? code : ERROR_GEN_FAILURE);
}

} // namespace tol
