// The editor's browse command: the system's file and folder pickers.
#pragma once
#include <windows.h>
#include <optional>
#include <string>
#include <string_view>

namespace host {

// "Text files|*.txt|All|*.*||" as the open-file dialog wants it: each "|" a NUL, ending in two NULs. An empty
// filter offers all files.
std::wstring DialogFilter(std::wstring_view filter);

// The chosen file, or nothing when the user cancels. initial: the field's text, the dialog's first choice.
std::optional<std::wstring> BrowseForFile(HWND owner, std::wstring_view filter, const std::wstring& initial);
std::optional<std::wstring> BrowseForFolder(HWND owner);

} // namespace host
