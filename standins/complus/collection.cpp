#include "collection.h"
#include "computer.h"
#include "failure.h"
#include "object.h"
#include "rules.h"
#include "store.h"
#include "frame/variant.h"

namespace complus {
namespace {

const IID& kIid = __uuidof(ICatalogCollection);

// One entry per property of the described collection, in its order: the name and the variant type.
ItemList Describe(const CollectionSchema& described) {
    ItemList entries;
    for (int index = 0; index < described.count; ++index) {
        auto entry = std::make_shared<Item>(PropertyInfoSchema());
        entry->Put(L"Name", described.properties[index].name);
        entry->Put(L"Type", static_cast<long>(described.properties[index].type));
        entry->dirty = false;
        entries.push_back(entry);
    }
    return entries;
}

ItemList LoadTopLevel(const CollectionSchema& schema) {
    ItemList items = LoadItems(schema, CollectionPath(schema, L""));
    if (items.empty() && SameText(schema.name, L"LocalComputer")) {
        auto computer = std::make_shared<Item>(schema);
        computer->Put(L"Name", LocalComputerName());
        computer->dirty = false;
        items.push_back(computer);
    }
    return items;
}

std::wstring KeyText(const VARIANT& key) {
    tol::variant text;
    THROW_IF_FAILED(::VariantChangeType(text.receive(), const_cast<VARIANT*>(&key), 0, VT_BSTR));
    return std::wstring(View(V_BSTR(text.ptr())));
}

} // namespace

CatalogCollection::CatalogCollection(const CollectionSchema& schema, std::wstring parentKey, Populator populate,
                                     std::shared_ptr<ItemList> catalogErrors)
    : schema_(schema), parentKey_(std::move(parentKey)), populate_(std::move(populate)),
      catalogErrors_(std::move(catalogErrors)) {}

IDispatch* OpenTopCollection(const CollectionSchema& schema, const std::shared_ptr<ItemList>& catalogErrors) {
    const CollectionSchema* top = &schema; // every description is static
    CatalogCollection::Populator populate = [top] { return LoadTopLevel(*top); };
    if (&schema == &ErrorInfoSchema()) populate = [catalogErrors] { return *catalogErrors; };
    return (new CatalogCollection(schema, L"", std::move(populate), catalogErrors))->NewReference();
}

IDispatch* OpenRootCollection(const std::shared_ptr<ItemList>& catalogErrors) {
    CatalogCollection::Populator nothing = [] { return ItemList(); };
    return (new CatalogCollection(RootSchema(), L"", std::move(nothing), catalogErrors))->NewReference();
}

void CatalogCollection::CheckIndex(LONG index) const {
    if (index < 0 || static_cast<size_t>(index) >= items_.size())
        Fail(E_INVALIDARG,
             L"The " + std::wstring(schema_.name) + L" collection has no object at index " + std::to_wstring(index) + L".");
}

STDMETHODIMP CatalogCollection::get__NewEnum(IUnknown** enumerator) {
    RETURN_IF_NULL_OUT(enumerator);
    *enumerator = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP CatalogCollection::get_Item(LONG index, IDispatch** object) {
    RETURN_IF_NULL_OUT(object);
    *object = nullptr;
    return Guard(kIid, [&] {
        CheckIndex(index);
        *object = (new CatalogObject(items_[index]))->NewReference();
    });
}

STDMETHODIMP CatalogCollection::get_Count(LONG* count) {
    RETURN_IF_NULL_OUT(count);
    *count = static_cast<LONG>(items_.size());
    return S_OK;
}

STDMETHODIMP CatalogCollection::Remove(LONG index) {
    return Guard(kIid, [&] {
        if (!schema_.canRemove)
            Fail(E_ACCESSDENIED, L"Objects cannot be removed from the " + std::wstring(schema_.name) + L" collection.");
        CheckIndex(index);
        removed_.push_back(items_[index]);
        items_.erase(items_.begin() + index);
    });
}

STDMETHODIMP CatalogCollection::Add(IDispatch** object) {
    RETURN_IF_NULL_OUT(object);
    *object = nullptr;
    return Guard(kIid, [&] {
        if (!schema_.canAdd)
            Fail(E_ACCESSDENIED, L"Objects cannot be added to the " + std::wstring(schema_.name) + L" collection.");
        ItemPtr item = NewItem(schema_);
        items_.push_back(item);
        *object = (new CatalogObject(item))->NewReference();
    });
}

STDMETHODIMP CatalogCollection::Populate() {
    return Guard(kIid, [&] {
        ItemList fresh = populate_();
        items_.swap(fresh);
        removed_.clear();
    });
}

long CatalogCollection::Save() {
    const SaveCheck check = CheckChanges(schema_, items_, removed_);
    *saveErrors_ = check.errors;
    if (!check.errors.empty()) Fail(COMADMIN_E_OBJECTERRORS, check.description);
    const std::wstring path = CollectionPath(schema_, parentKey_);
    long changes = 0;
    for (const ItemPtr& item : removed_) {
        DeleteItem(path, *item);
        ++changes;
    }
    removed_.clear();
    for (const ItemPtr& item : items_) {
        if (!item->dirty) continue;
        SaveItem(path, *item);
        ++changes;
    }
    return changes;
}

STDMETHODIMP CatalogCollection::SaveChanges(LONG* changes) {
    RETURN_IF_NULL_OUT(changes);
    *changes = 0;
    return Guard(kIid, [&] {
        if (schema_.stored) *changes = Save();
    });
}

IDispatch* CatalogCollection::Components(const VARIANT& key) const {
    const std::wstring application = KeyText(key);
    for (const ItemPtr& item : items_) {
        if (!SameText(item->Key(), application)) continue;
        const std::wstring path = CollectionPath(ComponentsSchema(), item->Key());
        Populator stored = [path] { return LoadItems(ComponentsSchema(), path); };
        return (new CatalogCollection(ComponentsSchema(), item->Key(), std::move(stored), catalogErrors_))->NewReference();
    }
    Fail(E_INVALIDARG, L"The Applications collection has no object with the key '" + application + L"'.");
}

IDispatch* CatalogCollection::Related(std::wstring_view name, const VARIANT& key) const {
    if (SameText(name, PropertyInfoSchema().name)) {
        const CollectionSchema* described = &schema_;
        Populator properties = [described] { return Describe(*described); };
        return (new CatalogCollection(PropertyInfoSchema(), L"", std::move(properties), catalogErrors_))->NewReference();
    }
    if (SameText(name, ErrorInfoSchema().name)) {
        Populator lastSave = [errors = saveErrors_] { return *errors; };
        return (new CatalogCollection(ErrorInfoSchema(), L"", std::move(lastSave), catalogErrors_))->NewReference();
    }
    if (&schema_ == &ApplicationsSchema() && SameText(name, ComponentsSchema().name)) return Components(key);
    if (&schema_ == &RootSchema()) {
        if (const CollectionSchema* top = FindTopCollection(name)) return OpenTopCollection(*top, catalogErrors_);
    }
    Fail(E_INVALIDARG,
         L"The " + std::wstring(schema_.name) + L" collection has no related collection '" + std::wstring(name) + L"'.");
}

STDMETHODIMP CatalogCollection::GetCollection(BSTR name, VARIANT key, IDispatch** collection) {
    RETURN_IF_NULL_OUT(collection);
    *collection = nullptr;
    return Guard(kIid, [&] { *collection = Related(View(name), key); });
}

STDMETHODIMP CatalogCollection::get_Name(VARIANT* name) {
    RETURN_IF_NULL_OUT(name);
    ::VariantInit(name);
    V_BSTR(name) = ::SysAllocString(schema_.name);
    if (!V_BSTR(name)) return E_OUTOFMEMORY;
    V_VT(name) = VT_BSTR;
    return S_OK;
}

STDMETHODIMP CatalogCollection::get_AddEnabled(VARIANT_BOOL* enabled) {
    RETURN_IF_NULL_OUT(enabled);
    *enabled = schema_.canAdd ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP CatalogCollection::get_RemoveEnabled(VARIANT_BOOL* enabled) {
    RETURN_IF_NULL_OUT(enabled);
    *enabled = schema_.canRemove ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
}

STDMETHODIMP CatalogCollection::GetUtilInterface(IDispatch** utility) {
    RETURN_IF_NULL_OUT(utility);
    *utility = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP CatalogCollection::get_DataStoreMajorVersion(LONG* version) {
    RETURN_IF_NULL_OUT(version);
    *version = 1;
    return S_OK;
}

STDMETHODIMP CatalogCollection::get_DataStoreMinorVersion(LONG* version) {
    RETURN_IF_NULL_OUT(version);
    *version = 0;
    return S_OK;
}

STDMETHODIMP CatalogCollection::PopulateByKey(SAFEARRAY*) { return E_NOTIMPL; }
STDMETHODIMP CatalogCollection::PopulateByQuery(BSTR, LONG) { return E_NOTIMPL; }

} // namespace complus
