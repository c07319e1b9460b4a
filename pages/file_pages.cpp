// The pages of the single-file and registry actions: Write File, Write INI, Write Registry, Replace in File, Wait
// and GAC Install.
#include "action_pages.h"
#include "frame/messages.h"
#include <iterator>
#include <optional>
#include <string_view>

namespace tol {
namespace {

constexpr FieldDescriptor kWriteFile[] = {
    TextRow(1008, L"Filename").Required().Layout(kGrowWidth).File().ReplaceOnInsert().Quoted(),
    TextRow(1027, L"Text").Layout(kGrowWidth | kGrowHeight).File(),
    TypedRow(1026, L"Append", 0).Layout(kMoveDown),
    LayoutRow(1091, kMoveDown),
    TextRow(1092, L"Encoding").Layout(kMoveDown),
};

constexpr FieldDescriptor kWriteINI[] = {
    TextRow(1020, L"Filename").Required().Layout(kGrowWidth).File(205).ReplaceOnInsert().Quoted(),
    TextRow(1064, L"Section").Required().Layout(kGrowWidth),
    TextRow(1008, L"ValueName").Layout(kGrowWidth),
    TypedRow(1031, L"Delete", 0),
    TextRow(1002, L"ValueData").Layout(kGrowWidth).File().ReplaceOnInsert(),
};

constexpr FieldDescriptor kWriteReg[] = {
    TextRow(1034, L"Computer"),
    TypedRow(1000, L"RootKey", 0).Required(),
    TextRow(1019, L"SubKey").Required().Layout(kGrowWidth).Quoted(),
    TextRow(1008, L"ValueName").Layout(kGrowWidth),
    TextRow(1002, L"ValueData").Layout(kGrowWidth | kGrowHeight).File().ReplaceOnInsert(),
    TypedRow(1031, L"DeleteValue", 0),
    TypedRow(1057, L"ValueType", 0, 2).Required(),
};

constexpr FieldDescriptor kFileReplace[] = {
    TextRow(1061, L"FileIn").Required().Layout(kGrowWidth).File().ReplaceOnInsert().Quoted(),
    TextRow(1009, L"FileOut").Required().Layout(kGrowWidth).File().ReplaceOnInsert().Quoted(),
    TextRow(1062, L"Find").Required().Layout(kGrowWidth).File(),
    TextRow(1028, L"Replace").Layout(kGrowWidth).File(),
    TypedRow(1065, L"Attr", 0),
    TypedRow(1063, L"CaseSensitive", 0),
    TypedRow(1064, L"Literal", 0),
    TextRow(1092, L"Encoding").Layout(kGrowWidth),
};

constexpr FieldDescriptor kWait[] = {
    TypedRow(1028, L"WaitFor", 0, 3),
    TextRow(1032, L"Criteria").Required().Layout(kGrowWidth).File().Quoted(),
};

constexpr FieldDescriptor kGACInstall[] = {
    TextRow(1008, L"Filename").Required().Layout(kGrowWidth).File(204).ReplaceOnInsert().Quoted(),
    TypedRow(1011, L"Unregister", 0),
    TypedRow(1014, L"NGEN", 0),
    TypedRow(1013, L"Force", 0),
    TextRow(1009, L"AssemblyFolder").Layout(kGrowWidth),
    TypedRow(1015, L"ShowCmd", 0),
};

// Write Registry: what the step stores against the index that the control shows.
struct StoredIndex {
    std::wstring_view property;
    long stored;
    long index;
};
constexpr StoredIndex kRegistryIndexes[] = {
    {L"RootKey", static_cast<long>(0x80000000u), 0}, // HKEY_CLASSES_ROOT
    {L"RootKey", static_cast<long>(0x80000001u), 1}, // HKEY_CURRENT_USER
    {L"RootKey", static_cast<long>(0x80000002u), 2}, // HKEY_LOCAL_MACHINE
    {L"ValueType", REG_SZ, 0},
    {L"ValueType", REG_DWORD, 1},
};

// An integer value as a 32-bit number; unsigned values keep their bits (a root handle value is above 0x7FFFFFFF).
// Texts (string overrides), missing values and every other type answer nothing.
std::optional<long> AsLong(const VARIANT& value) noexcept {
    switch (V_VT(&value)) {
    case VT_I1: return V_I1(&value);
    case VT_UI1: return V_UI1(&value);
    case VT_I2: return V_I2(&value);
    case VT_UI2: return V_UI2(&value);
    case VT_I4: return V_I4(&value);
    case VT_UI4: return static_cast<long>(V_UI4(&value));
    case VT_INT: return V_INT(&value);
    case VT_UINT: return static_cast<long>(V_UINT(&value));
    case VT_I8: return static_cast<long>(V_I8(&value));
    case VT_UI8: return static_cast<long>(V_UI8(&value));
    default: return std::nullopt;
    }
}

void SetLong(VARIANT& value, long number) noexcept {
    ::VariantClear(&value);
    V_VT(&value) = VT_I4;
    V_I4(&value) = number;
}

} // namespace

WriteFileUI::WriteFileUI() noexcept : PropertyPage(178, kWriteFile, std::size(kWriteFile)) {}

WriteINIUI::WriteINIUI() noexcept : RulePage(1025, kWriteINI, std::size(kWriteINI)) {}

void WriteINIUI::ApplyRules() { EnableItem(1002, !IsChecked(1031)); }

WriteRegUI::WriteRegUI() noexcept : RulePage(172, kWriteReg, std::size(kWriteReg)) {}

void WriteRegUI::AfterCreate() { AddListItems(1000, {L"HKEY_CLASSES_ROOT", L"HKEY_CURRENT_USER", L"HKEY_LOCAL_MACHINE"}); }

void WriteRegUI::ApplyRules() { EnableItems({1002, 1057, 1058}, !IsChecked(1031)); }

void WriteRegUI::BeforeShow(const wchar_t* property, VARIANT& value) {
    const auto number = AsLong(value);
    if (!number) return;
    for (const StoredIndex& row : kRegistryIndexes) {
        if (row.property == property && row.stored == *number) return SetLong(value, row.index);
    }
}

void WriteRegUI::BeforeSave(const wchar_t* property, VARIANT& value) {
    const auto index = AsLong(value);
    if (!index) return;
    if (std::wstring_view(property) == L"ValueType") return SetLong(value, *index == 0 ? REG_SZ : REG_DWORD);
    for (const StoredIndex& row : kRegistryIndexes) {
        if (row.property == property && row.index == *index) return SetLong(value, row.stored);
    }
}

FileReplaceUI::FileReplaceUI() noexcept : PropertyPage(1024, kFileReplace, std::size(kFileReplace)) {}

WaitUI::WaitUI() noexcept : RulePage(179, kWait, std::size(kWait)) {}

void WaitUI::ApplyRules() {
    // Messages 43 to 45 name the criteria of the three buttons; the first button's stands when none is checked.
    UINT message = 43;
    for (UINT button = 0; button < 3; ++button) {
        if (IsChecked(1028 + button)) {
            message = 43 + button;
            break;
        }
    }
    ::SetWindowTextW(Item(1031), LoadResourceText(message).c_str());
}

GACInstallUI::GACInstallUI() noexcept : PropertyPage(184, kGACInstall, std::size(kGACInstall)) {}

} // namespace tol
