// One object of a collection: its values in the order of the collection's properties, where it is kept in the
// store, and whether it changed since it was read or saved.
#pragma once
#include "frame/variant.h"
#include "schema.h"
#include <memory>
#include <string>
#include <vector>

namespace complus {

struct Item {
    explicit Item(const CollectionSchema& owner);

    const CollectionSchema* schema;
    std::vector<tol::variant> values; // one per property of schema, each of the property's type
    std::wstring slot;                // its subkey in the store; empty until it is first saved
    bool dirty = false;

    const VARIANT& Value(const wchar_t* property) const;
    std::wstring Text(const wchar_t* property) const;
    long Number(const wchar_t* property) const;
    std::wstring Key() const { return Text(schema->keyProperty); }
    std::wstring Name() const { return Text(schema->nameProperty); }

    // Converts the value to the property's type (a boolean as text reads "True" or "False"); a value that does not
    // convert fails with the conversion's result code and leaves the property as it was.
    void Put(const wchar_t* property, const VARIANT& value);
    void Put(const wchar_t* property, std::wstring_view text);
    void Put(const wchar_t* property, long number);
};

using ItemPtr = std::shared_ptr<Item>;
using ItemList = std::vector<ItemPtr>;

// A new object with the defaults of its collection; an application also gets a new ID.
ItemPtr NewItem(const CollectionSchema& schema);

// An entry of an ErrorInfo collection.
ItemPtr NewError(const std::wstring& name, HRESULT code);

// The index of the property; a name the collection does not have fails with E_INVALIDARG.
int RequireProperty(const CollectionSchema& schema, std::wstring_view name);

} // namespace complus
