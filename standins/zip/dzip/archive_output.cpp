#include "archive_output.h"
#include "common/long_path.h"
#include "common/temporary_file.h"
#include "fileutil/fileops.h"
#include "fileutil/paths.h"
#include <windows.h>

namespace zipper {
namespace {

tol::unique_file CreateNew(const std::wstring& path) {
    return tol::unique_file(::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                          CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
}

} // namespace

ZipResult ArchiveOutput::Open(const std::wstring& zipFile, ExistingArchive& existing, bool growing) {
    zipFile_ = zipwin::SystemPath(zipFile);
    const std::wstring folder = tol::DirectoryPart(zipFile_, true);
    if (!folder.empty() && !tol::IsExistingFolder(folder) && !tol::CreatePath(folder)) return ZipCreateFailed;
    return growing ? OpenGrowing(existing) : OpenTemporary();
}

ZipResult ArchiveOutput::OpenTemporary() {
    tol::unique_file file = zipwin::CreateTemporaryFile(tol::DirectoryPart(zipFile_, true), GENERIC_READ | GENERIC_WRITE,
                                                         FILE_SHARE_READ, temporary_);
    if (!file) return ZipTempFailed;
    created_ = open_ = true;
    return sink_.Attach(std::move(file), 0) ? ZipOk : ZipTempFailed;
}

ZipResult ArchiveOutput::OpenGrowing(ExistingArchive& existing) {
    if (!existing.present) {
        tol::unique_file file = CreateNew(zipFile_);
        if (!file) return ZipCreateFailed;
        created_ = open_ = true;
        return sink_.Attach(std::move(file), 0) ? ZipOk : ZipCreateFailed;
    }
    oldEnd_ = existing.archive.centralOffset;
    oldTail_.resize(static_cast<size_t>(existing.source.Size() - oldEnd_));
    if (!existing.source.ReadAt(oldEnd_, oldTail_.data(), oldTail_.size())) return ZipReadFailed;
    tol::unique_file file(::CreateFileW(zipFile_.c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
    if (!file) return ZipCreateFailed;
    open_ = true;
    return sink_.Attach(std::move(file), oldEnd_) ? ZipOk : ZipCreateFailed;
}

ZipResult ArchiveOutput::Commit(ExistingArchive& existing) {
    if (!sink_.FlushAndCut()) return ZipWriteFailed;
    sink_.Detach();
    existing.source.Close();
    if (!temporary_.empty() && !::MoveFileExW(temporary_.c_str(), zipFile_.c_str(), MOVEFILE_REPLACE_EXISTING))
        return ZipCreateFailed;
    open_ = false;
    return ZipOk;
}

void ArchiveOutput::Abandon() noexcept {
    if (!open_) return;
    open_ = false;
    if (created_) {
        sink_.Detach();
        ::DeleteFileW((temporary_.empty() ? zipFile_ : temporary_).c_str());
        return;
    }
    // The old central directory goes back where it was, and the file ends where it ended.
    if (sink_.Truncate(oldEnd_) && sink_.Write(oldTail_.data(), oldTail_.size())) (void)sink_.FlushAndCut();
    sink_.Detach();
}

} // namespace zipper
