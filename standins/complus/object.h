// ICatalogObject over one object of a collection: the collection and the object share the values, so what is
// put here is what the collection saves.
#pragma once
#include "dual.h"
#include "item.h"
#include <comadmin.h>

namespace complus {

class CatalogObject final : public DualObject<ICatalogObject> {
public:
    explicit CatalogObject(ItemPtr item) noexcept : item_(std::move(item)) {}

    STDMETHODIMP get_Value(BSTR property, VARIANT* value) override;
    STDMETHODIMP put_Value(BSTR property, VARIANT value) override;
    STDMETHODIMP get_Key(VARIANT* key) override;
    STDMETHODIMP get_Name(VARIANT* name) override;
    STDMETHODIMP IsPropertyReadOnly(BSTR property, VARIANT_BOOL* readOnly) override;
    STDMETHODIMP get_Valid(VARIANT_BOOL* valid) override;
    STDMETHODIMP IsPropertyWriteOnly(BSTR property, VARIANT_BOOL* writeOnly) override;

private:
    const PropertySchema& Property(BSTR name) const;
    ItemPtr item_;
};

// The text of a BSTR, a null one being empty.
std::wstring_view View(BSTR text) noexcept;

} // namespace complus
