// Include and exclude lists of file masks (*.txt, myfile*.*) and folder masks (/obj), matched without regard
// to case against whole names.
#pragma once
#include <memory>
#include <string>
#include <string_view>

namespace tol {

class FileMaskFilter {
public:
    // Each list holds one mask per line; double quotes also separate masks, blanks belong to them. A mask that
    // starts with a separator is a folder mask. Every expression is built here, once; an expression that the
    // regular-expression library rejects throws its exception (boost::regex_error).
    FileMaskFilter(std::wstring_view includeMasks, std::wstring_view excludeMasks, bool matchAll);

    // The regular expression of one mask: ? any character, * any run (no dots when the mask ends in a lone
    // dot, which then selects names without an extension), dots optional when the mask ends in ".*".
    static std::wstring MaskToPattern(std::wstring_view mask);

    // The name passes the include file masks (or the list is empty and matchAll is set) and no exclude one.
    bool MatchesFile(std::wstring_view name) const;
    // The folder, given relative to the tree's root ("" for the root), passes the folder masks: a mask
    // applies to a folder of that name and to everything below it.
    bool MatchesFolderPath(std::wstring_view relativePath) const;

private:
    struct Lists;  // the built expressions; shared by copies, never changed after construction
    std::shared_ptr<const Lists> lists_;
};

} // namespace tol
