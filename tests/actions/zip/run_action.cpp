#include "run_action.h"
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include "frame/component.h"

namespace ziptest {
namespace {

VARIANT ToVariant(const Value& value) {
    VARIANT v;
    ::VariantInit(&v);
    if (const bool* flag = std::get_if<bool>(&value)) {
        V_VT(&v) = VT_BOOL;
        V_BOOL(&v) = *flag ? VARIANT_TRUE : VARIANT_FALSE;
    } else if (const long* number = std::get_if<long>(&value)) {
        V_VT(&v) = VT_I4;
        V_I4(&v) = *number;
    } else {
        const std::wstring& text = std::get<std::wstring>(value);
        V_VT(&v) = VT_BSTR;
        V_BSTR(&v) = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    }
    return v;
}

std::wstring ThreadErrorDescription() {
    tol::com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"<none>";
    tol::bstr text;
    info->GetDescription(text.receive());
    return text.str();
}

Properties Merge(Properties base, std::initializer_list<Property> changes) {
    for (const Property& change : changes) base.push_back(change);
    return base;
}

} // namespace

void SetProperties(test::TestStep& step, const Properties& properties) {
    for (const Property& p : properties) {
        if (std::holds_alternative<Fails>(p.value))
            step.Fail(p.name, kReadFailure, L"no such property today");
        else
            step.Set(p.name, ToVariant(p.value));
    }
}

Outcome RunAction(REFCLSID action, const Properties& properties, bool stopped) {
    Outcome outcome;
    test::TestBuild build;
    test::TestStep step;
    SetProperties(step, properties);
    if (stopped) ::SetEvent(build.stopEvent());
    tol::com_ptr<IBuildAction> component;
    outcome.hr = tol::CreateComponent(*tol::FindClass(action), IID_IBuildAction, component.put_void());
    if (FAILED(outcome.hr)) return outcome;
    outcome.hr = component->Execute(&build, &step, &outcome.status);
    if (FAILED(outcome.hr)) outcome.description = ThreadErrorDescription();
    outcome.log = build.log;
    return outcome;
}

Properties ZipDefaults(std::initializer_list<Property> changes) {
    return Merge({{L"LogDetail", true}, {L"Action", 2L}, {L"Compression", 5L}, {L"Hidden", true}}, changes);
}

Properties UnzipDefaults(std::initializer_list<Property> changes) {
    return Merge({{L"LogDetail", true}, {L"Action", 2L}, {L"PathInfo", true}}, changes);
}

} // namespace ziptest
