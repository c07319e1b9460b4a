// One enumeration of one folder, every entry (dot entries included where the file system has them) once.
#pragma once
#include "frame/handles.h"
#include <windows.h>
#include <string>

namespace tol {

class DirectoryFinder {
public:
    DirectoryFinder() noexcept = default;
    DirectoryFinder(const DirectoryFinder&) = delete;
    DirectoryFinder& operator=(const DirectoryFinder&) = delete;

    // Starts an enumeration of a folder path and a wildcard ("*.*" alone enumerates the current folder); closes
    // the one that was open. False with the FindFirstFileW error code, or ERROR_INVALID_NAME when the pattern
    // has no absolute form. The first entry becomes current with the first FindNext.
    [[nodiscard]] bool FindFirst(const std::wstring& pattern = L"*.*") noexcept;
    // Makes the next entry current; false when none is left (ERROR_NO_MORE_FILES) or nothing is open.
    [[nodiscard]] bool FindNext() noexcept;
    void Close() noexcept;
    bool IsOpen() const noexcept { return static_cast<bool>(handle_); }

    // Queries on the current entry.
    bool HasAttribute(DWORD mask) const noexcept { return (entry_.dwFileAttributes & mask) != 0; }
    bool IsFolder() const noexcept { return HasAttribute(FILE_ATTRIBUTE_DIRECTORY); }
    bool IsDotEntry() const noexcept;
    const wchar_t* LongName() const noexcept { return entry_.cFileName; }
    // The 8.3 name, or the long name when the entry has none.
    const wchar_t* ShortName() const noexcept;
    // The enumerated folder joined with the long name.
    std::wstring FullPath() const;
    const WIN32_FIND_DATAW& Entry() const noexcept { return entry_; }

    // The absolute path of the enumerated folder, without a trailing separator.
    const std::wstring& Folder() const noexcept { return folder_; }

private:
    bool Start(const std::wstring& pattern);

    unique_find handle_;
    WIN32_FIND_DATAW entry_{};
    bool firstPending_ = false;  // FindFirstFileW's entry is not handed out yet
    std::wstring folder_;
};

} // namespace tol
