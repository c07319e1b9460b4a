// Pictures of a window as a person sees it, frame included, saved as PNG files.
#pragma once
#include <windows.h>
#include <string>

namespace host {

// Copies what the window shows on the screen (it must be visible and painted) into a PNG file; failures throw.
void SaveWindowPicture(HWND window, const std::wstring& path);

} // namespace host
