// What the catalog refuses to save, as the platform's catalog does: a removed application that is not
// deleteable, an application without a name, and a server application that runs as an account other than a
// built-in one without its password.
#pragma once
#include "item.h"
#include <string>

namespace complus {

struct SaveCheck {
    ItemList errors;          // one ErrorInfo entry per refused object
    std::wstring description; // of the first refusal; empty when there is none
};

SaveCheck CheckChanges(const CollectionSchema& schema, const ItemList& items, const ItemList& removed);

} // namespace complus
