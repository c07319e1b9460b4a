// The action catalog that registration writes (HKEY_LOCAL_MACHINE\Software\Tolvane\Velmora\Actions\<name>), read
// as the real host reads it, and the creation of an action from its ProgID.
#pragma once
#include "VelmoraSvr.h"
#include "frame/com_ptr.h"
#include <string>
#include <vector>

namespace host {

struct CatalogEntry {
    std::wstring name;
    std::wstring category;
    std::wstring description;
    std::wstring actionProgId; // ActionComponent
    std::wstring page1ProgId;  // UIComponent1
    std::wstring page2ProgId;  // UIComponent2; empty when the action has one page
};

// "HKEY_LOCAL_MACHINE\Software\Tolvane\Velmora\Actions", as messages show it.
std::wstring CatalogLocation();

// Every record, sorted by name without regard to case; empty when nothing is registered.
std::vector<CatalogEntry> ReadCatalog();

// The record of the action (names compare without regard to case, as registry key names do), or null.
const CatalogEntry* FindAction(const std::vector<CatalogEntry>& catalog, const std::wstring& name);

// "A, B, C": the names of all records.
std::wstring ActionNames(const std::vector<CatalogEntry>& catalog);

// CLSIDFromProgID and CoCreateInstance as an in-process server; failures throw comet::com_error.
tol::com_ptr<IBuildAction> CreateAction(const std::wstring& progId);

} // namespace host
