// What one dunzip call is asked to do, read from its command block.
#pragma once
#include "actions/zip/unzip_block.h"
#include "common/reporter.h"
#include "result_codes.h"
#include <string>
#include <vector>

namespace unzipper {

struct UnzipOptions {
    std::wstring zipFile;            // full path
    std::wstring destination;        // full path, without a trailing separator
    std::string messageFolder;       // the destination as the block gives it, without a trailing separator
    std::vector<std::wstring> masks;
    bool freshen = false;
    bool update = false;
    bool restoreTimes = true;
    bool dropFolders = false;
    bool recurse = false;
    bool overwriteReadOnly = false;
    bool shortNames = false;
    unsigned nameCodePage = 437;     // of names not marked UTF-8
    zipwin::Callbacks callbacks;
};

// UnzipOk, or UnzipSyntaxError for a block of another size, another function code, no archive name, or a mask
// list with an open quote. An empty destination is the current folder; an empty mask list takes every entry.
UnzipResult ReadOptions(const tol::UnzipCommandBlock& block, UnzipOptions& options);

} // namespace unzipper
