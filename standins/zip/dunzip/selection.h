// Which entries of the archive are extracted: wildcard masks matched without regard to case against an entry's
// whole name, where "*" also crosses folders (so "*.txt" finds text files in every folder) and a mask that ends
// in ".*" also takes names without an extension. With recursion a mask also matches the entry's file name alone,
// so that "readme.txt" finds the file of that name in every folder.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace unzipper {

class EntrySelection {
public:
    EntrySelection(const std::vector<std::wstring>& masks, bool recurse);
    // name: the entry's decoded name, "/" or "\" between folders; a folder's trailing separator is ignored.
    bool Selects(std::wstring_view name) const;

    // The wildcard test itself: ? any one character, * any run; the text and mask are already folded.
    static bool Matches(std::wstring_view mask, std::wstring_view text) noexcept;

private:
    std::vector<std::wstring> masks_;  // folded, "/" between folders
    bool recurse_;
};

} // namespace unzipper
