#include "item.h"
#include "failure.h"
#include "frame/bstr.h"
#include "frame/registry.h"
#include <objbase.h>

namespace complus {
namespace {

tol::variant DefaultValue(const PropertySchema& property) {
    tol::variant value;
    VARIANT* slot = value.receive();
    if (property.type == VT_BSTR) {
        V_BSTR(slot) = tol::bstr(property.text).release();
    } else if (property.type == VT_BOOL) {
        V_BOOL(slot) = property.number ? VARIANT_TRUE : VARIANT_FALSE;
    } else {
        V_I4(slot) = property.number;
    }
    V_VT(slot) = property.type;
    return value;
}

std::wstring NewIdentifier() {
    GUID guid{};
    THROW_IF_FAILED(::CoCreateGuid(&guid));
    return tol::GuidText(guid);
}

} // namespace

Item::Item(const CollectionSchema& owner) : schema(&owner) {
    values.reserve(owner.count);
    for (int index = 0; index < owner.count; ++index) values.push_back(DefaultValue(owner.properties[index]));
}

int RequireProperty(const CollectionSchema& schema, std::wstring_view name) {
    const int index = PropertyIndex(schema, name);
    if (index < 0) Fail(E_INVALIDARG, L"'" + std::wstring(name) + L"' is not a property of the " + schema.name + L" collection.");
    return index;
}

const VARIANT& Item::Value(const wchar_t* property) const { return values[RequireProperty(*schema, property)].get(); }

std::wstring Item::Text(const wchar_t* property) const {
    const VARIANT& value = Value(property);
    return V_VT(&value) == VT_BSTR && V_BSTR(&value) ? std::wstring(V_BSTR(&value), ::SysStringLen(V_BSTR(&value)))
                                                     : std::wstring();
}

long Item::Number(const wchar_t* property) const {
    const VARIANT& value = Value(property);
    if (V_VT(&value) == VT_BOOL) return V_BOOL(&value) ? 1 : 0;
    return V_VT(&value) == VT_I4 ? V_I4(&value) : 0;
}

void Item::Put(const wchar_t* property, const VARIANT& value) {
    const int index = RequireProperty(*schema, property);
    tol::variant converted;
    THROW_IF_FAILED(::VariantChangeTypeEx(converted.receive(), const_cast<VARIANT*>(&value), ::GetThreadLocale(),
                                          VARIANT_ALPHABOOL, schema->properties[index].type));
    values[index] = std::move(converted);
    dirty = true;
}

void Item::Put(const wchar_t* property, std::wstring_view text) {
    tol::bstr copy(text);
    VARIANT value;
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = copy.get();
    Put(property, value);
}

void Item::Put(const wchar_t* property, long number) {
    VARIANT value;
    V_VT(&value) = VT_I4;
    V_I4(&value) = number;
    Put(property, value);
}

ItemPtr NewItem(const CollectionSchema& schema) {
    auto item = std::make_shared<Item>(schema);
    item->dirty = true;
    if (&schema == &ApplicationsSchema()) item->Put(L"ID", NewIdentifier());
    return item;
}

ItemPtr NewError(const std::wstring& name, HRESULT code) {
    auto entry = std::make_shared<Item>(ErrorInfoSchema());
    entry->Put(L"Name", name);
    entry->Put(L"ErrorCode", static_cast<long>(code));
    entry->Put(L"MajorRef", name);
    return entry;
}

} // namespace complus
