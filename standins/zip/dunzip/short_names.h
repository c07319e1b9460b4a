// Cutting extracted names to 8.3: a name that already fits stays (in upper case); a longer one becomes the first six
// usable characters, "~" and a number, and the first three characters of its extension, the number chosen so that
// no two names of one folder in one call collide. The same name in the same folder always gets the same 8.3 name.
#pragma once
#include <map>
#include <set>
#include <string>

namespace unzipper {

class ShortNamer {
public:
    // folder: the 8.3 path of the folder the name lies in, for the uniqueness of the numbers.
    std::wstring ShortName(const std::wstring& folder, const std::wstring& name);

private:
    std::wstring NewShortName(const std::wstring& folder, const std::wstring& name);

    std::map<std::wstring, std::wstring> given_;  // folded folder\long name -> the 8.3 name handed out
    std::set<std::wstring> used_;                 // folded folder\8.3 name pairs handed out
};

} // namespace unzipper
