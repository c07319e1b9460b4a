// What the catalog's collections hold: for each collection its properties in order, with their types and the
// values a new object starts with, and what may be done to it.
#pragma once
#include <windows.h>
#include <oleauto.h>
#include <string_view>

namespace complus {

enum PropertyFlag : unsigned {
    NoFlags = 0,
    ReadOnly = 1,  // put_Value refuses it
    WriteOnly = 2, // get_Value answers a mask, never the value
};

struct PropertySchema {
    const wchar_t* name;
    VARTYPE type;        // VT_BSTR, VT_I4 or VT_BOOL
    const wchar_t* text; // default of a text
    long number;         // default of an integer or a boolean (0 or 1)
    unsigned flags;
};

struct CollectionSchema {
    const wchar_t* name;
    const PropertySchema* properties;
    int count;
    const wchar_t* keyProperty;  // get_Key
    const wchar_t* nameProperty; // get_Name
    bool stored; // kept in the store: Populate reads it, SaveChanges writes it
    bool canAdd, canRemove, readOnly;
};

const CollectionSchema& RootSchema() noexcept;
const CollectionSchema& ApplicationsSchema() noexcept;
const CollectionSchema& ComponentsSchema() noexcept;
const CollectionSchema& ErrorInfoSchema() noexcept;
const CollectionSchema& PropertyInfoSchema() noexcept;

// The collections that the catalog and its root collection hand out by name: Applications, ComputerList,
// ErrorInfo, LocalComputer. Null for any other name.
const CollectionSchema* FindTopCollection(std::wstring_view name) noexcept;

// The index of the property in the collection's order, compared without regard to case; -1 when it has none.
int PropertyIndex(const CollectionSchema& schema, std::wstring_view name) noexcept;

bool SameText(std::wstring_view a, std::wstring_view b) noexcept;

} // namespace complus
