#include "additional.h"
#include "frame/bstr.h"
#include "frame/errors.h"
#include "frame/step.h"
#include "lookup.h"
#include "values.h"
#include <vector>

namespace tol {
namespace {

SAFEARRAY* ArrayOf(const VARIANT& value) noexcept {
    if (!(V_VT(&value) & VT_ARRAY)) return nullptr;
    if (V_VT(&value) & VT_BYREF) return V_ARRAYREF(&value) ? *V_ARRAYREF(&value) : nullptr;
    return V_ARRAY(&value);
}

std::wstring ElementText(SAFEARRAY* array, VARTYPE type, LONG index) {
    if (type == VT_BSTR) {
        bstr element;
        THROW_IF_FAILED(::SafeArrayGetElement(array, &index, element.receive()));
        return element.str();
    }
    if (type != VT_VARIANT) throw comet::com_error(DISP_E_BADVARTYPE);
    variant element;
    THROW_IF_FAILED(::SafeArrayGetElement(array, &index, element.receive()));
    return VariantToText(element.get());
}

// The texts of a one-dimensional array of texts or variants, from its lower bound on; none for a non-array.
std::vector<std::wstring> ArrayTexts(const VARIANT& value) {
    SAFEARRAY* array = ArrayOf(value);
    if (!array) return {};
    if (::SafeArrayGetDim(array) != 1) throw comet::com_error(DISP_E_BADVARTYPE);
    LONG lower = 0, upper = -1;
    THROW_IF_FAILED(::SafeArrayGetLBound(array, 1, &lower));
    THROW_IF_FAILED(::SafeArrayGetUBound(array, 1, &upper));
    std::vector<std::wstring> texts;
    for (LONG index = lower; index <= upper; ++index) texts.push_back(ElementText(array, V_VT(&value) & VT_TYPEMASK, index));
    return texts;
}

// The type the value's text asks for; a type prefix ("B|", "I|", or any other character and "|") is removed.
VARTYPE ChooseType(std::wstring& value) {
    if (value.size() >= 3 && value[1] == L'|') {
        const wchar_t selector = value[0];
        value.erase(0, 2);
        return selector == L'B' ? VT_BOOL : selector == L'I' ? VT_I4 : VT_BSTR;
    }
    if (SameText(value, L"true") || SameText(value, L"false")) return VT_BOOL;
    if (!value.empty() && value.find_first_not_of(L"0123456789-") == std::wstring::npos) return VT_I4;
    return VT_BSTR;
}

variant TypedValue(std::wstring text) {
    const VARTYPE type = ChooseType(text);
    variant source = TextVariant(text);
    variant converted;
    THROW_IF_FAILED(::VariantChangeTypeEx(converted.receive(), source.ptr(), ::GetThreadLocale(), 0, type));
    return converted;
}

} // namespace

void WriteAdditionalProperties(const CatalogItem& object, IBuildRun* build, IBuildStep* step) {
    // Asked for as text, an array property still comes back as the array.
    const variant props = ReadStepVariant(build, step, L"Props", VT_BSTR);
    if (!(props.type() & VT_ARRAY)) return;
    const std::vector<std::wstring> names = ArrayTexts(props.get());
    const std::vector<std::wstring> values = ArrayTexts(ReadStepVariant(build, step, L"Values", VT_BSTR).get());
    for (size_t i = 0; i < names.size() && i < values.size(); ++i) {
        if (names[i].empty()) continue;
        object.Put(names[i].c_str(), TypedValue(values[i]).get());
    }
}

} // namespace tol
