#include "field.h"
#include "page.h"
#include "editor_control.h"
#include "frame/barrier.h"
#include "frame/bstr.h"
#include "frame/messages.h"
#include <commctrl.h>
#include <new>

namespace tol {

Field::Field(PropertyPage& owner, const FieldDescriptor& descriptor, FieldKind fieldKind, int index,
             std::vector<HWND> windows)
    : page(owner), row(descriptor), kind(fieldKind), element(index), controls(std::move(windows)) {
    VARIANT& d = *defaultValue.ptr();
    switch (kind) {
    case FieldKind::Text:
        V_VT(&d) = VT_BSTR;
        V_BSTR(&d) = bstr(row.textDefault ? row.textDefault : L"").release();
        break;
    case FieldKind::Check:
        V_VT(&d) = VT_BOOL;
        V_BOOL(&d) = row.intDefault ? VARIANT_TRUE : VARIANT_FALSE;
        break;
    case FieldKind::Radio:
    case FieldKind::List:
        V_VT(&d) = VT_I4;
        V_I4(&d) = row.intDefault;
        break;
    }
    SetMissing(value);
}

HWND Field::TextWindow() const noexcept {
    COMBOBOXINFO info{sizeof info};
    if (kind == FieldKind::Text && ::GetComboBoxInfo(control(), &info) && info.hwndItem) return info.hwndItem;
    return control();
}

std::wstring Field::ControlText() const {
    return editorControl ? GetEditorText(control()) : WindowText(control());
}

void SetMissing(variant& value) noexcept {
    VARIANT& v = *value.receive();
    V_VT(&v) = VT_ERROR;
    V_ERROR(&v) = DISP_E_PARAMNOTFOUND;
}

bool IsMissing(const VARIANT& value) noexcept {
    return V_VT(&value) == VT_ERROR && V_ERROR(&value) == DISP_E_PARAMNOTFOUND;
}

ControlWrapper::ControlWrapper(PropertyPage& page, Field& field, HWND control, Role role)
    : page_(page), field_(field), control_(control), role_(role) {
    if (role_ == Role::Editor) editorFont_ = SetUpEditorControl(control_);
    ::SetWindowSubclass(control_, SubclassProc, 1, reinterpret_cast<DWORD_PTR>(this));
    COMBOBOXINFO info{sizeof info};
    if (role_ == Role::Text && ::GetComboBoxInfo(control_, &info) && info.hwndItem) {
        inner_ = info.hwndItem;
        ::SetWindowSubclass(inner_, SubclassProc, 1, reinterpret_cast<DWORD_PTR>(this));
    }
}

ControlWrapper::~ControlWrapper() {
    if (inner_ && ::IsWindow(inner_)) ::RemoveWindowSubclass(inner_, SubclassProc, 1);
    if (::IsWindow(control_)) ::RemoveWindowSubclass(control_, SubclassProc, 1);
}

void ControlWrapper::SaveEditorSettings() const {
    if (role_ == Role::Editor) tol::SaveEditorSettings(control_);
}

LRESULT CALLBACK ControlWrapper::SubclassProc(HWND window, UINT message, WPARAM w, LPARAM l, UINT_PTR,
                                              DWORD_PTR data) {
    auto* self = reinterpret_cast<ControlWrapper*>(data);
    bool handled = false;
    LRESULT result = 0;
    try {
        result = self->Handle(window, message, w, l, handled);
    } catch (const std::exception&) {
        // A window procedure has no caller to report to; the key or message is simply not acted on.
        handled = false;
    }
    return handled ? result : ::DefSubclassProc(window, message, w, l);
}

LRESULT ControlWrapper::Handle(HWND window, UINT message, WPARAM w, LPARAM l, bool& handled) {
    if (message >= WM_MOUSEFIRST && message <= WM_MOUSELAST && page_.tooltip()) {
        MSG relayed{control_, message, w, l, static_cast<DWORD>(::GetMessageTime()), {}};
        ::SendMessageW(page_.tooltip(), TTM_RELAYEVENT, 0, reinterpret_cast<LPARAM>(&relayed));
        return 0;
    }
    const bool ctrl = ::GetKeyState(VK_CONTROL) < 0;
    switch (message) {
    case WM_KEYDOWN:
        if (role_ == Role::Button && w == VK_F2) {
            page_.OpenOverrideEdit(field_, control_);
            handled = true;
        } else if (role_ != Role::Button && ctrl && w == 'M') {
            page_.CopyExpandedToClipboard(field_);
            swallowReturn_ = true;
            handled = true;
        } else if (role_ == Role::Editor) {
            handled = HandleEditorKey(control_, static_cast<UINT>(w));
        }
        return 0;
    case WM_CHAR:
        // Ctrl+M also arrives as a carriage return: the copy produces no character.
        if (swallowReturn_ && w == L'\r') {
            swallowReturn_ = false;
            handled = true;
        }
        return 0;
    case WM_NCDESTROY:
        ::RemoveWindowSubclass(window, SubclassProc, 1);
        return 0;
    default:
        return 0;
    }
}

namespace {

// The field that the host's insert and browse commands work on.
class PageField final : public IActionField {
public:
    explicit PageField(std::weak_ptr<Field> field) noexcept : field_(std::move(field)) {}

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        if (iid == __uuidof(IActionField) || iid == IID_IUnknown) {
            *object = static_cast<IActionField*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(::InterlockedIncrement(&references_)); }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG count = ::InterlockedDecrement(&references_);
        if (count == 0) delete this;
        return static_cast<ULONG>(count);
    }

    STDMETHODIMP GetEditWindow(HWND* window) override {
        if (!window) return E_POINTER;
        *window = nullptr;
        return WithField([&](Field& field) {
            if (field.IsTyped()) {
                field.page.OpenOverrideEdit(field, field.control());
                *window = field.page.overrideEdit();
            } else {
                *window = field.TextWindow();
            }
        });
    }
    STDMETHODIMP GetBrowseKind(long* kind) override {
        if (!kind) return E_POINTER;
        *kind = 0;
        return WithField([&](Field& field) { *kind = static_cast<long>(field.row.browse); });
    }
    STDMETHODIMP GetBrowseFilter(BSTR* filter) override {
        if (!filter) return E_POINTER;
        *filter = nullptr;
        return WithField([&](Field& field) {
            *filter = bstr(field.row.filterId ? LoadResourceText(field.row.filterId) : std::wstring()).release();
        });
    }
    STDMETHODIMP GetFieldText(BSTR* text) override {
        if (!text) return E_POINTER;
        *text = nullptr;
        return WithField([&](Field& field) { *text = bstr(field.page.FieldText(field)).release(); });
    }
    STDMETHODIMP InsertText(BSTR text, VARIANT_BOOL keep) override {
        return WithField([&](Field& field) {
            field.page.InsertText(field, text ? std::wstring(text, ::SysStringLen(text)) : std::wstring(), keep != 0);
        });
    }

private:
    template <class Action>
    HRESULT WithField(Action&& action) noexcept {
        return ExceptionBarrier([&] {
            const std::shared_ptr<Field> field = field_.lock();
            if (!field) throw comet::com_error(E_UNEXPECTED);
            action(*field);
            return S_OK;
        });
    }

    std::weak_ptr<Field> field_;
    volatile LONG references_ = 0;
};

} // namespace

com_ptr<IActionField> MakeActionField(const std::shared_ptr<Field>& field) {
    com_ptr<IActionField> result(new PageField(field));
    return result;
}

} // namespace tol
