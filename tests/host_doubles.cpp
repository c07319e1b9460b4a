#include "host_doubles.h"

namespace test {

void TestStep::SetText(const std::wstring& name, const std::wstring& text) {
    VARIANT v;
    V_VT(&v) = VT_BSTR;
    V_BSTR(&v) = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    Set(name, v);
}

void TestStep::Fail(const std::wstring& name, HRESULT hr, const std::wstring& description) {
    failures_[name] = {hr, description};
}

TestStep::~TestStep() {
    for (auto& entry : values_) ::VariantClear(&entry.second);
}

STDMETHODIMP TestStep::QueryInterface(REFIID iid, void** object) {
    if (iid == IID_IUnknown || iid == IID_IBuildStep) {
        *object = static_cast<IBuildStep*>(this);
    } else if (iid == IID_ISupportErrorInfo && supportsErrorInfo_) {
        *object = static_cast<ISupportErrorInfo*>(this);
    } else {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    return S_OK;
}

HRESULT TestStep::Answer(BSTR name, VARIANT* value) {
    const std::wstring key = name ? name : L"";
    if (auto failure = failures_.find(key); failure != failures_.end()) {
        tol::com_ptr<ICreateErrorInfo> create;
        ::CreateErrorInfo(create.put());
        create->SetDescription(const_cast<LPOLESTR>(failure->second.second.c_str()));
        ::SetErrorInfo(0, create.query<IErrorInfo>().get());
        return failure->second.first;
    }
    ::VariantInit(value);
    if (auto found = values_.find(key); found != values_.end()) return ::VariantCopy(value, &found->second);
    return S_OK; // a property the step does not have reads as VT_EMPTY
}

STDMETHODIMP TestStep::GetStoredProperty(BSTR name, VARIANT* value) { return Answer(name, value); }

STDMETHODIMP TestStep::GetEvaluatedProperty(IBuildRun*, BSTR name, VARTYPE wanted, VARIANT* value) {
    requested.push_back(wanted);
    return Answer(name, value);
}

STDMETHODIMP TestStep::InterfaceSupportsErrorInfo(REFIID iid) { return iid == IID_IBuildStep ? S_OK : S_FALSE; }

TestBuild::TestBuild() : stop_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

STDMETHODIMP TestBuild::QueryInterface(REFIID iid, void** object) {
    if (iid == IID_IUnknown || iid == IID_IBuildRun) {
        *object = static_cast<IBuildRun*>(this);
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP TestBuild::GetTextExpander(ITextExpander** expander) {
    *expander = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP TestBuild::RunCommandLine(BSTR, BSTR, VARIANT*, long, BSTR, long, long, VARIANT_BOOL, BSTR, long*) {
    return E_NOTIMPL;
}

STDMETHODIMP TestBuild::LogMessage(BSTR text, VARIANT_BOOL) {
    log.emplace_back(text ? text : L"");
    return S_OK;
}

STDMETHODIMP TestBuild::GetStopEvent(long* event) {
    *event = ::HandleToLong(stop_.get());
    return S_OK;
}

} // namespace test
