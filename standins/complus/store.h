// The catalog's lasting state, in the registry of the prefix below HKLM\Software\Tolvane\VelmoraComPlus:
//   Applications\<slot>               one key per application, one value per property
//   Components\<application ID>\<slot> the components of each application
//   LocalComputer\<slot>, ComputerList\<slot>
//   State\<application ID>            Running (0 or 1), Starts and Shutdowns (counts)
// Slots are eight-digit sequence numbers: objects keep the order in which they were first saved. Texts are
// REG_SZ, integers and booleans REG_DWORD.
#pragma once
#include "item.h"
#include <optional>
#include <string>

namespace complus {

constexpr wchar_t kStoreKey[] = L"Software\\Tolvane\\VelmoraComPlus";

// The store path of a collection's objects: its name, and for components the application's ID below it.
std::wstring CollectionPath(const CollectionSchema& schema, const std::wstring& parentKey);

// The saved objects in slot order; none when the collection was never saved.
ItemList LoadItems(const CollectionSchema& schema, const std::wstring& path);

// Writes every property of the object, giving it the next free slot when it has none.
void SaveItem(const std::wstring& path, Item& item);

// Removes a saved object; a removed application takes its components and its state along.
void DeleteItem(const std::wstring& path, const Item& item);

// The saved application whose ID or Name is the text, without regard to case.
std::optional<ItemPtr> FindStoredApplication(const std::wstring& idOrName);

// Records that the application's server process was started or shut down.
void RecordServerState(const std::wstring& applicationId, bool running);

} // namespace complus
