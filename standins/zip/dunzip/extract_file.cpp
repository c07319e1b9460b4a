#include "extract_file.h"
#include "common/file_times.h"
#include "common/temporary_file.h"
#include "common/text.h"
#include "fileutil/fileops.h"
#include "fileutil/paths.h"

namespace unzipper {
namespace {

tol::unique_file CreateNew(const std::wstring& path) {
    return tol::unique_file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
}

bool IsDiskFull(DWORD code) noexcept { return code == ERROR_DISK_FULL || code == ERROR_HANDLE_DISK_FULL; }

// The entry is newer than the file by its UTC time when it has one, else by DOS time.
bool IsNewer(const zipformat::Entry& entry, const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return true;
    if (entry.modified) return *entry.modified > zipwin::ToUnixSeconds(data.ftLastWriteTime);
    return entry.dosDateTime > zipwin::ToDosDateTime(data.ftLastWriteTime);
}

} // namespace

std::string FileMessageText(const char* lead, const UnzipOptions& options, const std::wstring& relative) {
    std::string text = lead + options.messageFolder;
    if (!options.messageFolder.empty()) text += '\\';
    return text + zipwin::ToNarrow(relative, CP_ACP);
}

FileExtractor::FileExtractor(const UnzipOptions& options, zipformat::ByteSource& source,
                             const zipformat::Archive& archive, zipwin::Reporter& reporter)
    : options_(options), source_(source), archive_(archive), reporter_(reporter) {}

bool FileExtractor::Wanted(const zipformat::Entry& entry, const Target& target, DWORD existing) const {
    if (existing == INVALID_FILE_ATTRIBUTES) return !options_.freshen;
    return !(options_.freshen || options_.update) || IsNewer(entry, target.path);
}

// A file that is not there yet is created under its own name at once (one call fewer per file than asking first).
FileOutcome FileExtractor::Extract(const zipformat::Entry& entry, const Target& target, UnzipResult& result) {
    result = UnzipOk;
    if (!options_.freshen) {
        if (!MakeFolder(tol::DirectoryPart(target.path, false))) return result = UnzipCreateFailed, FileOutcome::Failed;
        tol::unique_file file = CreateNew(target.path);
        if (file) {
            result = WriteNew(entry, target, std::move(file));
            return Done(entry, target, result);
        }
        if (::GetLastError() != ERROR_FILE_EXISTS && ::GetLastError() != ERROR_ACCESS_DENIED)
            return result = UnzipCreateFailed, FileOutcome::Failed;
    }
    return Replace(entry, target, result);
}

FileOutcome FileExtractor::Replace(const zipformat::Entry& entry, const Target& target, UnzipResult& result) {
    const DWORD existing = ::GetFileAttributesW(target.path.c_str());
    if (!Wanted(entry, target, existing)) return FileOutcome::Skipped;
    if (existing == INVALID_FILE_ATTRIBUTES) {  // it could not be created, yet it is not there
        result = UnzipCreateFailed;
        return FileOutcome::Failed;
    }
    if (existing & FILE_ATTRIBUTE_DIRECTORY) return result = UnzipCreateFailed, FileOutcome::Failed;
    if ((existing & FILE_ATTRIBUTE_READONLY) && !options_.overwriteReadOnly) return FileOutcome::ReadOnly;
    const std::string name = zipwin::ToNarrow(target.relative, CP_ACP);
    if (!reporter_.Confirm(name, tol::kConfirmOverwrite, entry.size, entry.dosDateTime, entry.DosAttributes()))
        return FileOutcome::Skipped;
    result = WriteReplacement(entry, target);
    return Done(entry, target, result);
}

FileOutcome FileExtractor::Done(const zipformat::Entry& entry, const Target& target, UnzipResult& result) {
    if (result != UnzipOk) return FileOutcome::Failed;
    Finish(entry, target);
    reporter_.FileMessage(FileMessageText(kWrittenLead, options_, target.relative));
    return FileOutcome::Written;
}

bool FileExtractor::MakeFolder(const std::wstring& folder) {
    const std::wstring key = zipwin::FoldCase(folder);
    if (folders_.count(key)) return true;
    if (!tol::IsExistingFolder(folder) && !tol::CreatePath(folder + L"\\")) return false;
    folders_.insert(key);
    return true;
}

UnzipResult FileExtractor::WriteNew(const zipformat::Entry& entry, const Target& target, tol::unique_file file) {
    const UnzipResult result = WriteData(entry, std::move(file), zipwin::ToNarrow(target.relative, CP_ACP));
    if (result != UnzipOk) ::DeleteFileW(target.path.c_str());
    return result;
}

UnzipResult FileExtractor::WriteReplacement(const zipformat::Entry& entry, const Target& target) {
    std::wstring temporary;
    tol::unique_file file = zipwin::CreateTemporaryFile(tol::DirectoryPart(target.path, true), GENERIC_WRITE, 0, temporary);
    if (!file) return UnzipCreateFailed;
    const UnzipResult result = WriteData(entry, std::move(file), zipwin::ToNarrow(target.relative, CP_ACP));
    if (result == UnzipOk) {
        if (options_.overwriteReadOnly) (void)tol::ClearReadOnly(target.path);
        if (::MoveFileExW(temporary.c_str(), target.path.c_str(), MOVEFILE_REPLACE_EXISTING)) return UnzipOk;
    }
    ::DeleteFileW(temporary.c_str());
    return result == UnzipOk ? UnzipCreateFailed : result;
}

// The file keeps the entry's time; the handle is closed before the caller renames or deletes the file.
UnzipResult FileExtractor::WriteData(const zipformat::Entry& entry, tol::unique_file file, const std::string& name) {
    if (!sink_.Attach(std::move(file), 0)) return UnzipCreateFailed;
    zipwin::FileProgress progress(reporter_, name, entry.size);
    const zipformat::Status status = extractor_.Extract(source_, archive_, entry, sink_, &progress);
    const bool flushed = status == zipformat::Status::Ok && sink_.Flush();
    const DWORD writeError = sink_.LastError();
    FILETIME modified{};
    const bool timed = entry.modified ? (modified = zipwin::FromUnixSeconds(*entry.modified), true)
                                      : zipwin::FromDosDateTime(entry.dosDateTime, modified);
    if (flushed && options_.restoreTimes && timed) ::SetFileTime(sink_.get(), nullptr, nullptr, &modified);
    const tol::unique_file closed = sink_.Detach();
    if (IsDiskFull(writeError)) return UnzipDiskFull;
    if (status != zipformat::Status::Ok) return ResultOf(status);
    return flushed ? UnzipOk : UnzipCreateFailed;
}

// Read-only, hidden and system as the archive keeps them (for archives made where those exist).
void FileExtractor::Finish(const zipformat::Entry& entry, const Target& target) {
    const DWORD attributes = entry.DosAttributes() & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    if (attributes) ::SetFileAttributesW(target.path.c_str(), attributes);
}

} // namespace unzipper
