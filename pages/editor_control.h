// The script editor control ("CodeMax" window class of cmax20u.dll) as the page engine uses it: the library is
// loaded on first use, its functions are called by ordinal, its settings live under the user's editor key.
#pragma once
#include "frame/handles.h"
#include <string>

namespace tol {

// Below HKEY_CURRENT_USER.
inline constexpr wchar_t kEditorSettingsKey[] = L"Software\\Tolvane\\Velmora\\Editor";

// Loads the control library, which registers the "CodeMax" window class; a dialog that holds such a control can
// be created only afterwards. Throws comet::com_error when the library cannot be loaded.
void LoadEditorControlLibrary();

// Registers "JScript" and "VBScript" with the control library. Throws comet::com_error (also when the library
// cannot be loaded).
void RegisterScriptLanguages();

// Setup of a control that a field wraps: languages, setup messages, key bindings, the font and the user's
// stored settings. Answers the font, which must live as long as the wrapper. Throws comet::com_error; a stored
// DWORD setting of another type fails with 0x8007070C.
unique_gdi_object SetUpEditorControl(HWND control);

// Applies the stored settings, when the editor key exists. Answers the font made from the stored "Font" and set
// on the control (the caller keeps it as long as the control uses it), or an empty object.
unique_gdi_object LoadEditorSettings(HWND control);

// Writes the control's settings to the user's editor key (on the properties-changed notification).
void SaveEditorSettings(HWND control);

// Ctrl+PageDown/PageUp and Escape in the control (a WM_KEYDOWN); answers whether the key was consumed.
bool HandleEditorKey(HWND control, UINT virtualKey);

std::wstring GetEditorText(HWND control);
// Replaces the selection with the text and posts the focus move to the control.
void InsertEditorText(HWND control, const std::wstring& text);

} // namespace tol
