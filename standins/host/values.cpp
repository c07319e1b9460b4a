#include "values.h"
#include "frame/bstr.h"
#include "frame/errors.h"

namespace host {

tol::variant CopyValue(const VARIANT& value) {
    tol::variant copy;
    THROW_IF_FAILED(::VariantCopyInd(copy.receive(), const_cast<VARIANT*>(&value)));
    return copy;
}

PropertyMap CopyProperties(const PropertyMap& properties) {
    PropertyMap copy;
    for (const auto& [name, value] : properties) copy.emplace(name, CopyValue(value.get()));
    return copy;
}

tol::variant MakeText(std::wstring_view text) {
    tol::variant value;
    V_BSTR(value.ptr()) = tol::bstr(text).release();
    V_VT(value.ptr()) = VT_BSTR;
    return value;
}

tol::variant MakeTextArray(const std::vector<std::wstring>& texts) {
    tol::unique_safearray array(::SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size())));
    if (!array) throw comet::com_error(E_OUTOFMEMORY);
    for (LONG i = 0; i < static_cast<LONG>(texts.size()); ++i) {
        tol::variant element = MakeText(texts[i]);
        THROW_IF_FAILED(::SafeArrayPutElement(array.get(), &i, element.ptr()));
    }
    tol::variant value;
    V_ARRAY(value.ptr()) = array.release();
    V_VT(value.ptr()) = VT_ARRAY | VT_VARIANT;
    return value;
}

bool IsVariantArray(const VARIANT& value) noexcept {
    return V_VT(&value) == (VT_ARRAY | VT_VARIANT) && V_ARRAY(&value) && ::SafeArrayGetDim(V_ARRAY(&value)) == 1;
}

} // namespace host
