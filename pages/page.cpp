#include "page.h"
#include "field.h"
#include "editor_control.h"
#include "frame/bstr.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include "frame/step.h"
#include <commctrl.h>
#include <algorithm>
#include <cwctype>

namespace tol {
namespace {

constexpr wchar_t kCaption[] = L"Velmora";
constexpr UINT kConfirmOverrideRemoval = WM_APP + 1;
constexpr int kOverrideButtonId = 0x7F01;
constexpr int kOverrideEditId = 0x7F02;
constexpr UINT kEditorChanged = 100;      // the editor control's text-changed notification
constexpr UINT kEditorProperties = 170;   // the editor control's properties-changed notification

std::wstring ClassOf(HWND window) {
    wchar_t name[21] = {};
    ::GetClassNameW(window, name, 21);
    return name;
}

bool SameText(const std::wstring& a, const wchar_t* b) { return ::lstrcmpiW(a.c_str(), b) == 0; }

bool IsRadioButton(HWND window) {
    return SameText(ClassOf(window), L"Button") && (::SendMessageW(window, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON);
}

FieldKind KindOf(HWND control) {
    const std::wstring name = ClassOf(control);
    if (SameText(name, L"ComboBox"))
        return (::GetWindowLongW(control, GWL_STYLE) & 3) == CBS_DROPDOWNLIST ? FieldKind::List : FieldKind::Text;
    if (SameText(name, L"Button")) return IsRadioButton(control) ? FieldKind::Radio : FieldKind::Check;
    return FieldKind::Text;
}

variant MakeText(const std::wstring& text) {
    variant result;
    V_VT(result.ptr()) = VT_BSTR;
    V_BSTR(result.ptr()) = bstr(text).release();
    return result;
}

variant Copy(const VARIANT& value) {
    variant result;
    THROW_IF_FAILED(::VariantCopy(result.ptr(), const_cast<VARIANT*>(&value)));
    return result;
}

std::wstring Trimmed(const std::wstring& text, const wchar_t* characters) {
    const size_t first = text.find_first_not_of(characters);
    if (first == std::wstring::npos) return {};
    return text.substr(first, text.find_last_not_of(characters) - first + 1);
}

// The empty or zero default that a saved value removes the property for.
bool EqualsEmptyDefault(const Field& field, const VARIANT& value) {
    const VARIANT& d = field.defaultValue.get();
    switch (field.kind) {
    case FieldKind::Text:
        return V_VT(&value) == VT_BSTR && ::SysStringLen(V_BSTR(&value)) == 0 && ::SysStringLen(V_BSTR(&d)) == 0;
    case FieldKind::Check:
        return V_VT(&value) == VT_BOOL && !V_BOOL(&value) && !V_BOOL(&d);
    default:
        return V_VT(&value) == VT_I4 && V_I4(&value) == 0 && V_I4(&d) == 0;
    }
}

// The caption that shows whether a typed field holds a string override: the check box's text, or the label
// or group box just before a radio group or list.
HWND CaptionWindow(const Field& field) {
    return field.kind == FieldKind::Check ? field.control() : ::GetWindow(field.control(), GW_HWNDPREV);
}

void MarkCaption(const Field& field) {
    const HWND caption = CaptionWindow(field);
    if (!caption) return;
    std::wstring text = WindowText(caption);
    const bool starred = !text.empty() && text.back() == L'*';
    if (field.HasOverride() && !starred) {
        ::SetWindowTextW(caption, (text + L'*').c_str());
    } else if (!field.HasOverride() && starred) {
        text.pop_back();
        ::SetWindowTextW(caption, text.c_str());
    }
}

// Whether a dialog template names the editor control's window class, whose library must then be loaded first.
bool TemplateNamesEditorControl(UINT dialogId) {
    const HRSRC resource = ::FindResourceW(ResourceModule(), MAKEINTRESOURCEW(dialogId), MAKEINTRESOURCEW(5));
    const HGLOBAL loaded = resource ? ::LoadResource(ResourceModule(), resource) : nullptr;
    const auto* data = static_cast<const wchar_t*>(loaded ? ::LockResource(loaded) : nullptr);
    if (!data) return false;
    // The resource compiler may store a class name in capitals: compare without case.
    const std::wstring_view text(data, ::SizeofResource(ResourceModule(), resource) / sizeof(wchar_t));
    constexpr std::wstring_view name(L"CODEMAX\0", 8);
    const auto found = std::search(text.begin(), text.end(), name.begin(), name.end(),
                                   [](wchar_t a, wchar_t b) { return std::towupper(a) == b; });
    return found != text.end();
}

class Clipboard {
public:
    explicit Clipboard(HWND owner) : open_(::OpenClipboard(owner) != FALSE) {}
    ~Clipboard() {
        if (open_) ::CloseClipboard();
    }
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;
    bool open() const noexcept { return open_; }

private:
    bool open_;
};

} // namespace

std::wstring WindowText(HWND window) {
    std::wstring text(static_cast<size_t>(::GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(::GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

PropertyPage::PropertyPage(UINT dialogId, const FieldDescriptor* table, size_t rows, UINT firstFocusId) noexcept
    : dialogId_(dialogId), table_(table), rows_(rows), firstFocusId_(firstFocusId) {}

PropertyPage::~PropertyPage() { Destroy(); }

HWND PropertyPage::Create(IActionPageSite* site, ITextExpander* expander, HWND parent, bool tooltips) {
    if (!table_) std::tie(table_, rows_) = FieldTable();
    Destroy();
    site_ = com_ptr<IActionPageSite>(site);
    expander_ = com_ptr<ITextExpander>(expander);
    if (TemplateNamesEditorControl(dialogId_)) LoadEditorControlLibrary();
    const HWND created = ::CreateDialogParamW(ResourceModule(), MAKEINTRESOURCEW(dialogId_), parent, DialogProc,
                                              reinterpret_cast<LPARAM>(this));
    if (!created) return nullptr;
    window_ = created;
    loading_ = true;
    try {
        if (tooltips) {
            tooltip_ = ::CreateWindowExW(0, TOOLTIPS_CLASSW, nullptr, WS_POPUP | TTS_NOPREFIX, CW_USEDEFAULT,
                                         CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, window_, nullptr,
                                         ResourceModule(), nullptr);
            ::SendMessageW(tooltip_, TTM_SETDELAYTIME, TTDT_AUTOPOP, 10000);
            ::SendMessageW(tooltip_, TTM_SETDELAYTIME, TTDT_INITIAL, 200);
            ::SendMessageW(tooltip_, TTM_SETDELAYTIME, TTDT_RESHOW, 0);
        }
        CreateFields();
        if (!layout_.empty()) {
            RECT client{};
            ::GetClientRect(window_, &client);
            reference_ = {client.right, client.bottom};
            hasReference_ = true;
        }
        AfterCreate();
    } catch (...) {
        Destroy();
        throw;
    }
    loading_ = false;
    return window_;
}

void PropertyPage::CreateFields() {
    for (size_t r = 0; r < rows_; ++r) {
        const FieldDescriptor& row = table_[r];
        for (UINT i = 0; i < row.count && row.layout; ++i) {
            const HWND control = Item(static_cast<int>(row.firstId + i));
            if (!control) continue;
            RECT rect{};
            ::GetWindowRect(control, &rect);
            if (SameText(ClassOf(control), L"ComboBox")) {
                RECT dropped{};   // a combo box is sized with its list, not with its visible part
                ::SendMessageW(control, CB_GETDROPPEDCONTROLRECT, 0, reinterpret_cast<LPARAM>(&dropped));
                rect.bottom = rect.top + (dropped.bottom - dropped.top);
            }
            ::MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&rect), 2);
            layout_.push_back({row.firstId + i, row.layout, rect});
        }
        if (!row.property) continue;
        const HWND first = Item(static_cast<int>(row.firstId));
        if (!first) throw truntime_error(L"The page template has no control " + std::to_wstring(row.firstId) + L".");
        const FieldKind kind = KindOf(first);
        std::vector<std::vector<HWND>> groups;
        if (kind == FieldKind::Radio) {
            std::vector<HWND> buttons;
            for (UINT i = 0; i < row.count; ++i) buttons.push_back(Item(static_cast<int>(row.firstId + i)));
            groups.push_back(std::move(buttons));
        } else {
            for (UINT i = 0; i < row.count; ++i) groups.push_back({Item(static_cast<int>(row.firstId + i))});
        }
        const bool array = groups.size() > 1;
        for (size_t e = 0; e < groups.size(); ++e) {
            if (std::find(groups[e].begin(), groups[e].end(), nullptr) != groups[e].end())
                throw truntime_error(L"The page template lacks a control of the row " + std::to_wstring(row.firstId) + L".");
            auto field = std::make_shared<Field>(*this, row, kind, array ? static_cast<int>(e) : -1, groups[e]);
            const size_t index = fields_.size();
            for (HWND control : field->controls) controls_[control] = index;
            std::vector<HWND> wrapped;
            if (kind == FieldKind::Text) {
                field->editorControl = SameText(ClassOf(field->control()), L"CodeMax");
                const auto role = field->editorControl ? ControlWrapper::Role::Editor : ControlWrapper::Role::Text;
                wrappers_.push_back(std::make_unique<ControlWrapper>(*this, *field, field->control(), role));
                wrapped.push_back(field->control());
            } else if (!row.required) {
                field->offersOverrides = true;
                for (HWND control : field->controls) {
                    wrappers_.push_back(std::make_unique<ControlWrapper>(*this, *field, control,
                                                                         ControlWrapper::Role::Button));
                    wrapped.push_back(control);
                }
            }
            for (HWND control : wrapped) {
                if (!tooltip_) break;
                TTTOOLINFOW tool{sizeof tool};
                tool.uFlags = TTF_IDISHWND;
                tool.hwnd = window_;
                tool.uId = reinterpret_cast<UINT_PTR>(control);
                tool.lpszText = LPSTR_TEXTCALLBACKW;
                ::SendMessageW(tooltip_, TTM_ADDTOOLW, 0, reinterpret_cast<LPARAM>(&tool));
            }
            fields_.push_back(std::move(field));
        }
    }
}

void PropertyPage::Destroy() noexcept {
    site_ = nullptr;
    expander_ = nullptr;
    step_ = nullptr;
    wrappers_.clear();
    controls_.clear();
    fields_.clear();
    layout_.clear();
    hasReference_ = false;
    focused_ = nullptr;
    overrideField_ = nullptr;
    overrideControl_ = nullptr;
    if (tooltip_) ::DestroyWindow(std::exchange(tooltip_, nullptr));
    overrideEdit_ = overrideButton_ = nullptr;
    if (window_) ::DestroyWindow(std::exchange(window_, nullptr));
}

void PropertyPage::Activate() {
    if (site_) THROW_IF_HOST_FAILED(site_.get(), IActionPageSite, site_->FieldFocused(0));
    HWND control = firstFocusId_ ? Item(static_cast<int>(firstFocusId_)) : nullptr;
    for (HWND child = ::GetWindow(window_, GW_CHILD); !control && child; child = ::GetWindow(child, GW_HWNDNEXT))
        if (::GetWindowLongW(child, GWL_STYLE) & WS_TABSTOP) control = child;
    if (control && IsRadioButton(control)) {
        // The checked button of the group, if any: walk forward to the start of the next group.
        for (HWND button = control; button; button = ::GetWindow(button, GW_HWNDNEXT)) {
            if (button != control && (::GetWindowLongW(button, GWL_STYLE) & WS_GROUP)) break;
            if (IsRadioButton(button) && ::SendMessageW(button, BM_GETCHECK, 0, 0) == BST_CHECKED) {
                control = button;
                break;
            }
        }
    }
    if (control) ::SetFocus(control);
}

void PropertyPage::Load(IBuildStep* step, bool severalSteps) {
    loading_ = true;
    several_ = severalSteps;
    struct Clear {
        bool& flag;
        ~Clear() { flag = false; }
    } clear{loading_};
    for (size_t i = 0; i < fields_.size(); ++i) {
        Field& field = *fields_[i];
        field.changed = step == nullptr;
        if (field.element > 0) continue;
        if (field.element == 0) {
            // One array property spread over the row's controls.
            variant stored;
            if (step) THROW_IF_HOST_FAILED(step, IBuildStep, step->GetStoredProperty(bstr(field.row.property).get(), stored.receive()));
            SAFEARRAY* array = (V_VT(&stored.get()) & VT_ARRAY) ? V_ARRAY(&stored.get()) : nullptr;
            LONG lower = 0, upper = -1;
            if (array && ::SafeArrayGetDim(array) == 1) {
                ::SafeArrayGetLBound(array, 1, &lower);
                ::SafeArrayGetUBound(array, 1, &upper);
            }
            for (size_t e = i; e < fields_.size() && &fields_[e]->row == &field.row; ++e) {
                Field& element = *fields_[e];
                std::wstring text;
                const LONG index = lower + element.element;
                if (array && index <= upper) {
                    variant item;
                    if ((V_VT(&stored.get()) & VT_TYPEMASK) == VT_VARIANT) {
                        THROW_IF_FAILED(::SafeArrayGetElement(array, const_cast<LONG*>(&index), item.ptr()));
                    } else if ((V_VT(&stored.get()) & VT_TYPEMASK) == VT_BSTR) {
                        BSTR element_text = nullptr;
                        THROW_IF_FAILED(::SafeArrayGetElement(array, const_cast<LONG*>(&index), &element_text));
                        V_VT(item.ptr()) = VT_BSTR;
                        V_BSTR(item.ptr()) = element_text;
                    }
                    text = V_VT(&item.get()) == VT_EMPTY ? std::wstring() : VariantToText(item.get());
                }
                element.value = MakeText(text);
                ::SetWindowTextW(element.control(), text.c_str());
            }
            continue;
        }
        if (!step) {
            field.value = Copy(field.defaultValue.get());
        } else {
            THROW_IF_HOST_FAILED(step, IBuildStep, step->GetStoredProperty(bstr(field.row.property).get(), field.value.receive()));
            if (V_VT(&field.value.get()) == VT_EMPTY && field.IsTyped()) {
                VARIANT& v = *field.value.ptr();
                V_VT(&v) = V_VT(&field.defaultValue.get());
                if (V_VT(&v) == VT_BOOL) V_BOOL(&v) = VARIANT_FALSE; else V_I4(&v) = 0;
            }
        }
        if (V_VT(&field.value.get()) != VT_BSTR) BeforeShow(field.row.property, *field.value.ptr());
        ShowField(field);
    }
    step_ = com_ptr<IBuildStep>(step);
    AfterLoad(step);
}

void PropertyPage::ShowField(Field& field) {
    if (!field.IsTyped()) {
        const VARIANT& v = field.value.get();
        const std::wstring text = V_VT(&v) == VT_EMPTY || V_VT(&v) == VT_NULL ? std::wstring() : VariantToText(v);
        if (field.editorControl)
            ::SendMessageW(field.control(), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
        else
            ::SetWindowTextW(field.control(), text.c_str());
        return;
    }
    ShowTyped(field);
}

void PropertyPage::ShowTyped(Field& field) {
    MarkCaption(field);
    const VARIANT& value = field.value.get();
    if (IsMissing(value)) return;
    const VARTYPE type = V_VT(&field.defaultValue.get());
    variant state;
    if (V_VT(&value) == type) {
        state = Copy(value);
    } else {
        variant source;
        bool expanded = false;
        if (V_VT(&value) == VT_BSTR) {
            bstr text;
            long unresolved = 0;
            if (expander_ && SUCCEEDED(expander_->ExpandText(V_BSTR(&value), 3, text.receive(), VARIANT_TRUE, 0,
                                                             &unresolved)) && unresolved == 0) {
                V_VT(source.ptr()) = VT_BSTR;
                V_BSTR(source.ptr()) = text.release();
                expanded = true;
            }
        } else {
            THROW_IF_FAILED(::VariantCopy(source.ptr(), const_cast<VARIANT*>(&value)));
            expanded = true;
        }
        if (!expanded || FAILED(::VariantChangeTypeEx(state.ptr(), source.ptr(), ::GetThreadLocale(), 0, type)))
            state = Copy(field.defaultValue.get());
    }
    const VARIANT& s = state.get();
    switch (field.kind) {
    case FieldKind::Radio:
        ::CheckRadioButton(window_, static_cast<int>(field.row.firstId),
                           static_cast<int>(field.row.firstId + field.row.count - 1),
                           static_cast<int>(field.row.firstId) + V_I4(&s));
        break;
    case FieldKind::Check:
        ::CheckDlgButton(window_, static_cast<int>(field.row.firstId), V_BOOL(&s) ? BST_CHECKED : BST_UNCHECKED);
        break;
    case FieldKind::List:
        ::SendMessageW(field.control(), CB_SETCURSEL, static_cast<WPARAM>(V_I4(&s)), 0);
        break;
    case FieldKind::Text:
        break;
    }
}

void PropertyPage::ReadControl(Field& field) {
    VARIANT& v = *field.value.ptr();
    switch (field.kind) {
    case FieldKind::Text:
        field.value = MakeText(field.ControlText());
        break;
    case FieldKind::Radio: {
        long checked = -1;
        for (size_t i = 0; i < field.controls.size(); ++i)
            if (::SendMessageW(field.controls[i], BM_GETCHECK, 0, 0) == BST_CHECKED) checked = static_cast<long>(i);
        if (checked < 0) {
            if (IsMissing(v)) field.value = Copy(field.defaultValue.get());
            break;
        }
        field.value.reset();
        V_VT(&v) = VT_I4;
        V_I4(&v) = checked;
        break;
    }
    case FieldKind::Check: {
        const bool checked = ::SendMessageW(field.control(), BM_GETCHECK, 0, 0) == BST_CHECKED;
        field.value.reset();
        V_VT(&v) = VT_BOOL;
        V_BOOL(&v) = checked ? VARIANT_TRUE : VARIANT_FALSE;
        break;
    }
    case FieldKind::List: {
        const LRESULT selected = ::SendMessageW(field.control(), CB_GETCURSEL, 0, 0);
        if (selected == CB_ERR) {
            if (IsMissing(v)) field.value = Copy(field.defaultValue.get());
            break;
        }
        field.value.reset();
        V_VT(&v) = VT_I4;
        V_I4(&v) = static_cast<LONG>(selected);
        break;
    }
    }
}

bool PropertyPage::Validate() {
    CloseOverrideEdit();
    for (const auto& pointer : fields_) {
        Field& field = *pointer;
        if (!field.IsTyped()) {
            ReadControl(field);
            if (!several_ && field.row.required && ::SysStringLen(V_BSTR(&field.value.get())) == 0)
                return Refuse(L"Field is required.", static_cast<int>(field.Id()));
        } else if (!field.HasOverride()) {
            ReadControl(field);
        }
    }
    return several_ ? true : PageRules();
}

void PropertyPage::Save(IBuildStep* step) {
    if (!step) throw comet::com_error(E_POINTER);
    com_ptr<IBuildStepWriter> writer;
    THROW_IF_HOST_FAILED(step, IBuildStep, step->QueryInterface(__uuidof(IBuildStepWriter), reinterpret_cast<void**>(writer.put())));
    for (size_t i = 0; i < fields_.size(); ++i) {
        Field& field = *fields_[i];
        if (field.element == 0) {
            WriteArray(writer.get(), i);
        } else if (field.element < 0 && (!several_ || field.changed)) {
            variant value = Copy(field.value.get());
            BeforeSave(field.row.property, *value.ptr());
            WriteValue(writer.get(), field, value.get());
        }
    }
    AfterSave(step);
}

void PropertyPage::WriteArray(IBuildStepWriter* writer, size_t first) {
    const FieldDescriptor& row = fields_[first]->row;
    size_t end = first;
    while (end < fields_.size() && &fields_[end]->row == &row) ++end;
    size_t count = 0;
    bool anyChanged = false;
    for (size_t i = first; i < end; ++i) {
        if (!fields_[i]->ControlText().empty()) count = i - first + 1;
        anyChanged = anyChanged || fields_[i]->changed;
    }
    if (several_ && !anyChanged) return;
    unique_safearray array(::SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(count)));
    if (!array) throw comet::com_error(E_OUTOFMEMORY);
    for (size_t i = 0; i < count; ++i) {
        const VARIANT& stored = fields_[first + i]->value.get();
        std::wstring text = V_VT(&stored) == VT_BSTR ? VariantToText(stored) : fields_[first + i]->ControlText();
        if (row.trim) text = Trimmed(text, row.trim);
        variant element = MakeText(text);
        LONG index = static_cast<LONG>(i);
        THROW_IF_FAILED(::SafeArrayPutElement(array.get(), &index, element.ptr()));
    }
    variant value;
    V_VT(value.ptr()) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(value.ptr()) = array.release();
    THROW_IF_HOST_FAILED(writer, IBuildStepWriter, writer->SetProperty(bstr(row.property).get(), value.get()));
}

void PropertyPage::WriteValue(IBuildStepWriter* writer, const Field& field, const VARIANT& value) {
    const bstr name(field.row.property);
    if (IsMissing(value)) return;
    if (EqualsEmptyDefault(field, value)) {
        variant previous;
        THROW_IF_HOST_FAILED(writer, IBuildStepWriter, writer->RemoveProperty(name.get(), previous.receive()));
    } else if (V_VT(&value) == VT_BSTR && field.row.trim) {
        THROW_IF_HOST_FAILED(writer, IBuildStepWriter, writer->SetProperty(name.get(), MakeText(Trimmed(VariantToText(value), field.row.trim)).get()));
    } else {
        THROW_IF_HOST_FAILED(writer, IBuildStepWriter, writer->SetProperty(name.get(), value));
    }
}

com_ptr<IActionField> PropertyPage::ActiveField() {
    Field* field = FieldOf(focused_);
    if (!field) return nullptr;
    for (const auto& pointer : fields_)
        if (pointer.get() == field) return MakeActionField(pointer);
    return nullptr;
}

void PropertyPage::AddListItems(int id, std::initializer_list<const wchar_t*> items) const {
    for (const wchar_t* item : items) ::SendDlgItemMessageW(window_, id, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
}

int PropertyPage::MessageBox(const std::wstring& text, UINT type) const {
    return ::MessageBoxW(window_, text.c_str(), kCaption, type);
}

bool PropertyPage::Refuse(const std::wstring& message, int controlId) const {
    MessageBox(message, MB_OK | MB_ICONEXCLAMATION);
    ::PostMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Item(controlId)), TRUE);
    return false;
}

Field* PropertyPage::FieldOf(HWND control) const noexcept {
    if (!control) return nullptr;
    auto found = controls_.find(control);
    if (found == controls_.end()) {
        // The edit inside an editable combo box stands for the combo box.
        const HWND parent = ::GetParent(control);
        if (parent && parent != window_) found = controls_.find(parent);
    }
    return found == controls_.end() ? nullptr : fields_[found->second].get();
}

INT_PTR CALLBACK PropertyPage::DialogProc(HWND window, UINT message, WPARAM w, LPARAM l) {
    if (message == WM_INITDIALOG) {
        ::SetWindowLongPtrW(window, DWLP_USER, l);
        reinterpret_cast<PropertyPage*>(l)->window_ = window;
        return FALSE;
    }
    auto* page = reinterpret_cast<PropertyPage*>(::GetWindowLongPtrW(window, DWLP_USER));
    if (!page || page->window_ != window) return FALSE;
    try {
        return page->HandleMessage(message, w, l);
    } catch (const std::exception&) {
        // Nothing above a window procedure can take an exception; the message is left unhandled.
        return FALSE;
    }
}

INT_PTR PropertyPage::HandleMessage(UINT message, WPARAM w, LPARAM l) {
    switch (message) {
    case WM_COMMAND:
        HandleCommand(LOWORD(w), HIWORD(w), reinterpret_cast<HWND>(l));
        return TRUE;
    case WM_NOTIFY: {
        const LRESULT result = HandleNotify(reinterpret_cast<NMHDR*>(l));
        ::SetWindowLongPtrW(window_, DWLP_MSGRESULT, result);
        return TRUE;
    }
    case WM_SIZE:
        ApplyLayout();
        return TRUE;
    case kConfirmOverrideRemoval:
        ConfirmOverrideRemoval(reinterpret_cast<HWND>(w));
        return TRUE;
    default:
        return FALSE;
    }
}

void PropertyPage::MarkChanged(Field& field) {
    field.changed = true;
    if (site_) THROW_IF_HOST_FAILED(site_.get(), IActionPageSite, site_->PageChanged());
    if (tooltip_) ::SendMessageW(tooltip_, TTM_UPDATE, 0, 0);
}

void PropertyPage::HandleCommand(WORD id, WORD code, HWND control) {
    // Notification codes overlap between classes: the sender's class says what a code means.
    enum class Event { None, Changed, Clicked, Focused } event = Event::None;
    const std::wstring name = ClassOf(control);
    if (SameText(name, L"Button"))
        event = code == BN_CLICKED ? Event::Clicked : code == BN_SETFOCUS ? Event::Focused : Event::None;
    else if (SameText(name, L"ComboBox"))
        event = code == CBN_SELCHANGE ? Event::Clicked : code == CBN_EDITCHANGE ? Event::Changed
              : code == CBN_SETFOCUS ? Event::Focused : Event::None;
    else
        event = code == EN_CHANGE ? Event::Changed : code == EN_SETFOCUS ? Event::Focused : Event::None;
    // A click closes an open override edit first, so that the control it re-enables is then subject to the
    // page's enabling rules like every other.
    if (event == Event::Clicked) CloseOverrideEdit();
    if (OnCommand(id, code, control)) return;
    if (control == overrideButton_ || control == overrideEdit_) return;
    Field* field = FieldOf(control);
    switch (event) {
    case Event::Changed:
        if (field && !loading_) MarkChanged(*field);
        break;
    case Event::Clicked:
        if (!field || loading_) break;
        if (field->IsTyped() && field->HasOverride())
            ::PostMessageW(window_, kConfirmOverrideRemoval, reinterpret_cast<WPARAM>(control), 0);
        else
            MarkChanged(*field);
        break;
    case Event::Focused:
        FocusChanged(control);
        break;
    case Event::None:
        break;
    }
}

LRESULT PropertyPage::HandleNotify(NMHDR* header) {
    if (!header) return 0;
    if (header->hwndFrom == tooltip_ && header->code == TTN_GETDISPINFOW) {
        FillTip(reinterpret_cast<NMTTDISPINFOW*>(header));
        return 0;
    }
    Field* field = FieldOf(header->hwndFrom);
    if (!field) return 0;
    if (header->code == NM_SETFOCUS) {
        FocusChanged(header->hwndFrom);
    } else if (header->code == kEditorChanged && field->editorControl) {
        if (!loading_) MarkChanged(*field);
    } else if (header->code == kEditorProperties && field->editorControl) {
        EditorSettingsChanged(header->hwndFrom);
    }
    return 0;
}

void PropertyPage::EditorSettingsChanged(HWND control) {
    for (const auto& wrapper : wrappers_)
        if (wrapper->control() == control) wrapper->SaveEditorSettings();
}

void PropertyPage::FocusChanged(HWND control) {
    if (control == overrideEdit_ || control == overrideButton_) return;
    focused_ = control;
    const Field* field = FieldOf(control);
    long flags = 0;
    if (field) {
        if (!field->IsTyped() || field->offersOverrides) flags |= 1;
        if (field->row.browse != kBrowseNone) flags |= 2;
    }
    if (site_) THROW_IF_HOST_FAILED(site_.get(), IActionPageSite, site_->FieldFocused(flags));
}

void PropertyPage::ConfirmOverrideRemoval(HWND control) {
    Field* field = FieldOf(control);
    if (!field || !field->HasOverride() || prompting_) return;
    prompting_ = true;
    const int answer = MessageBox(L"A string override value for this field has been entered. OK to remove the "
                                  L"override value?", MB_YESNO | MB_ICONQUESTION);
    prompting_ = false;
    if (answer == IDYES) {
        SetMissing(field->value);
        MarkCaption(*field);
        MarkChanged(*field);
    } else {
        ShowTyped(*field);   // the click is undone: the control shows the override again
    }
}

LRESULT CALLBACK PropertyPage::OverrideEditProc(HWND window, UINT message, WPARAM w, LPARAM l, UINT_PTR,
                                                DWORD_PTR data) {
    auto* page = reinterpret_cast<PropertyPage*>(data);
    if (message == WM_GETDLGCODE && w == VK_RETURN) return DLGC_WANTALLKEYS;
    if (message == WM_KEYDOWN && w == VK_RETURN) {
        try {
            page->CloseOverrideEdit();
        } catch (const std::exception&) {
        }
        return 0;
    }
    if (message == WM_CHAR && w == L'\r') return 0;
    if (message == WM_NCDESTROY) ::RemoveWindowSubclass(window, OverrideEditProc, 1);
    return ::DefSubclassProc(window, message, w, l);
}

void PropertyPage::OpenOverrideEdit(Field& field, HWND control) {
    if (!field.IsTyped() || !field.offersOverrides) return;
    if (overrideField_ == &field && overrideControl_ == control) return;
    CloseOverrideEdit();
    if (!overrideEdit_) {
        overrideEdit_ = ::CreateWindowExW(0, L"EDIT", L"", WS_CHILD | WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL, 0, 0,
                                          0, 0, window_, reinterpret_cast<HMENU>(kOverrideEditId), ResourceModule(),
                                          nullptr);
        overrideButton_ = ::CreateWindowExW(0, L"BUTTON", L"O&K", WS_CHILD | WS_TABSTOP | BS_PUSHBUTTON, 0, 0, 0, 0,
                                            window_, reinterpret_cast<HMENU>(kOverrideButtonId), ResourceModule(),
                                            nullptr);
        if (!overrideEdit_ || !overrideButton_) ThrowLastError();
        ::SetWindowSubclass(overrideEdit_, OverrideEditProc, 1, reinterpret_cast<DWORD_PTR>(this));
    }
    const LPARAM font = ::SendMessageW(control, WM_GETFONT, 0, 0);
    ::SendMessageW(overrideEdit_, WM_SETFONT, static_cast<WPARAM>(font), FALSE);
    ::SendMessageW(overrideButton_, WM_SETFONT, static_cast<WPARAM>(font), FALSE);
    RECT rect{};
    ::GetWindowRect(control, &rect);
    ::MapWindowPoints(nullptr, window_, reinterpret_cast<POINT*>(&rect), 2);
    if (SameText(ClassOf(control), L"ComboBox")) {
        COMBOBOXINFO info{sizeof info};
        if (::GetComboBoxInfo(control, &info)) rect.bottom = rect.top + (info.rcItem.bottom + info.rcItem.top);
    }
    const int height = std::max<int>(rect.bottom - rect.top, 12);
    RECT unit{0, 0, 24, 0};   // the button: 24 dialog units wide, at the control's right end
    ::MapDialogRect(window_, &unit);
    const int buttonWidth = std::min<int>(unit.right, (rect.right - rect.left) / 2);
    ::SetWindowPos(overrideEdit_, HWND_TOP, rect.left, rect.top, rect.right - rect.left - buttonWidth, height,
                   SWP_SHOWWINDOW);
    ::SetWindowPos(overrideButton_, HWND_TOP, rect.right - buttonWidth, rect.top, buttonWidth, height, SWP_SHOWWINDOW);
    overrideField_ = &field;
    overrideControl_ = control;
    ::EnableWindow(control, FALSE);
    const std::wstring text = field.HasOverride() ? VariantToText(field.value.get()) : std::wstring();
    ::SetWindowTextW(overrideEdit_, text.c_str());
    ::SetFocus(overrideEdit_);
}

void PropertyPage::CloseOverrideEdit() {
    if (!overrideField_) return;
    Field& field = *std::exchange(overrideField_, nullptr);
    const HWND control = std::exchange(overrideControl_, nullptr);
    const std::wstring text = WindowText(overrideEdit_);
    const std::wstring before = field.HasOverride() ? VariantToText(field.value.get()) : std::wstring();
    if (text.empty()) SetMissing(field.value); else field.value = MakeText(text);
    ::ShowWindow(overrideEdit_, SW_HIDE);
    ::ShowWindow(overrideButton_, SW_HIDE);
    ShowTyped(field);
    ::EnableWindow(control, TRUE);
    ::SetFocus(control);
    if (text != before) MarkChanged(field);
}

std::wstring PropertyPage::FieldText(const Field& field) const {
    if (!field.IsTyped()) return field.ControlText();
    if (overrideField_ == &field) return WindowText(overrideEdit_);
    return field.HasOverride() ? VariantToText(field.value.get()) : std::wstring();
}

void PropertyPage::InsertText(Field& field, const std::wstring& text, bool keep) {
    if (field.IsTyped()) {
        OpenOverrideEdit(field, field.control());
        if (overrideField_ != &field) return;
        if (!keep && field.row.insertion == 1) ::SetWindowTextW(overrideEdit_, L"");
        ::SendMessageW(overrideEdit_, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
        ::PostMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(overrideEdit_), TRUE);
        return;
    }
    if (field.editorControl) {
        if (!keep && field.row.insertion == 1) ::SendMessageW(field.control(), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L""));
        InsertEditorText(field.control(), text);
        return;
    }
    const HWND edit = field.TextWindow();
    if (!keep && field.row.insertion == 1) ::SetWindowTextW(field.control(), L"");
    ::SendMessageW(edit, EM_REPLACESEL, TRUE, reinterpret_cast<LPARAM>(text.c_str()));
    ::PostMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field.control()), TRUE);
}

std::wstring PropertyPage::ExpandForDisplay(const std::wstring& text) const {
    if (!expander_) return text;
    bstr expanded;
    THROW_IF_HOST_FAILED(expander_.get(), ITextExpander, expander_->ExpandForDisplay(bstr(text).get(), expanded.receive()));
    return expanded.str();
}

void PropertyPage::CopyExpandedToClipboard(const Field& field) {
    const std::wstring text = ExpandForDisplay(field.ControlText());
    const Clipboard clipboard(window_);
    if (!clipboard.open()) ThrowLastError();
    ::EmptyClipboard();
    unique_hglobal memory(::GlobalAlloc(GMEM_MOVEABLE, (text.size() + 1) * sizeof(wchar_t)));
    if (!memory) throw comet::com_error(E_OUTOFMEMORY);
    void* target = ::GlobalLock(memory.get());
    if (!target) ThrowLastError();
    std::copy(text.c_str(), text.c_str() + text.size() + 1, static_cast<wchar_t*>(target));
    ::GlobalUnlock(memory.get());
    if (!::SetClipboardData(CF_UNICODETEXT, memory.get())) ThrowLastError();
    memory.release();   // the clipboard owns it now
}

void PropertyPage::FillTip(NMTTDISPINFOW* info) {
    info->lpszText = const_cast<wchar_t*>(L"");
    info->szText[0] = L'\0';
    const HWND control = reinterpret_cast<HWND>(info->hdr.idFrom);
    Field* field = FieldOf(control);
    if (!field) return;
    std::wstring text;
    if (overrideField_ == field)
        text = WindowText(overrideEdit_);
    else if (field->IsTyped())
        text = field->HasOverride() ? VariantToText(field->value.get()) : std::wstring();
    else
        text = field->ControlText();
    if (text.empty()) return;
    RECT rect{};
    ::GetWindowRect(control, &rect);
    const int maxWidth = std::max<int>(rect.right - rect.left, 1);
    ::SendMessageW(tooltip_, TTM_SETMAXTIPWIDTH, 0, maxWidth);
    std::wstring expanded = ExpandForDisplay(text);
    if (expanded == text) return;
    // A long tip is cut to what fits on the screen.
    RECT work{};
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    const size_t maxLines = static_cast<size_t>(std::max<LONG>((work.bottom - work.top) / 30, 1));
    int averageWidth = 8;
    if (const HDC dc = ::GetDC(tooltip_)) {
        const HGDIOBJ font = reinterpret_cast<HGDIOBJ>(::SendMessageW(tooltip_, WM_GETFONT, 0, 0));
        const HGDIOBJ old = font ? ::SelectObject(dc, font) : nullptr;
        TEXTMETRICW metrics{};
        if (::GetTextMetricsW(dc, &metrics) && metrics.tmAveCharWidth > 0) averageWidth = metrics.tmAveCharWidth;
        if (old) ::SelectObject(dc, old);
        ::ReleaseDC(tooltip_, dc);
    }
    const size_t maxCharacters = maxLines * static_cast<size_t>(std::max(maxWidth / averageWidth, 1));
    size_t lines = 1, cut = std::wstring::npos;
    for (size_t i = 0; i < expanded.size(); ++i) {
        if (expanded[i] == L'\n' && ++lines > maxLines) {
            cut = i;
            break;
        }
    }
    cut = std::min(cut, maxCharacters);
    if (cut < expanded.size()) expanded = expanded.substr(0, cut) + L"...";
    tipText_ = std::move(expanded);
    info->lpszText = tipText_.data();
}

void PropertyPage::ApplyLayout() {
    if (!hasReference_) return;
    RECT client{};
    ::GetClientRect(window_, &client);
    const LONG dx = client.right - reference_.cx, dy = client.bottom - reference_.cy;
    for (const LayoutItem& item : layout_) {
        RECT r = item.original;
        if (item.flags & kGrowWidth) r.right += dx;
        if (item.flags & kMoveRight) { r.left += dx; r.right += dx; }
        if (item.flags & kGrowHeight) r.bottom += dy;
        if (item.flags & kMoveDown) { r.top += dy; r.bottom += dy; }
        ::SetWindowPos(Item(static_cast<int>(item.id)), nullptr, r.left, r.top, std::max<LONG>(r.right - r.left, 0),
                       std::max<LONG>(r.bottom - r.top, 0), SWP_NOZORDER | SWP_NOACTIVATE);
    }
    ::InvalidateRect(window_, nullptr, TRUE);
}

} // namespace tol
