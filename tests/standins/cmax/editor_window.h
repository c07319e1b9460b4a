// An editor control in a test: a hidden top-level parent that records the control's notifications, and helpers
// to call the control library by ordinal and to fake the keyboard.
#pragma once
#include "standins/cmax/codemax.h"
#include <initializer_list>
#include <string>
#include <vector>

namespace test {

HMODULE EditorLibrary();   // cmax20u.dll, loaded once

template <class Function>
Function EditorFunction(int ordinal) {
    return reinterpret_cast<Function>(::GetProcAddress(EditorLibrary(), MAKEINTRESOURCEA(ordinal)));
}

class EditorWindow {
public:
    EditorWindow();
    ~EditorWindow();
    EditorWindow(const EditorWindow&) = delete;
    EditorWindow& operator=(const EditorWindow&) = delete;

    HWND parent() const { return parent_; }
    HWND control() const { return control_; }
    LRESULT Send(UINT message, WPARAM w = 0, LPARAM l = 0) const { return ::SendMessageW(control_, message, w, l); }
    std::wstring Text() const;   // WM_GETTEXT
    void Select(int line1, int column1, int line2, int column2) const;
    // A key as the message loop delivers it: WM_KEYDOWN with these modifiers held, then its character if any.
    void Key(UINT key, std::initializer_list<BYTE> held = {}, wchar_t character = 0) const;
    void Type(const std::wstring& text) const;

    std::vector<UINT> notifications;   // the codes of the WM_NOTIFY messages from the control, in order
    HWND notifier = nullptr;           // the hwndFrom of the last one
    UINT_PTR notifierId = 0;           // and its idFrom
    void (*onNotify)(EditorWindow& window, UINT code) = nullptr;

private:
    static LRESULT CALLBACK ParentProc(HWND window, UINT message, WPARAM w, LPARAM l);
    HWND parent_ = nullptr;
    HWND control_ = nullptr;
};

constexpr int kEditorId = 7;

} // namespace test
