// The files and folders that one dzip call takes: each item walked (recursively when asked), filtered by the item's
// wildcard, the include and exclude masks, the hidden and system and archive attributes, and named for the archive.
#pragma once
#include "options.h"
#include <windows.h>
#include <string>
#include <vector>

namespace zipper {

struct SourceFile {
    std::wstring path;      // for opening: a full path, \\?\ when it is long
    std::wstring name;      // the entry name, "/" between folders; a folder's ends with "/"
    bool folder = false;
    std::uint64_t size = 0;
    FILETIME modified{};
    DWORD attributes = 0;
};

// In walk order: in each folder its files by name, then its subfolders by name, each folder's entry before what it
// holds. A folder gets an entry (when folder entries are on and paths are stored) when something below it is taken,
// or when it is empty and the item's wildcard and the include masks take every file. ZipFileNotFound when an
// item's folder cannot be read, ZipBadParameters for masks that do not make patterns or for two files that would
// get the same name.
ZipResult ListFiles(const ZipOptions& options, std::vector<SourceFile>& files);

} // namespace zipper
