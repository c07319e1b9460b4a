// The property page engine that every page of the step editor shares: a modeless child dialog from a template,
// fields bound to step properties by a field table, validation, saving, change tracking, string overrides,
// tooltips and layout. A page class gives its template and table and overrides the hooks it needs.
#pragma once
#include "fields.h"
#include "ActionUI.h"
#include "frame/com_ptr.h"
#include <commctrl.h>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tol {

class Field;
class ControlWrapper;

// The text a window or control shows.
std::wstring WindowText(HWND window);

class PropertyPage {
public:
    // `table` may be null: the page then answers FieldTable() when the page is created.
    PropertyPage(UINT dialogId, const FieldDescriptor* table, size_t rows, UINT firstFocusId = 0) noexcept;
    virtual ~PropertyPage();
    PropertyPage(const PropertyPage&) = delete;
    PropertyPage& operator=(const PropertyPage&) = delete;

    // The IActionPage operations. Failures throw; the component turns them into HRESULTs.
    HWND Create(IActionPageSite* site, ITextExpander* expander, HWND parent, bool tooltips);
    void Destroy() noexcept;
    void Activate();
    void Load(IBuildStep* step, bool severalSteps);
    bool Validate();
    void Save(IBuildStep* step);
    com_ptr<IActionField> ActiveField();

    HWND window() const noexcept { return window_; }
    HWND Item(int id) const noexcept { return ::GetDlgItem(window_, id); }

    // For the fields and their wrappers.
    void OpenOverrideEdit(Field& field, HWND control);
    std::wstring FieldText(const Field& field) const;
    void InsertText(Field& field, const std::wstring& text, bool keep);
    void CopyExpandedToClipboard(const Field& field);
    void EditorSettingsChanged(HWND control);
    HWND tooltip() const noexcept { return tooltip_; }
    HWND overrideEdit() const noexcept { return overrideEdit_; }

protected:
    // Hooks, in the order the engine knows them; the defaults do nothing.
    virtual void AfterCreate() {}
    virtual void AfterLoad(IBuildStep* /*step*/) {}
    virtual bool PageRules() { return true; }
    virtual void AfterSave(IBuildStep* /*step*/) {}
    virtual void BeforeShow(const wchar_t* /*property*/, VARIANT& /*value*/) {}
    virtual void BeforeSave(const wchar_t* /*property*/, VARIANT& /*value*/) {}
    virtual std::pair<const FieldDescriptor*, size_t> FieldTable() { return {nullptr, 0}; }
    // Called for WM_COMMAND before the engine's own handling; answer true to stop it there.
    virtual bool OnCommand(WORD /*id*/, WORD /*code*/, HWND /*control*/) { return false; }

    // For the hooks.
    bool IsChecked(int id) const noexcept { return ::IsDlgButtonChecked(window_, id) == BST_CHECKED; }
    void EnableItem(int id, bool enable) const noexcept { ::EnableWindow(Item(id), enable ? TRUE : FALSE); }
    void AddListItems(int id, std::initializer_list<const wchar_t*> items) const;
    // The engine's message box ("Velmora", exclamation), the focus moved to the control; answers false.
    bool Refuse(const std::wstring& message, int controlId) const;
    int MessageBox(const std::wstring& text, UINT type) const;

private:
    static INT_PTR CALLBACK DialogProc(HWND window, UINT message, WPARAM w, LPARAM l);
    INT_PTR HandleMessage(UINT message, WPARAM w, LPARAM l);
    void HandleCommand(WORD id, WORD code, HWND control);
    LRESULT HandleNotify(NMHDR* header);
    void MarkChanged(Field& field);
    void FocusChanged(HWND control);
    void ConfirmOverrideRemoval(HWND control);
    void CloseOverrideEdit();
    static LRESULT CALLBACK OverrideEditProc(HWND window, UINT message, WPARAM w, LPARAM l, UINT_PTR id, DWORD_PTR data);
    void ApplyLayout();
    void FillTip(NMTTDISPINFOW* info);
    Field* FieldOf(HWND control) const noexcept;
    void CreateFields();
    void ShowField(Field& field);
    void ShowTyped(Field& field);
    void ReadControl(Field& field);
    void WriteValue(IBuildStepWriter* writer, const Field& field, const VARIANT& value);
    void WriteArray(IBuildStepWriter* writer, size_t first);
    std::wstring ExpandForDisplay(const std::wstring& text) const;

    const UINT dialogId_;
    const FieldDescriptor* table_;
    size_t rows_;
    const UINT firstFocusId_;

    com_ptr<IActionPageSite> site_;
    com_ptr<ITextExpander> expander_;
    com_ptr<IBuildStep> step_;
    HWND window_ = nullptr;
    bool loading_ = false;
    bool several_ = false;
    bool prompting_ = false;

    std::vector<std::shared_ptr<Field>> fields_;
    std::map<HWND, size_t> controls_;   // control window -> index in fields_
    HWND focused_ = nullptr;
    Field* overrideField_ = nullptr;    // the field whose override edit is open
    HWND overrideControl_ = nullptr;    // the control it covers
    HWND tooltip_ = nullptr;
    HWND overrideEdit_ = nullptr;
    HWND overrideButton_ = nullptr;
    struct LayoutItem {
        UINT id;
        DWORD flags;
        RECT original;   // in page client coordinates, at the reference size
    };
    std::vector<LayoutItem> layout_;
    std::wstring tipText_;
    SIZE reference_{};
    bool hasReference_ = false;
    std::vector<std::unique_ptr<ControlWrapper>> wrappers_;
};

} // namespace tol
