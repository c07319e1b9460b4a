// Adding one file or folder of the list to the archive being written, with its file message.
#pragma once
#include "file_list.h"
#include "file_preparer.h"
#include "common/reporter.h"
#include "format/writer.h"
#include <vector>

namespace zipper {

class FileAdder {
public:
    FileAdder(zipformat::ArchiveWriter& writer, zipwin::Reporter& reporter, const ZipOptions& options);

    // added is false when the file was skipped: locked (with skip-locked on; reported in a file message) or refused
    // by the confirm callback. ZipFileNotFound when the file cannot be opened, ZipReadFailed when reading fails,
    // ZipCancelled, or the writer's result. prepared: the file as a preparer read and compressed it, or null.
    ZipResult Add(const SourceFile& file, bool replaces, bool& added, PreparedFile* prepared = nullptr);

private:
    zipformat::NewEntry EntryOf(const SourceFile& file) const;
    ZipResult AddData(const SourceFile& file, const zipformat::NewEntry& entry, HANDLE handle, const std::string& name);
    // skipped: a locked file was left out.
    ZipResult AddFromDisk(const SourceFile& file, const zipformat::NewEntry& entry, const std::string& name, bool& skipped);
    ZipResult AddPrepared(const zipformat::NewEntry& entry, const std::string& name, const PreparedFile& prepared,
                          bool& skipped);
    ZipResult Locked(const std::string& name, bool& skipped);
    ZipResult AddStreamed(const zipformat::NewEntry& entry, HANDLE handle, zipformat::Progress& progress);
    ZipResult StreamPass(HANDLE handle, zipformat::Progress& progress);
    void Report(const std::string& name, bool replaces);

    zipformat::ArchiveWriter& writer_;
    zipwin::Reporter& reporter_;
    const ZipOptions& options_;
    std::vector<unsigned char> buffer_;
};

} // namespace zipper
