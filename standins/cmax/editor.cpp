#include "editor.h"
#include "clipboard.h"
#include "find_dialog.h"
#include <commctrl.h>
#include "shared.h"
#include <algorithm>
#include <new>

namespace cmax {
namespace {

LRESULT CALLBACK EditorProc(HWND window, UINT message, WPARAM w, LPARAM l) {
    auto* editor = reinterpret_cast<Editor*>(::GetWindowLongPtrW(window, 0));
    if (message == WM_NCCREATE) {
        try {
            editor = new Editor(window);
        } catch (const std::bad_alloc&) {
            return FALSE;
        }
        ::SetWindowLongPtrW(window, 0, reinterpret_cast<LONG_PTR>(editor));
    }
    if (!editor) return ::DefWindowProcW(window, message, w, l);
    LRESULT result = 0;
    try {
        result = editor->Handle(message, w, l);
    } catch (const std::exception&) {
        // Out of memory: the message fails, the text stays as it was before the failed step.
        result = message == WM_NCCREATE ? FALSE : 0;
    }
    if (message == WM_NCDESTROY) {
        ::SetWindowLongPtrW(window, 0, 0);
        delete editor;
    }
    return result;
}

} // namespace

bool RegisterEditorClass(HINSTANCE instance) noexcept {
    WNDCLASSEXW type{sizeof type};
    type.style = CS_GLOBALCLASS | CS_DBLCLKS;
    type.lpfnWndProc = EditorProc;
    type.cbWndExtra = sizeof(Editor*);
    type.hInstance = instance;
    type.hCursor = ::LoadCursorW(nullptr, IDC_IBEAM);
    type.lpszClassName = CODEMAX_CLASS;
    return ::RegisterClassExW(&type) != 0;
}

LRESULT Editor::Handle(UINT message, WPARAM w, LPARAM l) {
    switch (message) {
    case WM_CREATE:
        Create(*reinterpret_cast<const CREATESTRUCTW*>(l));
        return 0;
    case WM_PAINT: {
        PAINTSTRUCT paint;
        if (HDC dc = ::BeginPaint(window_, &paint)) {
            Paint(dc);
            ::EndPaint(window_, &paint);
        }
        return 0;
    }
    case WM_ERASEBKGND:
        return 1;
    case WM_SIZE:
        UpdateScrollBars();
        return 0;
    case WM_SETFONT:
        font_ = reinterpret_cast<HFONT>(w);
        for (auto& styled : styled_) styled.reset();
        UpdateMetrics();
        if (LOWORD(l)) ::InvalidateRect(window_, nullptr, FALSE);
        return 0;
    case WM_GETFONT:
        return reinterpret_cast<LRESULT>(font_);
    case WM_SETTEXT:
        SetText(l ? reinterpret_cast<LPCWSTR>(l) : L"", true);
        return TRUE;
    case WM_GETTEXTLENGTH:
        return static_cast<LRESULT>(text_.Length({}, text_.End()));
    case WM_GETTEXT:
        return CopyText(true, reinterpret_cast<wchar_t*>(l), w);
    case WM_GETDLGCODE:
        return DLGC_WANTALLKEYS | DLGC_WANTARROWS | DLGC_WANTCHARS | DLGC_WANTTAB;
    case WM_SETFOCUS:
        ::CreateCaret(window_, nullptr, 2, lineHeight_);
        PlaceCaret();
        ::ShowCaret(window_);
        ::InvalidateRect(window_, nullptr, FALSE);
        Notify(static_cast<UINT>(NM_SETFOCUS));   // the dialog learns which field has the focus
        return 0;
    case WM_KILLFOCUS:
        ::DestroyCaret();
        chord_.reset();
        ::InvalidateRect(window_, nullptr, FALSE);
        Notify(static_cast<UINT>(NM_KILLFOCUS));
        return 0;
    case WM_KEYDOWN:
    case WM_SYSKEYDOWN:
        if (OnKeyDown(static_cast<UINT>(w))) return 0;
        break;
    case WM_CHAR:
        OnChar(static_cast<wchar_t>(w));
        return 0;
    case WM_LBUTTONDOWN:
    case WM_LBUTTONDBLCLK:
    case WM_LBUTTONUP:
    case WM_MOUSEMOVE:
    case WM_MOUSEWHEEL:
        OnMouse(message, w, l);
        return 0;
    case WM_CAPTURECHANGED:
        selecting_ = false;
        return 0;
    case WM_VSCROLL:
    case WM_HSCROLL:
        OnScroll(message == WM_VSCROLL ? SB_VERT : SB_HORZ, LOWORD(w));
        return 0;
    default:
        return HandleControlMessage(message, w, l);
    }
    return ::DefWindowProcW(window_, message, w, l);
}

// The messages of codemax.h.
LRESULT Editor::HandleControlMessage(UINT message, WPARAM w, LPARAM l) {
    switch (message) {
    case CMM_SETTEXTSCOPE:
        scopeAll_ = w != CM_SCOPE_SELECTION;
        return CME_SUCCESS;
    case CMM_GETTEXTLENGTH:
        return static_cast<LRESULT>(scopeAll_ ? text_.Length({}, text_.End()) : SelectedText().size());
    case CMM_GETTEXT:
        return CopyText(scopeAll_, reinterpret_cast<wchar_t*>(l), w);
    case CMM_REPLACESEL:
        ReplaceSelection(l ? reinterpret_cast<LPCWSTR>(l) : L"");
        return CME_SUCCESS;
    case CMM_SETLANGUAGE: {
        const std::wstring name = l ? reinterpret_cast<LPCWSTR>(l) : L"";
        if (!name.empty() && !FindLanguage(name)) return CME_NOTFOUND;
        language_ = name;
        ::InvalidateRect(window_, nullptr, FALSE);
        return CME_SUCCESS;
    }
    case CMM_GETLANGUAGE:
        if (l && w > 0) {
            const size_t count = std::min<size_t>(language_.size(), w - 1);
            std::copy_n(language_.data(), count, reinterpret_cast<wchar_t*>(l));
            reinterpret_cast<wchar_t*>(l)[count] = L'\0';
        }
        return static_cast<LRESULT>(language_.size());
    case CMM_SETSEL: {
        if (!l) return CME_BADARGUMENT;
        const auto& range = *reinterpret_cast<const CM_RANGE*>(l);
        Select(text_.Clamp({range.startLine, range.startColumn}), text_.Clamp({range.endLine, range.endColumn}));
        if (w) EnsureCaretVisible();
        return CME_SUCCESS;
    }
    case CMM_GETSEL:
        if (!l) return CME_BADARGUMENT;
        *reinterpret_cast<CM_RANGE*>(l) = {anchor_.line, anchor_.column, caret_.line, caret_.column};
        return CME_SUCCESS;
    case CMM_EXECUTECMD:
        return w <= 0xFFFF && Execute(static_cast<WORD>(w)) ? CME_SUCCESS : CME_BADARGUMENT;
    case CMM_PROPSCHANGED:
        Notify(CMN_PROPSCHANGE);
        return CME_SUCCESS;
    case CMM_GETLINECOUNT:
        return text_.LineCount();
    case CMM_RESETPROPS:
        settings_ = Settings();
        SettingsChanged();
        return CME_SUCCESS;
    default:
        break;
    }
    bool changed = false;
    if (const auto answer = HandleSettingMessage(settings_, message, w, l, changed)) {
        if (changed) SettingsChanged();
        return *answer;
    }
    return ::DefWindowProcW(window_, message, w, l);
}

void Editor::Create(const CREATESTRUCTW& create) {
    UpdateMetrics();
    // A dialog template may give an ordinal (0xFFFF, number) where a text would be: that is no text.
    if (create.lpszName && !IS_INTRESOURCE(create.lpszName) && create.lpszName[0] != 0xFFFF)
        SetText(create.lpszName, false);
    UpdateScrollBars();
}

void Editor::SettingsChanged() {
    UpdateMetrics();
    ::InvalidateRect(window_, nullptr, FALSE);
}

void Editor::Notify(UINT code) {
    NMHDR header{window_, static_cast<UINT_PTR>(::GetDlgCtrlID(window_)), code};
    if (HWND parent = ::GetParent(window_))
        ::SendMessageW(parent, WM_NOTIFY, header.idFrom, reinterpret_cast<LPARAM>(&header));
}

// Changes the text and what depends on it, no more: no undo record, no notification.
Position Editor::Apply(Position a, Position b, std::wstring_view text) {
    const Position end = text_.Replace(a, b, text);
    TextChanged(a.line);
    return end;
}

void Editor::Replace(Position a, Position b, std::wstring_view text, bool typing) {
    if (b < a) std::swap(a, b);
    if (a == b && text.empty()) return;
    Edit edit{a, text_.Text(a, b), {}, typing};
    const Position end = Apply(a, b, text);
    edit.inserted = text_.Text(a, end);
    Edit* last = undo_.empty() ? nullptr : &undo_.back();
    if (typing && last && last->typing && edit.removed.empty() && last->removed.empty() &&
        text_.Advance(last->start, last->inserted.size()) == a) {
        last->inserted += edit.inserted;
    } else {
        undo_.push_back(std::move(edit));
    }
    redo_.clear();
    Select(end, end);
    Notify(CMN_CHANGE);
}

void Editor::SetText(std::wstring_view text, bool notify) {
    Apply({}, text_.End(), text);
    undo_.clear();
    redo_.clear();
    topLine_ = leftColumn_ = 0;
    Select({}, {});
    if (notify) Notify(CMN_CHANGE);
}

void Editor::Undo(bool redo) {
    auto& from = redo ? redo_ : undo_;
    auto& to = redo ? undo_ : redo_;
    if (from.empty()) return;
    Edit edit = std::move(from.back());
    from.pop_back();
    std::swap(edit.removed, edit.inserted);   // the undone edit is the inverse replacement
    edit.typing = false;
    const Position end = Apply(edit.start, text_.Advance(edit.start, edit.removed.size()), edit.inserted);
    to.push_back(std::move(edit));
    Select(end, end);
    Notify(CMN_CHANGE);
}

std::wstring Editor::SelectedText() const {
    return anchor_ < caret_ ? text_.Text(anchor_, caret_) : text_.Text(caret_, anchor_);
}

LRESULT Editor::CopyText(bool all, wchar_t* buffer, WPARAM capacity) const {
    if (!buffer || capacity == 0) return 0;
    const std::wstring text = all ? text_.Text({}, text_.End()) : SelectedText();
    const size_t count = std::min<size_t>(text.size(), capacity - 1);
    std::copy_n(text.data(), count, buffer);
    buffer[count] = L'\0';
    return static_cast<LRESULT>(count);
}

bool Editor::Execute(WORD command) {
    switch (command) {
    case CMD_COPY:
        if (anchor_ != caret_) PutClipboardText(window_, SelectedText());
        return true;
    case CMD_CUT:
        if (anchor_ != caret_ && PutClipboardText(window_, SelectedText())) ReplaceSelection(L"");
        return true;
    case CMD_PASTE:
        if (const auto text = ClipboardText(window_)) ReplaceSelection(*text);
        return true;
    case CMD_UNDO:
    case CMD_REDO:
        Undo(command == CMD_REDO);
        return true;
    case CMD_SELECTALL:
        Select({}, text_.End());
        return true;
    case CMD_FINDREPLACE:
        FindAndReplace();
        return true;
    default:
        return false;
    }
}

// The dialog's find options are settings of the control: changing them is a change of its properties.
void Editor::FindAndReplace() {
    ReplaceRequest request{lastFind_, lastReplacement_, settings_.wholeWord != 0, settings_.caseSensitive != 0,
                           settings_.preserveCase != 0};
    if (anchor_ != caret_ && anchor_.line == caret_.line) request.find = SelectedText();
    if (!RunFindReplaceDialog(window_, request)) return;
    lastFind_ = request.find;
    lastReplacement_ = request.replacement;
    const Settings before = settings_;
    settings_.wholeWord = request.wholeWord;
    settings_.caseSensitive = request.caseSensitive;
    settings_.preserveCase = request.preserveCase;

    std::wstring text = text_.Text({}, text_.End());
    if (ReplaceAll(text, request) > 0) {
        Replace({}, text_.End(), text);
        Select({}, {});
    }
    if (before.wholeWord != settings_.wholeWord || before.caseSensitive != settings_.caseSensitive ||
        before.preserveCase != settings_.preserveCase)
        Notify(CMN_PROPSCHANGE);
}

} // namespace cmax
