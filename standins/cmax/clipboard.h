// Text on the clipboard.
#pragma once
#include <windows.h>
#include <optional>
#include <string>

namespace cmax {

bool PutClipboardText(HWND owner, const std::wstring& text);
std::optional<std::wstring> ClipboardText(HWND owner);

} // namespace cmax
