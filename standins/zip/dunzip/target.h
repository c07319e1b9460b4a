// Where an entry is extracted to. The stored name must pass the safety check, its decoded components must still be
// plain names, the joined path must lie below the destination folder, and no folder on the way may be a link out of
// it; otherwise the entry is unsafe and nothing is written for it.
#pragma once
#include "options.h"
#include "short_names.h"
#include "format/entry.h"
#include <set>
#include <string>

namespace unzipper {

struct Target {
    std::wstring relative;  // below the destination, "\" between folders
    std::wstring path;      // full path for the file functions (\\?\ when long)
    bool folder = false;
};

class TargetMaker {
public:
    explicit TargetMaker(const UnzipOptions& options) : options_(options) {}

    // False when the entry is unsafe. displayName is the entry's decoded name either way, "\" between folders.
    [[nodiscard]] bool Make(const zipformat::Entry& entry, Target& target, std::wstring& displayName);

private:
    bool Decode(const zipformat::Entry& entry, std::vector<std::wstring>& components) const;
    bool LiesInside(const std::wstring& full) const;
    bool CrossesLink(const std::vector<std::wstring>& components, size_t folders);

    const UnzipOptions& options_;
    ShortNamer shortNamer_;
    std::set<std::wstring> checkedFolders_;  // folded full paths known to be plain folders (or missing)
};

} // namespace unzipper
