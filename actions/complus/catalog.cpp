#include "catalog.h"
#include "frame/bstr.h"
#include "frame/errors.h"
#include "frame/step.h"
#include <new>

namespace tol {
namespace {

constexpr DWORD kCatalogContext = CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;

template <class Interface>
com_ptr<Interface> Query(IUnknown* object) {
    com_ptr<Interface> result;
    THROW_IF_FAILED(object->QueryInterface(__uuidof(Interface), result.put_void()));
    return result;
}

} // namespace

std::wstring CatalogItem::Name() const {
    variant name;
    THROW_IF_HOST_FAILED(object_.get(), ICatalogObject, object_->get_Name(name.receive()));
    return VariantToText(name.get());
}

variant CatalogItem::Key() const {
    variant key;
    THROW_IF_HOST_FAILED(object_.get(), ICatalogObject, object_->get_Key(key.receive()));
    return key;
}

variant CatalogItem::Value(const wchar_t* property) const {
    const bstr name(property);
    variant value;
    THROW_IF_HOST_FAILED(object_.get(), ICatalogObject, object_->get_Value(name.get(), value.receive()));
    return value;
}

void CatalogItem::Put(const wchar_t* property, const VARIANT& value) const {
    const bstr name(property);
    THROW_IF_HOST_FAILED(object_.get(), ICatalogObject, object_->put_Value(name.get(), value));
}

CatalogCollection::CatalogCollection(const com_ptr<IDispatch>& object) {
    if (!object) throw comet::com_error(E_POINTER);
    collection_ = Query<ICatalogCollection>(object.get());
    THROW_IF_HOST_FAILED(collection_.get(), ICatalogCollection, collection_->Populate());
    variant name;
    THROW_IF_HOST_FAILED(collection_.get(), ICatalogCollection, collection_->get_Name(name.receive()));
    name_ = VariantToText(name.get());
}

long CatalogCollection::Count() const {
    LONG count = 0;
    THROW_IF_HOST_FAILED(collection_.get(), ICatalogCollection, collection_->get_Count(&count));
    return count;
}

CatalogItem CatalogCollection::Item(long index) const {
    com_ptr<IDispatch> object;
    THROW_IF_HOST_FAILED(collection_.get(), ICatalogCollection, collection_->get_Item(index, object.put()));
    if (!object) throw comet::com_error(E_POINTER);
    return CatalogItem(Query<ICatalogObject>(object.get()));
}

CatalogItem CatalogCollection::Add() const {
    com_ptr<IDispatch> object;
    THROW_IF_HOST_FAILED(collection_.get(), ICatalogCollection, collection_->Add(object.put()));
    if (!object) throw comet::com_error(E_POINTER);
    return CatalogItem(Query<ICatalogObject>(object.get()));
}

void CatalogCollection::Remove(long index) const {
    THROW_IF_HOST_FAILED(collection_.get(), ICatalogCollection, collection_->Remove(index));
}

void CatalogCollection::SaveChanges() const {
    LONG changes = 0;
    THROW_IF_HOST_FAILED(collection_.get(), ICatalogCollection, collection_->SaveChanges(&changes));
}

CatalogCollection CatalogCollection::Related(const wchar_t* collection, const VARIANT& key) const {
    const bstr name(collection);
    com_ptr<IDispatch> object;
    THROW_IF_HOST_FAILED(collection_.get(), ICatalogCollection, collection_->GetCollection(name.get(), key, object.put()));
    return CatalogCollection(object);
}

Catalog::Catalog(const std::wstring& computer) {
    THROW_IF_FAILED(
        ::CoCreateInstance(__uuidof(COMAdminCatalog), nullptr, kCatalogContext, __uuidof(ICOMAdminCatalog), catalog_.put_void()));
    const bstr name(computer);
    com_ptr<IDispatch> root; // released at once: the actions start from the catalog's own collections
    THROW_IF_HOST_FAILED(catalog_.get(), ICOMAdminCatalog, catalog_->Connect(name.get(), root.put()));
}

CatalogCollection Catalog::Collection(const wchar_t* name) const {
    const bstr text(name);
    com_ptr<IDispatch> object;
    THROW_IF_HOST_FAILED(catalog_.get(), ICOMAdminCatalog, catalog_->GetCollection(text.get(), object.put()));
    return CatalogCollection(object);
}

HRESULT Catalog::InstallComponent(const std::wstring& application, const std::wstring& dll, const std::wstring& typeLibrary,
                                  const std::wstring& proxyStub) const noexcept {
    try {
        const bstr a(application), d(dll), t(typeLibrary), p(proxyStub);
        return catalog_->InstallComponent(a.get(), d.get(), t.get(), p.get());
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    }
}

void Catalog::ShutdownApplication(const std::wstring& application) const {
    const bstr name(application);
    THROW_IF_HOST_FAILED(catalog_.get(), ICOMAdminCatalog, catalog_->ShutdownApplication(name.get()));
}

void Catalog::StartApplication(const std::wstring& application) const {
    const bstr name(application);
    THROW_IF_HOST_FAILED(catalog_.get(), ICOMAdminCatalog, catalog_->StartApplication(name.get()));
}

} // namespace tol
