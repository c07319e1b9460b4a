#include "file_list.h"
#include "entry_names.h"
#include "common/long_path.h"
#include "common/text.h"
#include "fileutil/fileops.h"
#include "fileutil/finder.h"
#include "fileutil/masks.h"
#include "fileutil/paths.h"
#include <algorithm>
#include <new>
#include <optional>
#include <unordered_set>

namespace zipper {
namespace {

struct Found {
    std::wstring name, shortName;
    DWORD attributes = 0;
    std::uint64_t size = 0;
    FILETIME modified{};
};

struct Listing {
    std::vector<Found> files, folders;
    bool empty = true;
};

// One item: the folder that is walked and the wildcard of the files taken from it.
struct Item {
    std::wstring folder;   // full path
    std::wstring pattern;
};

Item SplitItem(const std::wstring& item) {
    const size_t separator = item.find_last_of(L"\\/");
    const std::wstring last = separator == std::wstring::npos ? item : item.substr(separator + 1);
    const bool wildcard = last.find_first_of(L"*?") != std::wstring::npos;
    if (!wildcard && tol::IsExistingFolder(item)) return {zipwin::FullPath(item), L"*.*"};
    const std::wstring folder = separator == std::wstring::npos ? L"." : item.substr(0, separator + 1);
    return {zipwin::FullPath(folder), last};
}

Found FoundOf(const tol::DirectoryFinder& finder) {
    const WIN32_FIND_DATAW& data = finder.Entry();
    return {finder.LongName(), finder.ShortName(), data.dwFileAttributes,
            (static_cast<std::uint64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow, data.ftLastWriteTime};
}

bool ByName(const Found& a, const Found& b) {
    return ::CompareStringOrdinal(a.name.c_str(), -1, b.name.c_str(), -1, TRUE) == CSTR_LESS_THAN;
}

// False with the platform's error code when the folder cannot be read.
bool ReadFolder(const std::wstring& folder, Listing& listing) {
    tol::DirectoryFinder finder;
    if (!finder.FindFirst(zipwin::SystemPath(tol::CombinePath(folder, L"*")))) return false;
    while (finder.FindNext()) {
        if (finder.IsDotEntry()) continue;
        listing.empty = false;
        (finder.IsFolder() ? listing.folders : listing.files).push_back(FoundOf(finder));
    }
    std::sort(listing.files.begin(), listing.files.end(), ByName);
    std::sort(listing.folders.begin(), listing.folders.end(), ByName);
    return true;
}

class TreeWalker {
public:
    TreeWalker(const ZipOptions& options, std::vector<SourceFile>& out)
        : o_(options), masks_(options.include, options.exclude, true), out_(out),
          zipFile_(zipwin::FoldCase(options.zipFile)),
          folderEntries_(options.folderEntries && options.paths != PathMode::None) {}

    ZipResult WalkItem(const std::wstring& text);

private:
    bool TakesFile(const std::wstring& folder, const Found& file, const tol::FileMaskFilter& pattern) const;
    bool EntersFolder(const Found& folder, const std::wstring& relative) const;
    ZipResult Walk(const std::wstring& folder, const EntryNamer& namer, const tol::FileMaskFilter& pattern, bool& empty);
    ZipResult WalkSubfolder(const std::wstring& folder, const Found& sub, const EntryNamer& inner,
                            const tol::FileMaskFilter& pattern);
    void AddFile(const std::wstring& folder, const Found& file, const EntryNamer& namer);

    const ZipOptions& o_;
    tol::FileMaskFilter masks_;
    std::vector<SourceFile>& out_;
    std::wstring zipFile_;       // folded: the archive never zips itself
    bool folderEntries_;
    bool takesEverything_ = false;  // the item's wildcard and the include masks take every file
    size_t filesTaken_ = 0;
};

bool TreeWalker::TakesFile(const std::wstring& folder, const Found& file, const tol::FileMaskFilter& pattern) const {
    if (!o_.hiddenFiles && (file.attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM))) return false;
    if (o_.archiveOnly && !(file.attributes & FILE_ATTRIBUTE_ARCHIVE)) return false;
    if (!pattern.MatchesFile(file.name) || !masks_.MatchesFile(file.name)) return false;
    return zipwin::FoldCase(tol::CombinePath(folder, file.name)) != zipFile_;
}

// Folder links are not followed: a link back up the tree would never end.
bool TreeWalker::EntersFolder(const Found& folder, const std::wstring& relative) const {
    if (!o_.recurse || (folder.attributes & FILE_ATTRIBUTE_REPARSE_POINT)) return false;
    if (!o_.hiddenFiles && (folder.attributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM))) return false;
    return masks_.MatchesFolderPath(relative);
}

void TreeWalker::AddFile(const std::wstring& folder, const Found& file, const EntryNamer& namer) {
    SourceFile source;
    source.path = zipwin::SystemPath(tol::CombinePath(folder, file.name));
    source.name = namer.FileName(file.name, file.shortName);
    source.size = file.size;
    source.modified = file.modified;
    source.attributes = file.attributes;
    out_.push_back(std::move(source));
    ++filesTaken_;
}

ZipResult TreeWalker::Walk(const std::wstring& folder, const EntryNamer& namer, const tol::FileMaskFilter& pattern,
                           bool& empty) {
    Listing listing;
    if (!ReadFolder(folder, listing)) return ZipFileNotFound;
    empty = listing.empty;
    for (const Found& file : listing.files)
        if (TakesFile(folder, file, pattern)) AddFile(folder, file, namer);
    for (const Found& sub : listing.folders) {
        const EntryNamer inner = namer.Enter(sub.name, sub.shortName);
        if (!EntersFolder(sub, inner.Relative())) continue;
        const ZipResult result = WalkSubfolder(tol::CombinePath(folder, sub.name), sub, inner, pattern);
        if (result != ZipOk) return result;
    }
    return ZipOk;
}

// The folder's entry goes before its contents; it is dropped again (its name cleared) when nothing below it was
// taken, unless it is empty and the selection takes every file (so that a whole tree keeps its empty folders).
ZipResult TreeWalker::WalkSubfolder(const std::wstring& folder, const Found& sub, const EntryNamer& inner,
                                    const tol::FileMaskFilter& pattern) {
    const size_t at = out_.size(), filesBefore = filesTaken_;
    if (folderEntries_) {
        SourceFile entry;
        entry.path = zipwin::SystemPath(folder);
        entry.name = inner.FolderName();
        entry.folder = true;
        entry.modified = sub.modified;
        entry.attributes = sub.attributes;
        out_.push_back(std::move(entry));
    }
    bool empty = false;
    const ZipResult result = Walk(folder, inner, pattern, empty);
    if (folderEntries_ && filesTaken_ == filesBefore && !(empty && takesEverything_)) out_[at].name.clear();
    return result;
}

ZipResult TreeWalker::WalkItem(const std::wstring& text) {
    const Item item = SplitItem(text);
    if (item.folder.empty() || !tol::IsExistingFolder(item.folder)) return ZipFileNotFound;
    const tol::FileMaskFilter pattern(item.pattern, L"", true);
    takesEverything_ = (item.pattern == L"*.*" || item.pattern == L"*") && o_.include.empty();
    bool empty = false;
    return Walk(item.folder, EntryNamer(o_, item.folder), pattern, empty);
}

bool HasDuplicateNames(const std::vector<SourceFile>& files) {
    std::unordered_set<std::wstring> names;
    for (const SourceFile& file : files)
        if (!names.insert(zipwin::FoldCase(file.name)).second) return true;
    return false;
}

ZipResult WalkItems(const ZipOptions& options, std::vector<SourceFile>& files) {
    TreeWalker walker(options, files);
    for (const std::wstring& item : options.items) {
        const ZipResult result = walker.WalkItem(item);
        if (result != ZipOk) return result;
    }
    return ZipOk;
}

} // namespace

ZipResult ListFiles(const ZipOptions& options, std::vector<SourceFile>& files) {
    files.clear();
    try {
        const ZipResult result = WalkItems(options, files);
        if (result != ZipOk) return result;
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        return ZipBadParameters;  // a mask that makes no pattern
    }
    files.erase(std::remove_if(files.begin(), files.end(), [](const SourceFile& f) { return f.name.empty(); }),
                files.end());
    return HasDuplicateNames(files) ? ZipBadParameters : ZipOk;
}

} // namespace zipper
