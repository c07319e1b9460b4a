// The item lines of Copy Files: a 22-character prefix, then the item's path relative to its root.
#pragma once
#include "copyrun.h"
#include <string>
#include <string_view>

namespace tol {

namespace LinePrefix {
constexpr wchar_t kNewFolder[] = L"      New Folder:     ";
constexpr wchar_t kSame[] = L"          same:       ";
constexpr wchar_t kCopying[] = L"         Copying:     ";
constexpr wchar_t kDifferent[] = L"        Different:    ";
constexpr wchar_t kNewFile[] = L"        New File:     ";
constexpr wchar_t kExtraFile[] = L"    *EXTRA File:      ";
constexpr wchar_t kExtraFolder[] = L"  *EXTRA Folder:      ";
} // namespace LinePrefix

// The path after the root (the whole path when it does not start with the root).
std::wstring_view RelativeTo(std::wstring_view path, const std::wstring& root) noexcept;

// Logs prefix + the path after the root, then the tail (an error text for purge lines).
void LogItem(const CopyFilesRun& run, const wchar_t* prefix, std::wstring_view path, const std::wstring& root,
             std::wstring_view tail = {});

} // namespace tol
