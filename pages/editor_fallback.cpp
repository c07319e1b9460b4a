// TEMPORARY lead stub: delete this file and its CMakeLists line once pages/editor_control.cpp exists.
#include "editor_control.h"
namespace tol {
unique_gdi_object SetUpEditorControl(HWND) { return unique_gdi_object(); }
void SaveEditorSettings(HWND) {}
bool HandleEditorKey(HWND, UINT) { return false; }
std::wstring GetEditorText(HWND) { return {}; }
void InsertEditorText(HWND, const std::wstring&) {}
}
