#include "lookup.h"

namespace tol {

bool SameText(const std::wstring& a, const std::wstring& b) noexcept { return ::lstrcmpiW(a.c_str(), b.c_str()) == 0; }

long FindIndexByName(const CatalogCollection& collection, const std::wstring& name) {
    const long count = collection.Count();
    for (long index = 0; index < count; ++index) {
        if (SameText(collection.Item(index).Name(), name)) return index;
    }
    return -1;
}

std::optional<CatalogItem> FindObjectByName(const CatalogCollection& collection, const std::wstring& name) {
    const long index = FindIndexByName(collection, name);
    if (index < 0) return std::nullopt;
    return collection.Item(index);
}

bool DeleteByName(const CatalogCollection& collection, const std::wstring& name) {
    const long index = FindIndexByName(collection, name);
    if (index < 0) return false;
    collection.Remove(index);
    collection.SaveChanges();
    return true;
}

} // namespace tol
