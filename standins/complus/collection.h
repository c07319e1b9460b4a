// ICatalogCollection: a collection's objects as Populate last read them, with the objects added and removed
// since; SaveChanges writes them to the store (collections of the store only).
#pragma once
#include "dual.h"
#include "item.h"
#include <comadmin.h>
#include <functional>
#include <string>

namespace complus {

class CatalogCollection final : public DualObject<ICatalogCollection> {
public:
    using Populator = std::function<ItemList()>;

    // catalogErrors: the catalog's own ErrorInfo entries, which the root collection hands on.
    CatalogCollection(const CollectionSchema& schema, std::wstring parentKey, Populator populate,
                      std::shared_ptr<ItemList> catalogErrors);

    STDMETHODIMP get__NewEnum(IUnknown** enumerator) override;
    STDMETHODIMP get_Item(LONG index, IDispatch** object) override;
    STDMETHODIMP get_Count(LONG* count) override;
    STDMETHODIMP Remove(LONG index) override;
    STDMETHODIMP Add(IDispatch** object) override;
    STDMETHODIMP Populate() override;
    STDMETHODIMP SaveChanges(LONG* changes) override;
    STDMETHODIMP GetCollection(BSTR name, VARIANT key, IDispatch** collection) override;
    STDMETHODIMP get_Name(VARIANT* name) override;
    STDMETHODIMP get_AddEnabled(VARIANT_BOOL* enabled) override;
    STDMETHODIMP get_RemoveEnabled(VARIANT_BOOL* enabled) override;
    STDMETHODIMP GetUtilInterface(IDispatch** utility) override;
    STDMETHODIMP get_DataStoreMajorVersion(LONG* version) override;
    STDMETHODIMP get_DataStoreMinorVersion(LONG* version) override;
    STDMETHODIMP PopulateByKey(SAFEARRAY* keys) override;
    STDMETHODIMP PopulateByQuery(BSTR query, LONG queryType) override;

private:
    void CheckIndex(LONG index) const;
    long Save();
    IDispatch* Related(std::wstring_view name, const VARIANT& key) const;
    IDispatch* Components(const VARIANT& key) const;

    const CollectionSchema& schema_;
    const std::wstring parentKey_;
    const Populator populate_;
    const std::shared_ptr<ItemList> catalogErrors_;
    std::shared_ptr<ItemList> saveErrors_ = std::make_shared<ItemList>();
    ItemList items_, removed_;
};

// A new collection of the catalog's top level (Applications, ComputerList, ErrorInfo, LocalComputer), not yet
// populated, handed out with one reference.
IDispatch* OpenTopCollection(const CollectionSchema& schema, const std::shared_ptr<ItemList>& catalogErrors);

// The collection that Connect hands out: no objects, the top-level collections below it.
IDispatch* OpenRootCollection(const std::shared_ptr<ItemList>& catalogErrors);

} // namespace complus
