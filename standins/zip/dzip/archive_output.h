// Where the new archive is written. Normally a temporary file beside the archive, which replaces the archive only
// once it is complete. When growing, the archive itself from its central directory on: its old directory is kept in
// memory and put back if the call fails, so the archive is never left half written either way.
#pragma once
#include "existing.h"
#include "common/file_sink.h"
#include <string>

namespace zipper {

class ArchiveOutput {
public:
    ArchiveOutput() = default;
    ArchiveOutput(const ArchiveOutput&) = delete;
    ArchiveOutput& operator=(const ArchiveOutput&) = delete;
    ~ArchiveOutput() { Abandon(); }

    // growing: write into the archive itself (a new archive is then created in place). Missing folders of the
    // archive's path are created. ZipTempFailed or ZipCreateFailed when the file cannot be made.
    ZipResult Open(const std::wstring& zipFile, ExistingArchive& existing, bool growing);
    zipformat::ByteSink& Sink() noexcept { return sink_; }
    // Finishes the file; a temporary file then replaces the archive (the existing archive's source is closed first).
    ZipResult Commit(ExistingArchive& existing);
    // Drops what was written: the temporary file or a new archive is deleted, a grown archive gets its old end back.
    void Abandon() noexcept;

private:
    ZipResult OpenTemporary();
    ZipResult OpenGrowing(ExistingArchive& existing);

    zipwin::FileSink sink_;
    std::wstring zipFile_;       // system path
    std::wstring temporary_;     // system path; empty when growing
    bool created_ = false;       // the file at the output path did not exist before
    bool open_ = false;
    std::uint64_t oldEnd_ = 0;   // growing an archive: where its directory started
    std::string oldTail_;        // and the bytes from there to its end
};

} // namespace zipper
