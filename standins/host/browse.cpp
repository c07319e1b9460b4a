#include "browse.h"
#include "frame/handles.h"
#include <commdlg.h>
#include <shlobj.h>

namespace host {
namespace {

constexpr DWORD kLongestPath = 32768;

} // namespace

std::wstring DialogFilter(std::wstring_view filter) {
    std::wstring pairs(filter);
    while (!pairs.empty() && pairs.back() == L'|') pairs.pop_back();
    if (pairs.empty()) pairs = L"All Files (*.*)|*.*";
    for (wchar_t& c : pairs)
        if (c == L'|') c = L'\0';
    return pairs + std::wstring(2, L'\0');
}

std::optional<std::wstring> BrowseForFile(HWND owner, std::wstring_view filter, const std::wstring& initial) {
    const std::wstring filters = DialogFilter(filter);
    // A text with references or wildcards is no file name to start from.
    std::wstring file = initial.find_first_of(L"%*?\"") == std::wstring::npos ? initial : std::wstring();
    file.resize(kLongestPath, L'\0');
    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = owner;
    dialog.lpstrFilter = filters.c_str();
    dialog.nFilterIndex = 1;
    dialog.lpstrFile = file.data();
    dialog.nMaxFile = kLongestPath;
    dialog.Flags = OFN_EXPLORER | OFN_ENABLESIZING | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST;
    if (!::GetOpenFileNameW(&dialog)) return std::nullopt;
    file.resize(file.find(L'\0'));
    return file;
}

std::optional<std::wstring> BrowseForFolder(HWND owner) {
    BROWSEINFOW browse{};
    browse.hwndOwner = owner;
    browse.ulFlags = BIF_RETURNONLYFSDIRS | BIF_NEWDIALOGSTYLE;
    const tol::unique_co_task_memory chosen(::SHBrowseForFolderW(&browse));
    if (!chosen) return std::nullopt;
    std::wstring path(kLongestPath, L'\0');
    if (!::SHGetPathFromIDListEx(static_cast<PCIDLIST_ABSOLUTE>(chosen.get()), path.data(), kLongestPath, GPFIDL_DEFAULT)) return std::nullopt;
    path.resize(path.find(L'\0'));
    return path;
}

} // namespace host
