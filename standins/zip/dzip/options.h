// What one dzip call is asked to do, read from its command block.
#pragma once
#include "actions/zip/zip_block.h"
#include "common/reporter.h"
#include "result_codes.h"
#include <string>
#include <vector>

namespace zipper {

enum class PathMode { Relative, Full, None };

struct ZipOptions {
    std::int32_t function = tol::ZipAdd;
    std::wstring zipFile;                 // full path
    std::vector<std::wstring> items;      // each a folder with a wildcard, or a file
    std::wstring include, exclude;        // masks, one per line, for the file-mask filter
    bool recurse = false;
    int level = 5;                        // zlib level; 0 stores
    bool fileMessages = true;
    bool folderEntries = true;
    bool allowZip64 = true;
    bool grow = false;
    PathMode paths = PathMode::Relative;
    bool setComment = false;
    std::string comment;                  // the bytes stored as the archive comment
    bool hiddenFiles = true;
    bool shortNames = false;
    bool skipLocked = false;
    bool archiveOnly = false;
    bool resetArchive = false;
    bool utf8Names = true;
    bool extendedTimes = true;
    zipwin::Callbacks callbacks;
};

// ZipOk, or ZipBadParameters for a block of another size, an unknown function code, a compression factor outside
// 0 to 19, a missing or unbalanced item or mask list; ZipBadComment for a comment above 65535 bytes.
ZipResult ReadOptions(const tol::ZipCommandBlock& block, ZipOptions& options);

} // namespace zipper
