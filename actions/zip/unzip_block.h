// The command block that the UNZIP Files action hands to DUNZIP32.dll's dunzip. Its layout is fixed for 32-bit
// Windows (170 bytes, packed on 2-byte boundaries; the offsets are checked by an i686 compile of layout_check.cpp);
// on 64-bit Windows the pointer fields widen to 8 bytes in the same order. Every field that is not set is zero.
#pragma once
#include "callbacks.h"
#include <cstdint>

namespace tol {

constexpr std::int32_t kUnzipExtract = 8;  // the one function code of dunzip

// Option bits of UnzipCommandBlock::options.
enum UnzipOption : std::uint16_t {
    UnzipOverwriteReadOnly = 0x0001,  // read-only files are replaced like any other
    UnzipShortNames = 0x0020,         // every extracted name is cut to 8.3
    UnzipOemNames = 0x0800,           // names not marked UTF-8 are in code page 437 (else in the ANSI code page)
};

#pragma pack(push, 2)
struct UnzipCommandBlock {
    std::uint32_t size;                 // 0: sizeof(UnzipCommandBlock), read first
    std::int32_t function;              // 4: kUnzipExtract
    const char* zipFile;                // 8
    std::int32_t reserved12;            // 12
    const char* files;                  // 16: masks, each quoted as a command-line argument, blank-separated
    std::int32_t reserved20;            // 20
    const char* destination;            // 24
    std::int32_t freshen;               // 28: 1 replaces only files that exist and are older
    std::int32_t update;                // 32: 1 extracts files that are missing or older
    std::int32_t restoreTimes;          // 36: 1 gives extracted files the archive's modification time
    std::int32_t reserved40[2];         // 40
    std::int32_t dropFolders;           // 48: 1 extracts every file into the destination folder itself
    std::int32_t recurse;               // 52: 1 matches a mask against the file name in every folder too
    std::int32_t reserved56;            // 56
    ArchiveMessageCallback message;     // 60
    void* messageData;                  // 64
    ArchiveCancelCallback cancel;       // 68
    void* cancelData;                   // 72
    std::int32_t reserved76[6];         // 76
    ArchiveConfirmCallback confirm;     // 100
    void* confirmData;                  // 104
    std::uint16_t options;              // 108: UnzipOption bits
    std::uint16_t reserved110;          // 110
    std::int32_t reserved112[14];       // 112
    std::uint16_t reserved168;          // 168
};
#pragma pack(pop)

} // namespace tol
