#include "failure.h"
#include "frame/com_ptr.h"

namespace complus {

void SetCatalogErrorInfo(REFIID iid, const std::wstring& description) noexcept {
    tol::com_ptr<ICreateErrorInfo> create;
    if (FAILED(::CreateErrorInfo(create.put()))) return;
    create->SetGUID(iid);
    create->SetSource(const_cast<LPOLESTR>(L"VelmoraComAdmin"));
    create->SetDescription(const_cast<LPOLESTR>(description.c_str()));
    ::SetErrorInfo(0, create.query<IErrorInfo>().get());
}

} // namespace complus
