// The UNZIP job: the archive job with DUNZIP32.dll's command block. Its log operation shows each extracted file
// relative to the destination folder.
#pragma once
#include "archive_job.h"
#include "unzip_block.h"
#include <string>

namespace tol {

// The step's properties as the UNZIP Files action reads them (Dest and LogDetail come first, on their own).
struct UnzipSettings {
    std::wstring source;      // the ZIP file
    std::wstring masks;       // files to extract, one mask per line
    long action = 2;          // 0 Extract, 1 Freshen, 2 Update
    bool pathInfo = true;
    bool recurse = false;
    bool shortNames = false;
    bool overwriteReadOnly = false;
};

class UnzipJob final : public ArchiveJob {
public:
    // destination: the destination folder as ANSI; its length, less a trailing separator, is what the log
    // operation drops after the 13-character lead of each file message.
    UnzipJob(IBuildRun* build, bool logDetail, std::string destination);

    // Fills the block; an Action other than 0, 1 and 2 throws, as does a mask list that cannot become ANSI.
    void Fill(const UnzipSettings& settings);

    StepStatus Run() override;
    // A message shorter than the lead and the destination is logged whole.
    void LogLibraryMessage(const char* text) override;

    const UnzipCommandBlock& Block() const noexcept { return block_; }
    std::wstring ZipFile() const;
    std::wstring Destination() const;

private:
    UnzipCommandBlock block_{};
    std::string destination_, zipFile_, files_;
    size_t destinationLength_;
};

} // namespace tol
