// Sets of file and folder names as Copy Files keeps them: ordered by lstrcmpiW, so that names differing only
// in case are one name.
#pragma once
#include <windows.h>
#include <map>
#include <set>
#include <string>

namespace tol {

struct NameLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const noexcept {
        return ::lstrcmpiW(a.c_str(), b.c_str()) < 0;
    }
};

using NameSet = std::set<std::wstring, NameLess>;
// Subfolders: the name that paths are built from (the 8.3 name with ShortNames) to the long name that folder
// masks are tested on.
using FolderNames = std::map<std::wstring, std::wstring, NameLess>;

} // namespace tol
