// Finding catalog objects by name, and deleting one by name: the first item whose name equals the wanted one
// without regard to case wins.
#pragma once
#include "catalog.h"
#include <optional>
#include <string>

namespace tol {

// The index of the first item of that name, or -1.
long FindIndexByName(const CatalogCollection& collection, const std::wstring& name);

std::optional<CatalogItem> FindObjectByName(const CatalogCollection& collection, const std::wstring& name);

// Removes the item of that name and saves the collection; false, with nothing changed, when there is none.
bool DeleteByName(const CatalogCollection& collection, const std::wstring& name);

// Names and texts of the catalog compare as the platform's lstrcmpiW compares them.
bool SameText(const std::wstring& a, const std::wstring& b) noexcept;

} // namespace tol
