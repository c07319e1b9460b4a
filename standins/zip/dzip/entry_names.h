// The names that files and folders get in the archive: relative to the item's folder, the full path without its
// drive or server, or the file name alone; long names or their 8.3 forms.
#pragma once
#include "options.h"
#include <string>

namespace zipper {

// Names the entries of one folder of a walk; Enter gives the namer of a subfolder.
class EntryNamer {
public:
    // The namer of an item's folder (a full path).
    EntryNamer(const ZipOptions& options, const std::wstring& folder);

    EntryNamer Enter(const std::wstring& longName, const std::wstring& shortName) const;
    std::wstring FileName(const std::wstring& longName, const std::wstring& shortName) const;
    // This folder's own entry name, ending with "/".
    const std::wstring& FolderName() const noexcept { return prefix_; }
    // The folder's path below the item's folder ("" for the item's folder), for the folder masks.
    const std::wstring& Relative() const noexcept { return relative_; }

private:
    EntryNamer() = default;

    PathMode mode_ = PathMode::Relative;
    bool shortNames_ = false;
    std::wstring prefix_;    // what goes before a file name in this folder
    std::wstring relative_;
};

// The entry name as stored: UTF-8 (and marked so) when it is not plain ASCII and UTF-8 names are on, else in code
// page 437.
std::string StoredName(const std::wstring& name, bool utf8Names, bool& utf8);

} // namespace zipper
