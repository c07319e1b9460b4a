// The settings of one Copy Files run: the two roots, the mask filter and the options, read from the step and
// checked before anything is created.
#pragma once
#include "fileutil/masks.h"
#include "VelmoraSvr.h"
#include <optional>
#include <string>

namespace tol {

struct CopySettings {
    std::wstring sourceRoot;  // ends in a separator unless empty
    std::wstring destRoot;    // ends in a separator
    FileMaskFilter filter;    // Ext includes, ExclExt excludes, an empty include list selects every file

    bool recurse = false;
    bool empty = false;
    bool flat = false;
    bool incremental = true;
    bool purge = false;
    bool move = false;
    bool moveDirs = false;
    bool noCopy = false;
    bool logCopied = true;
    bool logUpToDate = false;
    bool ignoreSrc = false;
    bool restartable = true;
    bool readOnly = true;
    bool hidden = false;
    bool archive = false;
    bool clearArchive = false;
    bool shortNames = false;
    bool tbd = true;

    long retries = 10;  // attempts in all
    long delay = 15;    // seconds between attempts
};

// Reads the step's properties. A blank or equal root is logged (messages 34 and 39) and gives no settings:
// the step then fails without having touched anything. Property reads and mask expressions throw.
std::optional<CopySettings> ReadCopySettings(IBuildRun* build, IBuildStep* step);

// A folder path as a root: a trailing separator added, then "." and ".." resolved where the platform can
// (paths shorter than 260 characters); an empty text stays empty.
std::wstring RootPath(const std::wstring& typed);

} // namespace tol
