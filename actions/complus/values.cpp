#include "values.h"
#include "frame/bstr.h"
#include "frame/errors.h"

namespace tol {

variant TextVariant(std::wstring_view text) {
    bstr copy(text);
    variant value;
    VARIANT* slot = value.receive();
    V_BSTR(slot) = copy.release();
    V_VT(slot) = VT_BSTR;
    return value;
}

variant LongVariant(long value) noexcept {
    variant result;
    V_VT(result.ptr()) = VT_I4;
    V_I4(result.ptr()) = value;
    return result;
}

variant BoolVariant(bool value) noexcept {
    variant result;
    V_VT(result.ptr()) = VT_BOOL;
    V_BOOL(result.ptr()) = value ? VARIANT_TRUE : VARIANT_FALSE;
    return result;
}

variant ReadStepVariant(IBuildRun* build, IBuildStep* step, const wchar_t* name, VARTYPE requested) {
    const bstr property(name);
    if (!step) throw comet::com_error(E_POINTER);
    variant value;
    THROW_IF_HOST_FAILED(step, IBuildStep, step->GetEvaluatedProperty(build, property.get(), requested, value.receive()));
    return value;
}

} // namespace tol
