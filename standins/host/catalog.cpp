#include "catalog.h"
#include "names.h"
#include "frame/classes.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/registry.h"
#include <algorithm>

namespace host {
namespace {

std::vector<std::wstring> SubkeyNames(HKEY key) {
    DWORD count = 0, longest = 0;
    THROW_IF_WIN32_ERROR(::RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, &longest, nullptr, nullptr, nullptr, nullptr,
                                            nullptr, nullptr));
    std::vector<std::wstring> names;
    std::wstring buffer(longest + 1, L'\0');
    for (DWORD i = 0; i < count; ++i) {
        DWORD length = static_cast<DWORD>(buffer.size());
        if (::RegEnumKeyExW(key, i, buffer.data(), &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS)
            names.emplace_back(buffer.data(), length);
    }
    return names;
}

std::wstring ReadText(HKEY key, const wchar_t* name) {
    std::wstring text;
    return tol::ReadStringValue(key, name, text) ? text : std::wstring();
}

CatalogEntry ReadEntry(HKEY catalog, const std::wstring& name) {
    CatalogEntry entry{name};
    tol::unique_hkey key;
    if (::RegOpenKeyExW(catalog, name.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return entry;
    entry.description = ReadText(key.get(), nullptr);
    entry.category = ReadText(key.get(), L"Category");
    entry.actionProgId = ReadText(key.get(), L"ActionComponent");
    entry.page1ProgId = ReadText(key.get(), L"UIComponent1");
    entry.page2ProgId = ReadText(key.get(), L"UIComponent2");
    return entry;
}

} // namespace

std::wstring CatalogLocation() { return std::wstring(L"HKEY_LOCAL_MACHINE\\") + tol::kCatalogKey; }

std::vector<CatalogEntry> ReadCatalog() {
    tol::unique_hkey catalog;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, tol::kCatalogKey, 0, KEY_READ, catalog.put()) != ERROR_SUCCESS) return {};
    std::vector<CatalogEntry> entries;
    for (const std::wstring& name : SubkeyNames(catalog.get())) entries.push_back(ReadEntry(catalog.get(), name));
    std::sort(entries.begin(), entries.end(),
              [](const CatalogEntry& a, const CatalogEntry& b) { return NoCaseLess()(a.name, b.name); });
    return entries;
}

const CatalogEntry* FindAction(const std::vector<CatalogEntry>& catalog, const std::wstring& name) {
    for (const CatalogEntry& entry : catalog)
        if (!NoCaseLess()(entry.name, name) && !NoCaseLess()(name, entry.name)) return &entry;
    return nullptr;
}

std::wstring ActionNames(const std::vector<CatalogEntry>& catalog) {
    std::wstring names;
    for (const CatalogEntry& entry : catalog) names += (names.empty() ? L"" : L", ") + entry.name;
    return names;
}

tol::com_ptr<IBuildAction> CreateAction(const std::wstring& progId) {
    CLSID clsid;
    THROW_IF_FAILED(::CLSIDFromProgID(progId.c_str(), &clsid));
    tol::com_ptr<IBuildAction> action;
    THROW_IF_FAILED(::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IBuildAction, action.put_void()));
    return action;
}

} // namespace host
