#include "step.h"
#include "bstr.h"
#include "errors.h"
#include "messages.h"
#include "variant.h"

namespace tol {
namespace {

variant ChangeType(const VARIANT& value, VARTYPE wanted) {
    variant converted;
    THROW_IF_FAILED(::VariantChangeTypeEx(converted.receive(), const_cast<VARIANT*>(&value), ::GetThreadLocale(), 0, wanted));
    return converted;
}

} // namespace

variant GetStepValue(IBuildStep* step, IBuildRun* build, const wchar_t* name, VARTYPE wanted) {
    bstr property(name);
    if (!step) throw comet::com_error(E_POINTER);
    variant value;
    THROW_IF_HOST_FAILED(step, IBuildStep, step->GetEvaluatedProperty(build, property.get(), wanted, value.receive()));
    return value;
}

std::wstring VariantToText(const VARIANT& value) {
    switch (V_VT(&value)) {
    case VT_BSTR:
        return V_BSTR(&value) ? std::wstring(V_BSTR(&value)) : std::wstring();
    case VT_BSTR | VT_BYREF:
        return V_BSTRREF(&value) && *V_BSTRREF(&value) ? std::wstring(*V_BSTRREF(&value)) : std::wstring();
    case VT_NULL:
        return {};
    default: {
        variant converted = ChangeType(value, VT_BSTR);
        return V_BSTR(&converted.get()) ? std::wstring(V_BSTR(&converted.get())) : std::wstring();
    }
    }
}

bool VariantToBool(const VARIANT& value) {
    if (V_VT(&value) == VT_BOOL) return V_BOOL(&value) != 0;
    return V_BOOL(&ChangeType(value, VT_BOOL).get()) != 0;
}

long VariantToLong(const VARIANT& value) {
    if (V_VT(&value) == VT_I4) return V_I4(&value);
    return V_I4(&ChangeType(value, VT_I4).get());
}

std::wstring GetStepText(IBuildStep* step, IBuildRun* build, const wchar_t* name) {
    return VariantToText(GetStepValue(step, build, name, VT_BSTR).get());
}

bool GetStepBool(IBuildStep* step, IBuildRun* build, const wchar_t* name) {
    return VariantToBool(GetStepValue(step, build, name, VT_BOOL).get());
}

long GetStepLong(IBuildStep* step, IBuildRun* build, const wchar_t* name) {
    return VariantToLong(GetStepValue(step, build, name, VT_I4).get());
}

std::wstring GetStepStored(IBuildStep* step, const wchar_t* name) {
    bstr property(name);
    if (!step) throw comet::com_error(E_POINTER);
    variant value;
    THROW_IF_HOST_FAILED(step, IBuildStep, step->GetStoredProperty(property.get(), value.receive()));
    return VariantToText(value.get());
}

UINT GetStepCodePage(IBuildStep* step, IBuildRun* build) {
    if (GetStepStored(step, L"Encoding").empty()) return CP_ACP;
    return static_cast<UINT>(GetStepLong(step, build, L"Encoding"));
}

void LogMessage(IBuildRun* build, const std::wstring& text) {
    bstr message(text);
    if (!build) throw comet::com_error(E_POINTER);
    THROW_IF_HOST_FAILED(build, IBuildRun, build->LogMessage(message.get(), VARIANT_TRUE));
}

StepStatus LogLastErrorAndFail(IBuildRun* build, unsigned messageId) {
    const HRESULT code = HResultFromLastError();
    LogMessage(build, FormatResourceMessage(messageId, {SystemErrorText(code)}));
    return StepFailed;
}

StopSignal::StopSignal(IBuildRun* build) {
    if (!build) throw comet::com_error(E_POINTER);
    long handle = 0;
    THROW_IF_HOST_FAILED(build, IBuildRun, build->GetStopEvent(&handle));
    event_ = ::LongToHandle(handle);
}

bool StopSignal::IsStopped() noexcept {
    if (!stopped_ && ::WaitForSingleObject(event_, 0) == WAIT_OBJECT_0) stopped_ = true;
    return stopped_;
}

} // namespace tol
