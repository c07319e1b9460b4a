// The fields of a page: one per bound control (or radio group), with its value, and the wrappers that
// subclass the controls for keys, tooltips and string overrides.
#pragma once
#include "fields.h"
#include "ActionUI.h"
#include "frame/com_ptr.h"
#include "frame/handles.h"
#include "frame/variant.h"
#include <memory>
#include <string>
#include <vector>

namespace tol {

class PropertyPage;

class Field {
public:
    Field(PropertyPage& page, const FieldDescriptor& row, FieldKind kind, int element, std::vector<HWND> controls);

    PropertyPage& page;
    const FieldDescriptor& row;
    const FieldKind kind;
    const int element;            // -1 for a single field, else the index within an array row
    const std::vector<HWND> controls;  // the text control, or the buttons of a radio group
    variant defaultValue;
    variant value;
    bool changed = false;
    bool offersOverrides = false; // typed fields of rows that are not required
    bool editorControl = false;   // a "CodeMax" text control

    HWND control() const noexcept { return controls.front(); }
    bool IsTyped() const noexcept { return kind != FieldKind::Text; }
    bool HasOverride() const noexcept { return V_VT(&value.get()) == VT_BSTR; }
    UINT Id() const noexcept { return static_cast<UINT>(::GetDlgCtrlID(control())); }
    // The window that receives typed text: the control, or the edit of an editable combo box.
    HWND TextWindow() const noexcept;
    std::wstring ControlText() const;
};

// The host's handle on a field; it fails with E_UNEXPECTED once the page has dropped the field.
com_ptr<IActionField> MakeActionField(const std::shared_ptr<Field>& field);

// The missing value: no override, the control's state counts.
void SetMissing(variant& value) noexcept;
bool IsMissing(const VARIANT& value) noexcept;

// Subclasses one control of a field for the page's keys (Ctrl+M, F2, editor keys) and tooltip relay.
class ControlWrapper {
public:
    enum class Role { Text, Button, Editor };
    ControlWrapper(PropertyPage& page, Field& field, HWND control, Role role);
    ~ControlWrapper();
    ControlWrapper(const ControlWrapper&) = delete;
    ControlWrapper& operator=(const ControlWrapper&) = delete;

    HWND control() const noexcept { return control_; }
    Field& field() const noexcept { return field_; }
    Role role() const noexcept { return role_; }
    void SaveEditorSettings() const;

private:
    static LRESULT CALLBACK SubclassProc(HWND window, UINT message, WPARAM w, LPARAM l, UINT_PTR id, DWORD_PTR data);
    LRESULT Handle(HWND window, UINT message, WPARAM w, LPARAM l, bool& handled);

    PropertyPage& page_;
    Field& field_;
    HWND control_;
    HWND inner_ = nullptr;   // the edit of an editable combo box, subclassed too
    Role role_;
    bool swallowReturn_ = false;
    unique_gdi_object editorFont_; // the editor control's font lives as long as its wrapper
};

} // namespace tol
