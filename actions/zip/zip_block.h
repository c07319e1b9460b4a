// The command block that the ZIP Files action hands to DZIP32.dll's dzip. Its layout is fixed for 32-bit Windows
// (220 bytes; the offsets are checked by an i686 compile of layout_check.cpp); on 64-bit Windows the pointer fields
// widen to 8 bytes in the same order. Every field that is not set is zero.
#pragma once
#include "callbacks.h"
#include <cstdint>

namespace tol {

// Function codes of dzip.
enum ZipFunction : std::int32_t { ZipFreshen = 1, ZipUpdate = 3, ZipAdd = 4 };

// Option bits of ZipCommandBlock::options.
enum ZipOption : std::uint16_t {
    ZipRelativePaths = 0x0001,  // names relative to the item's folder (else the full path without its root)
    ZipShortNames = 0x0020,     // store 8.3 names
    ZipSkipLocked = 0x0040,     // a file that another program holds locked is skipped, not an error
    ZipArchiveOnly = 0x0200,    // only files whose archive attribute is set
    ZipResetArchive = 0x0400,   // clear the archive attribute of every file zipped, once the archive is written
    ZipUtf8Names = 0x0800,      // names outside ASCII are stored in UTF-8 and marked so
};

struct ZipCommandBlock {
    std::uint32_t size;                 // 0: sizeof(ZipCommandBlock), read first
    std::int32_t function;              // 4: ZipFunction
    const char* zipFile;                // 8
    const char* item;                   // 12: folder and wildcard, quoted as a command-line argument
    ArchiveCancelCallback cancel;       // 16
    void* cancelData;                   // 20
    ArchiveMessageCallback message;     // 24
    void* messageData;                  // 28
    std::int32_t reserved32;            // 32
    std::int32_t recurse;               // 36: 1 walks subfolders
    std::int32_t compression;           // 40: 0 stores, 1 to 9 deflate at that level, 10 to 19 at the highest
    std::int32_t fileMessages;          // 44: 1 sends a message for every file
    std::int32_t reserved48[2];         // 48
    std::int32_t folderEntries;         // 56: 1 stores entries for folders
    std::int32_t allowZip64;            // 60: 1 uses ZIP64 records where sizes, offsets or counts need them
    std::int32_t reserved64[2];         // 64
    std::int32_t grow;                  // 72: nonzero appends to the existing archive in place
    std::int32_t noPaths;               // 76: 1 stores file names without folders
    std::int32_t reserved80;            // 80
    std::int32_t hasComment;            // 84
    const char* comment;                // 88
    std::int32_t reserved92[3];         // 92
    std::int32_t hasInclude;            // 104
    const char* include;                // 108: masks, each quoted as a command-line argument, blank-separated
    std::int32_t hasExclude;            // 112
    const char* exclude;                // 116
    std::int32_t reserved120;           // 120
    std::int32_t hiddenFiles;           // 124: 1 takes hidden and system files too
    std::int32_t reserved128[5];        // 128
    ArchiveConfirmCallback confirm;     // 148
    void* confirmData;                  // 152
    std::uint16_t reserved156;          // 156
    std::uint16_t options;              // 158: ZipOption bits
    std::int32_t reserved160[7];        // 160
    std::int32_t extendedTimes;         // 188: 1 stores the UTC modification time beside the DOS time
    std::int32_t reserved192[7];        // 192
};

} // namespace tol
