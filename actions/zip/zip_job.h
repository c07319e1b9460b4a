// The ZIP job: the archive job with DZIP32.dll's command block, filled from the step's ZIP settings.
#pragma once
#include "archive_job.h"
#include "zip_block.h"
#include <string>

namespace tol {

// The step's properties as the ZIP Files action reads them.
struct ZipSettings {
    long action = 2;          // 0 Add, 1 Freshen, 2 Update
    std::wstring dest;        // the ZIP file
    std::wstring source;      // the folder whose files are zipped
    bool recurse = false;
    long compression = 5;
    bool noPaths = false;
    std::wstring comment;
    std::wstring include;     // masks, one per line
    std::wstring exclude;
    bool hidden = true;
    bool grow = false;
    bool pathInfo = false;    // read only when noPaths is off
    bool shortNames = false;
    bool skipLocked = false;
    bool archiveOnly = false;
    bool clearArchive = false;
};

class ZipJob final : public ArchiveJob {
public:
    ZipJob(IBuildRun* build, bool logDetail);

    // Fills the block; an Action other than 0, 1 and 2 throws, as does a mask list that cannot become ANSI.
    void Fill(const ZipSettings& settings);

    StepStatus Run() override;
    void LogLibraryMessage(const char* text) override;

    const ZipCommandBlock& Block() const noexcept { return block_; }
    // The source folder taken back from the item: unquoted, without its trailing separator and "*.*".
    std::wstring SourceFolder() const;
    std::wstring ZipFile() const;

private:
    void FillTexts(const ZipSettings& settings);
    void FillSwitches(const ZipSettings& settings);
    void FillCallbacks();

    ZipCommandBlock block_{};
    // The block points into these until the job ends.
    std::string zipFile_, item_, comment_, include_, exclude_;
};

} // namespace tol
