#include "object.h"
#include "failure.h"

namespace complus {
namespace {

constexpr wchar_t kPasswordMask[] = L"****************";

void ReturnText(VARIANT* out, const std::wstring& text) {
    BSTR copy = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
    if (!copy) throw std::bad_alloc();
    V_VT(out) = VT_BSTR;
    V_BSTR(out) = copy;
}

} // namespace

std::wstring_view View(BSTR text) noexcept { return text ? std::wstring_view(text, ::SysStringLen(text)) : std::wstring_view(); }

const PropertySchema& CatalogObject::Property(BSTR name) const {
    return item_->schema->properties[RequireProperty(*item_->schema, View(name))];
}

STDMETHODIMP CatalogObject::get_Value(BSTR property, VARIANT* value) {
    RETURN_IF_NULL_OUT(value);
    ::VariantInit(value);
    return Guard(__uuidof(ICatalogObject), [&] {
        const PropertySchema& definition = Property(property);
        if (definition.flags & WriteOnly) return ReturnText(value, kPasswordMask);
        THROW_IF_FAILED(::VariantCopy(value, const_cast<VARIANT*>(&item_->Value(definition.name))));
    });
}

STDMETHODIMP CatalogObject::put_Value(BSTR property, VARIANT value) {
    return Guard(__uuidof(ICatalogObject), [&] {
        const PropertySchema& definition = Property(property);
        if (item_->schema->readOnly || (definition.flags & ReadOnly))
            Fail(E_ACCESSDENIED, L"The property '" + std::wstring(definition.name) + L"' cannot be changed.");
        item_->Put(definition.name, value);
    });
}

STDMETHODIMP CatalogObject::get_Key(VARIANT* key) {
    RETURN_IF_NULL_OUT(key);
    ::VariantInit(key);
    return Guard(__uuidof(ICatalogObject), [&] { ReturnText(key, item_->Key()); });
}

STDMETHODIMP CatalogObject::get_Name(VARIANT* name) {
    RETURN_IF_NULL_OUT(name);
    ::VariantInit(name);
    return Guard(__uuidof(ICatalogObject), [&] { ReturnText(name, item_->Name()); });
}

STDMETHODIMP CatalogObject::IsPropertyReadOnly(BSTR property, VARIANT_BOOL* readOnly) {
    RETURN_IF_NULL_OUT(readOnly);
    *readOnly = VARIANT_FALSE;
    return Guard(__uuidof(ICatalogObject), [&] {
        const bool fixed = item_->schema->readOnly || (Property(property).flags & ReadOnly);
        *readOnly = fixed ? VARIANT_TRUE : VARIANT_FALSE;
    });
}

STDMETHODIMP CatalogObject::get_Valid(VARIANT_BOOL* valid) {
    RETURN_IF_NULL_OUT(valid);
    *valid = VARIANT_TRUE;
    return S_OK;
}

STDMETHODIMP CatalogObject::IsPropertyWriteOnly(BSTR property, VARIANT_BOOL* writeOnly) {
    RETURN_IF_NULL_OUT(writeOnly);
    *writeOnly = VARIANT_FALSE;
    return Guard(__uuidof(ICatalogObject),
                 [&] { *writeOnly = (Property(property).flags & WriteOnly) ? VARIANT_TRUE : VARIANT_FALSE; });
}

} // namespace complus
