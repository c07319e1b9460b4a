#include "editor_window.h"

namespace test {

HMODULE EditorLibrary() {
    static const HMODULE library = ::LoadLibraryW(CODEMAX_LIBRARY);
    return library;
}

EditorWindow::EditorWindow() {
    static const ATOM parentClass = [] {
        WNDCLASSW type{};
        type.lpfnWndProc = ParentProc;
        type.lpszClassName = L"EditorTestParent";
        return ::RegisterClassW(&type);
    }();
    EditorLibrary();
    parent_ = ::CreateWindowExW(0, MAKEINTATOM(parentClass), L"", WS_OVERLAPPEDWINDOW, 0, 0, 500, 400, nullptr, nullptr,
                                nullptr, nullptr);
    ::SetWindowLongPtrW(parent_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    control_ = ::CreateWindowExW(0, CODEMAX_CLASS, L"", WS_CHILD | WS_VISIBLE | WS_TABSTOP, 0, 0, 400, 300, parent_,
                                 reinterpret_cast<HMENU>(kEditorId), nullptr, nullptr);
}

EditorWindow::~EditorWindow() {
    ::DestroyWindow(parent_);
    BYTE none[256] = {};
    ::SetKeyboardState(none);
}

LRESULT CALLBACK EditorWindow::ParentProc(HWND window, UINT message, WPARAM w, LPARAM l) {
    auto* self = reinterpret_cast<EditorWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_NOTIFY && self) {
        const auto* header = reinterpret_cast<const NMHDR*>(l);
        self->notifications.push_back(header->code);
        self->notifier = header->hwndFrom;
        self->notifierId = header->idFrom;
        if (self->onNotify) self->onNotify(*self, header->code);
        return 0;
    }
    return ::DefWindowProcW(window, message, w, l);
}

std::wstring EditorWindow::Text() const {
    std::wstring text(static_cast<size_t>(Send(WM_GETTEXTLENGTH)) + 1, L'\0');
    text.resize(static_cast<size_t>(Send(WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return text;
}

void EditorWindow::Select(int line1, int column1, int line2, int column2) const {
    const CM_RANGE range{line1, column1, line2, column2};
    Send(CMM_SETSEL, FALSE, reinterpret_cast<LPARAM>(&range));
}

void EditorWindow::Key(UINT key, std::initializer_list<BYTE> held, wchar_t character) const {
    BYTE state[256] = {};
    for (BYTE k : held) state[k] = 0x80;
    ::SetKeyboardState(state);
    if (character) ::PostMessageW(control_, WM_CHAR, character, 0);   // queued as TranslateMessage would
    Send(WM_KEYDOWN, key);
    MSG message;
    while (::PeekMessageW(&message, control_, WM_CHAR, WM_CHAR, PM_REMOVE)) ::DispatchMessageW(&message);
    BYTE none[256] = {};
    ::SetKeyboardState(none);
}

void EditorWindow::Type(const std::wstring& text) const {
    for (wchar_t c : text) Send(WM_CHAR, c);
}

} // namespace test
