#include "add_file.h"
#include "entry_names.h"
#include "common/file_times.h"
#include "common/text.h"
#include "format/records.h"
#include "frame/handles.h"
#include <algorithm>

namespace zipper {
namespace {

constexpr std::uint64_t kWholeFile = 4 * 1024 * 1024;  // read and compressed in one piece up to this size
constexpr DWORD kBlock = 1024 * 1024;

bool IsLocked(DWORD code) noexcept { return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION; }

// Reads up to capacity bytes; false when a read fails.
bool ReadUpTo(HANDLE handle, unsigned char* buffer, size_t capacity, size_t& total) {
    total = 0;
    while (total < capacity) {
        DWORD read = 0;
        const DWORD want = static_cast<DWORD>(std::min<size_t>(capacity - total, kBlock * 16));
        if (!::ReadFile(handle, buffer + total, want, &read, nullptr)) return false;
        total += read;
        if (read < want) break;  // a short read of a file is its end
    }
    return true;
}

std::string Percent(const zipformat::EntryRecord& r) {
    const unsigned saved = r.size == 0 ? 0 : static_cast<unsigned>(100 - (r.compressedSize * 100 + r.size / 2) / r.size);
    return (r.method == zipformat::kMethodDeflated ? "deflated " : "stored ") + std::to_string(saved) + "%";
}

} // namespace

FileAdder::FileAdder(zipformat::ArchiveWriter& writer, zipwin::Reporter& reporter, const ZipOptions& options)
    : writer_(writer), reporter_(reporter), options_(options) {}

zipformat::NewEntry FileAdder::EntryOf(const SourceFile& file) const {
    zipformat::NewEntry entry;
    entry.name = StoredName(file.name, options_.utf8Names, entry.utf8);
    entry.dosDateTime = zipwin::ToDosDateTime(file.modified);
    if (options_.extendedTimes) entry.modified = zipwin::ToUnixSeconds(file.modified);
    entry.externalAttributes = (file.attributes & 0x27) | (file.folder ? zipformat::kDosFolder : 0);
    entry.expectedSize = file.size;
    return entry;
}

void FileAdder::Report(const std::string& name, bool replaces) {
    reporter_.FileMessage("Item " + name + (replaces ? " replaced (" : " added (") + Percent(writer_.LastEntry()) + ")");
}

ZipResult FileAdder::Add(const SourceFile& file, bool replaces, bool& added, PreparedFile* prepared) {
    added = false;
    const zipformat::NewEntry entry = EntryOf(file);
    const std::string name = zipwin::ToNarrow(file.name, CP_ACP);
    if (file.folder) {
        const zipformat::Status status = writer_.AddFolder(entry);
        if (status != zipformat::Status::Ok) return ResultOf(status);
        return added = true, ZipOk;  // folders are not files: no file message
    }
    if (!reporter_.Confirm(name, tol::kConfirmAdd, file.size, entry.dosDateTime, entry.externalAttributes)) return ZipOk;
    const bool fromDisk = !prepared || prepared->outcome == PreparedFile::Grown;
    bool skipped = false;
    const ZipResult result =
        fromDisk ? AddFromDisk(file, entry, name, skipped) : AddPrepared(entry, name, *prepared, skipped);
    if (result != ZipOk || skipped) return result;
    Report(name, replaces);
    return added = true, ZipOk;
}

ZipResult FileAdder::Locked(const std::string& name, bool& skipped) {
    if (!options_.skipLocked) return ZipFileNotFound;
    reporter_.FileMessage("Item " + name + " skipped (locked)");
    skipped = true;
    return ZipOk;
}

ZipResult FileAdder::AddFromDisk(const SourceFile& file, const zipformat::NewEntry& entry, const std::string& name,
                                 bool& skipped) {
    const tol::unique_file handle(::CreateFileW(file.path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                                FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!handle) return IsLocked(::GetLastError()) ? Locked(name, skipped) : ZipFileNotFound;
    return AddData(file, entry, handle.get(), name);
}

ZipResult FileAdder::AddPrepared(const zipformat::NewEntry& entry, const std::string& name, const PreparedFile& prepared,
                                 bool& skipped) {
    switch (prepared.outcome) {
    case PreparedFile::Locked: return Locked(name, skipped);
    case PreparedFile::NotOpened: return ZipFileNotFound;
    case PreparedFile::ReadFailed: return ZipReadFailed;
    case PreparedFile::NoMemory: return ZipNoMemory;
    default: return ResultOf(writer_.AddPrepared(entry, prepared.data));
    }
}

// A small file is read whole (one byte more than listed, to notice a file that grew) and compressed in one piece.
ZipResult FileAdder::AddData(const SourceFile& file, const zipformat::NewEntry& entry, HANDLE handle,
                             const std::string& name) {
    zipwin::FileProgress progress(reporter_, name, file.size);
    if (file.size >= kWholeFile) return AddStreamed(entry, handle, progress);
    buffer_.resize(std::max<size_t>(buffer_.size(), static_cast<size_t>(file.size) + 1));
    size_t read = 0;
    if (!ReadUpTo(handle, buffer_.data(), static_cast<size_t>(file.size) + 1, read)) return ZipReadFailed;
    if (read > file.size) {
        LARGE_INTEGER start{};
        if (!::SetFilePointerEx(handle, start, nullptr, FILE_BEGIN)) return ZipReadFailed;
        return AddStreamed(entry, handle, progress);
    }
    return ResultOf(writer_.AddFile(entry, buffer_.data(), read));
}

ZipResult FileAdder::StreamPass(HANDLE handle, zipformat::Progress& progress) {
    if (buffer_.size() < kBlock) buffer_.resize(kBlock);
    std::uint64_t done = 0;
    for (;;) {
        DWORD read = 0;
        if (!::ReadFile(handle, buffer_.data(), kBlock, &read, nullptr)) return ZipReadFailed;
        if (read == 0) return ZipOk;
        const zipformat::Status status = writer_.WriteData(buffer_.data(), read);
        if (status != zipformat::Status::Ok) return ResultOf(status);
        done += read;
        if (!progress.Continue(done)) return ZipCancelled;
    }
}

// Data that deflating does not make smaller is read a second time and stored.
ZipResult FileAdder::AddStreamed(const zipformat::NewEntry& entry, HANDLE handle, zipformat::Progress& progress) {
    zipformat::Status status = writer_.BeginFile(entry);
    for (int pass = 0; status == zipformat::Status::Ok; ++pass) {
        if (pass == 1) {
            LARGE_INTEGER start{};
            if (!::SetFilePointerEx(handle, start, nullptr, FILE_BEGIN)) return ZipReadFailed;
            if ((status = writer_.RestartStored()) != zipformat::Status::Ok) break;
        }
        const ZipResult result = StreamPass(handle, progress);
        if (result != ZipOk) return result;
        bool restart = false;
        status = writer_.EndFile(restart);
        if (!restart) break;
    }
    return ResultOf(status);
}

} // namespace zipper
