#include "schema.h"

namespace complus {
namespace {

// An application starts as a server application that runs as the interactive user and shuts down after three
// idle minutes, and can be deleted.
constexpr PropertySchema kApplication[] = {
    {L"ID", VT_BSTR, L"", 0, ReadOnly},
    {L"Name", VT_BSTR, L"New Application", 0, NoFlags},
    {L"Description", VT_BSTR, L"", 0, NoFlags},
    {L"Activation", VT_I4, nullptr, 1, NoFlags},
    {L"Identity", VT_BSTR, L"Interactive User", 0, NoFlags},
    {L"Password", VT_BSTR, L"", 0, WriteOnly},
    {L"RunForever", VT_BOOL, nullptr, 0, NoFlags},
    {L"ShutdownAfter", VT_I4, nullptr, 3, NoFlags},
    {L"Deleteable", VT_BOOL, nullptr, 1, NoFlags},
    {L"ApplicationAccessChecksEnabled", VT_BOOL, nullptr, 1, NoFlags},
    {L"AccessChecksLevel", VT_I4, nullptr, 1, NoFlags},
    {L"Authentication", VT_I4, nullptr, 4, NoFlags},
    {L"ImpersonationLevel", VT_I4, nullptr, 3, NoFlags},
    {L"QueuingEnabled", VT_BOOL, nullptr, 0, NoFlags},
};

// A component is named by its ProgID; the installation sets CLSID, ProgID and DLL.
constexpr PropertySchema kComponent[] = {
    {L"CLSID", VT_BSTR, L"", 0, ReadOnly},
    {L"ProgID", VT_BSTR, L"", 0, ReadOnly},
    {L"DLL", VT_BSTR, L"", 0, NoFlags},
    {L"Description", VT_BSTR, L"", 0, NoFlags},
    {L"Transaction", VT_I4, nullptr, 1, NoFlags},
    {L"Synchronization", VT_I4, nullptr, 1, NoFlags},
    {L"JustInTimeActivation", VT_BOOL, nullptr, 0, NoFlags},
    {L"ComponentTransactionTimeoutEnabled", VT_BOOL, nullptr, 0, NoFlags},
    {L"ComponentTransactionTimeout", VT_I4, nullptr, 60, NoFlags},
    {L"ConstructionEnabled", VT_BOOL, nullptr, 0, NoFlags},
    {L"ConstructorString", VT_BSTR, L"", 0, NoFlags},
    {L"EventTrackingEnabled", VT_BOOL, nullptr, 1, NoFlags},
    {L"ObjectPoolingEnabled", VT_BOOL, nullptr, 0, NoFlags},
    {L"MinPoolSize", VT_I4, nullptr, 0, NoFlags},
    {L"MaxPoolSize", VT_I4, nullptr, 1048576, NoFlags},
};

// The local computer's one object; its Name is filled in when the object is made.
constexpr PropertySchema kComputer[] = {
    {L"Name", VT_BSTR, L"", 0, ReadOnly},
    {L"Description", VT_BSTR, L"", 0, NoFlags},
    {L"DCOMEnabled", VT_BOOL, nullptr, 1, NoFlags},
    {L"CISEnabled", VT_BOOL, nullptr, 0, NoFlags},
    {L"DefaultAuthenticationLevel", VT_I4, nullptr, 2, NoFlags},
    {L"DefaultImpersonationLevel", VT_I4, nullptr, 2, NoFlags},
    {L"ResourcePoolingEnabled", VT_BOOL, nullptr, 1, NoFlags},
    {L"TransactionTimeout", VT_I4, nullptr, 60, NoFlags},
};

constexpr PropertySchema kComputerListEntry[] = {
    {L"Name", VT_BSTR, L"", 0, NoFlags},
};

constexpr PropertySchema kError[] = {
    {L"Name", VT_BSTR, L"", 0, NoFlags},
    {L"ErrorCode", VT_I4, nullptr, 0, NoFlags},
    {L"MajorRef", VT_BSTR, L"", 0, NoFlags},
    {L"MinorRef", VT_BSTR, L"", 0, NoFlags},
};

constexpr PropertySchema kPropertyDescription[] = {
    {L"Name", VT_BSTR, L"", 0, NoFlags},
    {L"Type", VT_I4, nullptr, 0, NoFlags},
};

template <size_t N>
constexpr int Count(const PropertySchema (&)[N]) noexcept {
    return static_cast<int>(N);
}

// clang-format off
// Each: name, properties, key property, name property, stored, objects can be added, removed, read-only.
constexpr CollectionSchema kRoot{L"Root", nullptr, 0, L"", L"", false, false, false, true};
constexpr CollectionSchema kApplications{L"Applications", kApplication, Count(kApplication), L"ID", L"Name",
                                         true, true, true, false};
constexpr CollectionSchema kComponents{L"Components", kComponent, Count(kComponent), L"CLSID", L"ProgID",
                                       true, false, true, false};
constexpr CollectionSchema kLocalComputer{L"LocalComputer", kComputer, Count(kComputer), L"Name", L"Name",
                                          true, false, false, false};
constexpr CollectionSchema kComputerList{L"ComputerList", kComputerListEntry, Count(kComputerListEntry), L"Name", L"Name",
                                         true, true, true, false};
constexpr CollectionSchema kErrorInfo{L"ErrorInfo", kError, Count(kError), L"Name", L"Name",
                                      false, false, false, true};
constexpr CollectionSchema kPropertyInfo{L"PropertyInfo", kPropertyDescription, Count(kPropertyDescription), L"Name", L"Name",
                                         false, false, false, true};
// clang-format on

constexpr const CollectionSchema* kTopCollections[] = {&kApplications, &kComputerList, &kErrorInfo, &kLocalComputer};

} // namespace

const CollectionSchema& RootSchema() noexcept { return kRoot; }
const CollectionSchema& ApplicationsSchema() noexcept { return kApplications; }
const CollectionSchema& ComponentsSchema() noexcept { return kComponents; }
const CollectionSchema& ErrorInfoSchema() noexcept { return kErrorInfo; }
const CollectionSchema& PropertyInfoSchema() noexcept { return kPropertyInfo; }

bool SameText(std::wstring_view a, std::wstring_view b) noexcept {
    return a.size() == b.size() &&
           ::CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()), TRUE) == CSTR_EQUAL;
}

const CollectionSchema* FindTopCollection(std::wstring_view name) noexcept {
    for (const CollectionSchema* schema : kTopCollections) {
        if (SameText(schema->name, name)) return schema;
    }
    return nullptr;
}

int PropertyIndex(const CollectionSchema& schema, std::wstring_view name) noexcept {
    for (int index = 0; index < schema.count; ++index) {
        if (SameText(schema.properties[index].name, name)) return index;
    }
    return -1;
}

} // namespace complus
