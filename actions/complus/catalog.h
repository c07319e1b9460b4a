// The COM+ catalog as both COM+ actions use it: the connection, its collections and their objects. Every call
// goes through the catalog's dual interfaces directly; a failed call raises comet::com_error with its result
// code and the error information of the interface that failed.
#pragma once
#include "frame/com_ptr.h"
#include "frame/variant.h"
#include <comadmin.h>
#include <string>

namespace tol {

// One object of a collection: an application, a component, an error entry, a property description.
class CatalogItem {
public:
    explicit CatalogItem(com_ptr<ICatalogObject> object) noexcept : object_(std::move(object)) {}

    std::wstring Name() const;
    variant Key() const;
    variant Value(const wchar_t* property) const;
    void Put(const wchar_t* property, const VARIANT& value) const;

private:
    com_ptr<ICatalogObject> object_;
};

// A populated collection with its own name, read right after it was populated.
class CatalogCollection {
public:
    // Asks the object for ICatalogCollection and populates it.
    explicit CatalogCollection(const com_ptr<IDispatch>& object);

    const std::wstring& name() const noexcept { return name_; }
    long Count() const;
    CatalogItem Item(long index) const;
    CatalogItem Add() const;
    void Remove(long index) const;
    void SaveChanges() const;
    // A collection below this one: the components of an application (its key), the property descriptions of
    // this collection (an empty text).
    CatalogCollection Related(const wchar_t* collection, const VARIANT& key) const;

private:
    com_ptr<ICatalogCollection> collection_;
    std::wstring name_;
};

// The catalog of the local or of a remote computer.
class Catalog {
public:
    // Creates the catalog and connects it to the computer, whose name is passed on unchanged (empty: this one).
    explicit Catalog(const std::wstring& computer);

    CatalogCollection Collection(const wchar_t* name) const;
    // The result of the installation, which the caller reports from the ErrorInfo collection when it failed.
    [[nodiscard]] HRESULT InstallComponent(const std::wstring& application, const std::wstring& dll,
                                           const std::wstring& typeLibrary, const std::wstring& proxyStub) const noexcept;
    void ShutdownApplication(const std::wstring& application) const;
    void StartApplication(const std::wstring& application) const;

private:
    com_ptr<ICOMAdminCatalog> catalog_;
};

} // namespace tol
