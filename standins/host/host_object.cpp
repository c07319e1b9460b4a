#include "host_object.h"

namespace host {

tol::com_ptr<IErrorInfo> MakeErrorInfo(REFIID iid, const std::wstring& description) noexcept {
    tol::com_ptr<ICreateErrorInfo> create;
    if (FAILED(::CreateErrorInfo(create.put()))) return {};
    create->SetGUID(iid);
    create->SetSource(const_cast<LPOLESTR>(L"velmora-run"));
    create->SetDescription(const_cast<LPOLESTR>(description.c_str()));
    return create.query<IErrorInfo>();
}

void ThrowDescribed(HRESULT hr, REFIID iid, const std::wstring& description) {
    tol::com_ptr<IErrorInfo> info = MakeErrorInfo(iid, description);
    if (info) throw comet::com_error(hr, std::move(info));
    throw comet::com_error(hr);
}

} // namespace host
