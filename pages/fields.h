// Field tables: which control of a page template shows which step property, and how.
#pragma once
#include <windows.h>

namespace tol {

// Layout flags: how a control follows the page's size change.
enum : DWORD { kGrowWidth = 1, kGrowHeight = 2, kMoveRight = 4, kMoveDown = 8 };

// What the host's browse command offers for a field.
enum : DWORD { kBrowseNone = 0, kBrowseFolder = 1, kBrowseFile = 2 };

// One row of a page's field table. Rows are built with the constexpr setters, e.g.
//   Row(1008, L"Filename").Required().Layout(kGrowWidth).File().ReplaceOnInsert().Quoted()
struct FieldDescriptor {
    UINT firstId = 0;
    UINT count = 1;                      // radio buttons of a group, or controls of an array field
    const wchar_t* property = nullptr;   // null: the row only takes part in layout
    const wchar_t* textDefault = nullptr;  // the default of a text field; null for typed fields
    long intDefault = 0;                 // the default of a radio group, list (index) or check box (0 or 1)
    bool required = false;               // text: must not be empty; typed: no string overrides
    const wchar_t* trim = nullptr;       // characters trimmed from both ends of a saved text
    DWORD layout = 0;
    DWORD browse = kBrowseNone;
    UINT filterId = 0;                   // string-table id of the browse filter
    DWORD insertion = 0;                 // 1: text inserted by the browse command replaces the field

    constexpr FieldDescriptor Count(UINT n) const { FieldDescriptor r = *this; r.count = n; return r; }
    constexpr FieldDescriptor Default(const wchar_t* text) const { FieldDescriptor r = *this; r.textDefault = text; return r; }
    constexpr FieldDescriptor Default(long value) const {
        FieldDescriptor r = *this; r.textDefault = nullptr; r.intDefault = value; return r;
    }
    constexpr FieldDescriptor Required() const { FieldDescriptor r = *this; r.required = true; return r; }
    constexpr FieldDescriptor Layout(DWORD flags) const { FieldDescriptor r = *this; r.layout = flags; return r; }
    constexpr FieldDescriptor Folder() const { FieldDescriptor r = *this; r.browse = kBrowseFolder; return r; }
    constexpr FieldDescriptor File(UINT filter = 0) const {
        FieldDescriptor r = *this; r.browse = kBrowseFile; r.filterId = filter; return r;
    }
    constexpr FieldDescriptor ReplaceOnInsert() const { FieldDescriptor r = *this; r.insertion = 1; return r; }
    constexpr FieldDescriptor Quoted() const { FieldDescriptor r = *this; r.trim = L"\""; return r; }
};

// A text row (edit, editable combo box, editor control; an array of `count` text controls with Count).
constexpr FieldDescriptor TextRow(UINT id, const wchar_t* property) {
    FieldDescriptor r; r.firstId = id; r.property = property; r.textDefault = L""; return r;
}
// A check box, drop-down list or radio group of `count` buttons; the default is an integer.
constexpr FieldDescriptor TypedRow(UINT id, const wchar_t* property, long defaultValue, UINT count = 1) {
    FieldDescriptor r; r.firstId = id; r.count = count; r.property = property; r.intDefault = defaultValue; return r;
}
// A control that only follows the page's size.
constexpr FieldDescriptor LayoutRow(UINT id, DWORD flags) {
    FieldDescriptor r; r.firstId = id; r.layout = flags; return r;
}

enum class FieldKind { Text, Check, Radio, List };

} // namespace tol
