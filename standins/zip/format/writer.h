// Writing an archive into a sink: entries kept in place, copied from another archive, or made from files (whole in
// memory or streamed in blocks), then the central directory and the end records.
#pragma once
#include "deflater.h"
#include "entry.h"
#include "headers_out.h"
#include "io.h"
#include "records.h"
#include "status.h"
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zipformat {

// A file or folder to add. Folder names end with "/".
struct NewEntry {
    std::string name;
    bool utf8 = false;
    std::uint32_t dosDateTime = 0;
    std::optional<std::int64_t> modified;  // stored in a timestamp field when given
    std::uint32_t externalAttributes = 0;
    std::uint64_t expectedSize = 0;        // a streamed file's size as listed: decides on a ZIP64 local header
};

// Streamed files expected above this size get a ZIP64 local header: deflate can grow data by a little.
constexpr std::uint64_t kZip64Threshold = 0xFF000000;

// A file's data made ready for the archive away from the writer (on another thread): the bytes to store, deflated
// or as they are, whichever is smaller.
struct PreparedData {
    std::uint16_t method = kMethodStored;
    std::uint32_t crc = 0;
    std::uint64_t size = 0;
    std::vector<unsigned char> bytes;
};

// Takes the file's data (below 4 GiB) and deflates it at level (0 stores). OutOfMemory when zlib fails.
[[nodiscard]] Status PrepareData(Deflater& deflater, int level, std::vector<unsigned char> data, PreparedData& prepared);

class ArchiveWriter {
public:
    // level 0 stores every file, 1 to 9 deflates at that zlib level. Without allowZip64, sizes, offsets and counts
    // that need ZIP64 records end in TooLarge.
    ArchiveWriter(ByteSink& sink, int level, bool allowZip64);

    // An entry whose local header and data already lie in the sink where its central record says.
    void KeepEntry(const Entry& entry);
    // Copies an entry of another archive, its compressed data untouched, behind a fresh local header.
    [[nodiscard]] Status CopyEntry(ByteSource& source, const Archive& archive, const Entry& entry, Progress* progress);
    [[nodiscard]] Status AddFolder(const NewEntry& entry);
    // A file whose whole content is in memory: deflated, or stored when deflating does not make it smaller.
    [[nodiscard]] Status AddFile(const NewEntry& entry, const void* data, std::size_t size);
    [[nodiscard]] Status AddPrepared(const NewEntry& entry, const PreparedData& prepared);

    // A streamed file: BeginFile, WriteData for each block, EndFile. When EndFile sets restartStored, deflating did
    // not make the file smaller: call RestartStored, write every block again, and call EndFile again.
    [[nodiscard]] Status BeginFile(const NewEntry& entry);
    [[nodiscard]] Status WriteData(const void* data, std::size_t size);
    [[nodiscard]] Status EndFile(bool& restartStored);
    [[nodiscard]] Status RestartStored();

    // Writes the central directory and the end records.
    [[nodiscard]] Status Finish(std::string_view comment);

    // The entry added last, for the caller's messages.
    const EntryRecord& LastEntry() const noexcept { return records_.back(); }
    std::size_t EntryCount() const noexcept { return records_.size(); }

private:
    EntryRecord NewRecord(const NewEntry& entry, std::uint16_t method) const;
    Status EmitWhole(EntryRecord record, const void* bytes);
    Status Emit(const std::string& bytes);
    Status EmitCompressed(bool finish);
    Status PatchHeader();
    Status CopyData(ByteSource& source, std::uint64_t offset, std::uint64_t count, Progress* progress);

    ByteSink& sink_;
    int level_;
    bool allowZip64_;
    Deflater deflater_;
    std::vector<EntryRecord> records_;
    std::vector<unsigned char> buffer_;
    // The streamed file in progress.
    EntryRecord current_;
    std::uint64_t dataStart_ = 0;
};

} // namespace zipformat
