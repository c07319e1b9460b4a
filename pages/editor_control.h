// The script editor control ("CodeMax" window class of cmax20u.dll) as the page engine uses it.
// The engine needs exactly these; the implementation may add more.
#pragma once
#include "frame/handles.h"
#include <string>

namespace tol {

// Setup of a control that a field wraps: languages, setup messages, key bindings, the font and the user's
// stored settings. Answers the font, which must live as long as the wrapper. Throws comet::com_error.
unique_gdi_object SetUpEditorControl(HWND control);

// Writes the control's settings to the user's editor key (on the properties-changed notification).
void SaveEditorSettings(HWND control);

// Ctrl+PageDown/PageUp and Escape in the control; answers whether the key was consumed.
bool HandleEditorKey(HWND control, UINT virtualKey);

std::wstring GetEditorText(HWND control);
// Replaces the selection with the text and posts the focus move to the control.
void InsertEditorText(HWND control, const std::wstring& text);

} // namespace tol
