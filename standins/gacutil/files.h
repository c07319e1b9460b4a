// The file operations of the store, on paths of any length: every path handed to the system is a full path
// behind the \\?\ prefix. Failures throw failure with the system's text.
#pragma once
#include <string>
#include <vector>

namespace gac {

// The full path of path, relative to the current folder; "." and ".." resolved, "/" turned into "\".
std::wstring FullPath(const std::wstring& path);

bool IsFile(const std::wstring& fullPath) noexcept;
bool IsFolder(const std::wstring& fullPath) noexcept;

// True when both files hold the same bytes.
bool SameContents(const std::wstring& first, const std::wstring& second);

// Creates the folder and every missing folder above it. The path has no trailing separator.
void CreateFolderPath(const std::wstring& fullPath);

// Removes the folder with everything in it; read-only files are no obstacle.
void RemoveFolderTree(const std::wstring& fullPath);

void CopyOneFile(const std::wstring& source, const std::wstring& target);

// The names of the folder's entries (files and folders, "." and ".." left out); none when it does not exist.
struct FolderEntry {
    std::wstring name;
    bool isFolder = false;
    bool isLink = false; // a reparse point: removed itself, never entered
};
std::vector<FolderEntry> ListFolder(const std::wstring& fullPath);

// The system's text for a Win32 error code, without its line end.
std::wstring SystemText(unsigned long code);

} // namespace gac
