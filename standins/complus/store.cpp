#include "store.h"
#include "failure.h"
#include "frame/handles.h"
#include "frame/registry.h"
#include <algorithm>
#include <cwchar>

namespace complus {
namespace {

constexpr size_t kSlotDigits = 8;

std::wstring StorePath(const std::wstring& path) { return std::wstring(kStoreKey) + L"\\" + path; }

// The subkey names of a key; none when the key does not exist.
std::vector<std::wstring> SubkeyNames(const std::wstring& path) {
    tol::unique_hkey key;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, StorePath(path).c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return {};
    std::vector<std::wstring> names;
    for (DWORD index = 0;; ++index) {
        wchar_t name[256];
        DWORD length = 256;
        if (::RegEnumKeyExW(key.get(), index, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        names.emplace_back(name, length);
    }
    return names;
}

unsigned long SlotNumber(const std::wstring& slot) noexcept { return std::wcstoul(slot.c_str(), nullptr, 10); }

std::wstring NextSlot(const std::wstring& path) {
    unsigned long highest = 0;
    for (const std::wstring& slot : SubkeyNames(path)) highest = std::max(highest, SlotNumber(slot));
    std::wstring digits = std::to_wstring(highest + 1);
    return std::wstring(kSlotDigits > digits.size() ? kSlotDigits - digits.size() : 0, L'0') + digits;
}

void ReadProperty(HKEY key, Item& item, const PropertySchema& property) {
    if (property.type == VT_BSTR) {
        std::wstring text;
        if (tol::ReadStringValue(key, property.name, text)) item.Put(property.name, text);
        return;
    }
    DWORD number = 0, size = sizeof number, type = 0;
    if (::RegQueryValueExW(key, property.name, nullptr, &type, reinterpret_cast<BYTE*>(&number), &size) == ERROR_SUCCESS &&
        type == REG_DWORD)
        item.Put(property.name, static_cast<long>(number));
}

ItemPtr LoadItem(const CollectionSchema& schema, const std::wstring& path, const std::wstring& slot) {
    auto item = std::make_shared<Item>(schema);
    tol::unique_hkey key;
    THROW_IF_WIN32_ERROR(::RegOpenKeyExW(HKEY_LOCAL_MACHINE, StorePath(path + L"\\" + slot).c_str(), 0, KEY_READ, key.put()));
    for (int index = 0; index < schema.count; ++index) ReadProperty(key.get(), *item, schema.properties[index]);
    item->slot = slot;
    item->dirty = false;
    return item;
}

void WriteProperty(HKEY key, const Item& item, const PropertySchema& property) {
    if (property.type == VT_BSTR) {
        tol::SetStringValue(key, property.name, item.Text(property.name));
        return;
    }
    const DWORD number = static_cast<DWORD>(item.Number(property.name));
    THROW_IF_WIN32_ERROR(
        ::RegSetValueExW(key, property.name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number));
}

void DeleteStoreKey(const std::wstring& parent, const std::wstring& name) {
    tol::unique_hkey key;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, StorePath(parent).c_str(), 0, KEY_ALL_ACCESS, key.put()) != ERROR_SUCCESS) return;
    const LONG status = tol::DeleteKeyTree(key.get(), name);
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) tol::ThrowWin32(static_cast<DWORD>(status));
}

DWORD ReadCount(HKEY key, const wchar_t* name) noexcept {
    DWORD number = 0, size = sizeof number;
    if (::RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size) != ERROR_SUCCESS) return 0;
    return number;
}

void WriteNumber(HKEY key, const wchar_t* name, DWORD number) {
    THROW_IF_WIN32_ERROR(::RegSetValueExW(key, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number));
}

} // namespace

std::wstring CollectionPath(const CollectionSchema& schema, const std::wstring& parentKey) {
    return parentKey.empty() ? std::wstring(schema.name) : std::wstring(schema.name) + L"\\" + parentKey;
}

ItemList LoadItems(const CollectionSchema& schema, const std::wstring& path) {
    std::vector<std::wstring> slots = SubkeyNames(path);
    std::sort(slots.begin(), slots.end(),
              [](const std::wstring& a, const std::wstring& b) { return SlotNumber(a) < SlotNumber(b); });
    ItemList items;
    for (const std::wstring& slot : slots) items.push_back(LoadItem(schema, path, slot));
    return items;
}

void SaveItem(const std::wstring& path, Item& item) {
    if (item.slot.empty()) item.slot = NextSlot(path);
    tol::unique_hkey key = tol::CreateKey(HKEY_LOCAL_MACHINE, StorePath(path + L"\\" + item.slot));
    for (int index = 0; index < item.schema->count; ++index) WriteProperty(key.get(), item, item.schema->properties[index]);
    item.dirty = false;
}

void DeleteItem(const std::wstring& path, const Item& item) {
    if (item.slot.empty()) return; // never saved
    DeleteStoreKey(path, item.slot);
    if (item.schema != &ApplicationsSchema()) return;
    DeleteStoreKey(ComponentsSchema().name, item.Key());
    DeleteStoreKey(L"State", item.Key());
}

std::optional<ItemPtr> FindStoredApplication(const std::wstring& idOrName) {
    for (ItemPtr& application : LoadItems(ApplicationsSchema(), ApplicationsSchema().name)) {
        if (SameText(application->Key(), idOrName) || SameText(application->Name(), idOrName)) return application;
    }
    return std::nullopt;
}

void RecordServerState(const std::wstring& applicationId, bool running) {
    tol::unique_hkey key = tol::CreateKey(HKEY_LOCAL_MACHINE, StorePath(L"State\\" + applicationId));
    const wchar_t* counter = running ? L"Starts" : L"Shutdowns";
    WriteNumber(key.get(), counter, ReadCount(key.get(), counter) + 1);
    WriteNumber(key.get(), L"Running", running ? 1 : 0);
}

} // namespace complus
