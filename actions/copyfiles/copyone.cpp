#include "copyone.h"
#include "classify.h"
#include "destination.h"
#include "loglines.h"
#include "progress.h"
#include "retry.h"
#include "fileutil/fileops.h"
#include "frame/handles.h"
#include <new>

namespace tol {
namespace {

constexpr unsigned kCannotCopy = 63;  // "Error copying file '%1': %2"

const wchar_t* OutcomePrefix(CopyOutcome outcome) noexcept {
    switch (outcome) {
    case CopyOutcome::New:
        return LinePrefix::kNewFile;
    case CopyOutcome::Different:
        return LinePrefix::kDifferent;
    case CopyOutcome::Copy:
        return LinePrefix::kCopying;
    default:
        return LinePrefix::kSame;
    }
}

// Removes what a failed attempt left under the temporary name, keeping the attempt's error code for the
// retry rule.
bool DiscardPartialCopy(const std::wstring& partial) noexcept {
    const DWORD code = ::GetLastError();
    (void)DeleteFileForced(partial);
    ::SetLastError(code);
    return false;
}

// A destination that another process holds open refuses to be replaced with ERROR_ACCESS_DENIED, where a copy
// straight onto it meets ERROR_SHARING_VIOLATION: the passing error that it is, and that the retry rule waits out.
void ExplainRefusedReplacement(const std::wstring& destination) noexcept {
    if (::GetLastError() != ERROR_ACCESS_DENIED) return;
    const unique_file probe(::CreateFileW(destination.c_str(), GENERIC_WRITE | DELETE,
                                          FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                                          0, nullptr));
    ::SetLastError(!probe && ::GetLastError() == ERROR_SHARING_VIOLATION ? ERROR_SHARING_VIOLATION : ERROR_ACCESS_DENIED);
}

// A partial copy that an interrupted run left (read-only or hidden like its source, which a copy over it would
// trip on) goes first.
bool CopyThroughPartialName(CopyFilesRun& run, const std::wstring& source, const std::wstring& destination) {
    const std::wstring partial = PartialCopyName(destination);
    (void)DeleteFileForced(partial);
    if (!::CopyFileExW(source.c_str(), partial.c_str(), CopyProgress, &run, nullptr, 0))
        return DiscardPartialCopy(partial);
    if (!::MoveFileExW(partial.c_str(), destination.c_str(), MOVEFILE_REPLACE_EXISTING)) {
        ExplainRefusedReplacement(destination);
        return DiscardPartialCopy(partial);
    }
    return true;
}

void ClearArchiveBit(const std::wstring& path) noexcept {
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || !(attributes & FILE_ATTRIBUTE_ARCHIVE)) return;
    const DWORD kept = attributes & ~FILE_ATTRIBUTE_ARCHIVE;
    (void)::SetFileAttributesW(path.c_str(), kept ? kept : FILE_ATTRIBUTE_NORMAL);
}

// The comparison without looking at the destination where its folder was missing when the level began: no
// file can be there but what this level copied, and the level copies each name once. With Flat every level
// copies into the root, so a name may have come from an earlier level.
CopyOutcome Classify(const CopyFilesRun& run, const std::wstring& source, const std::wstring& destination,
                     const LevelFolder& level) noexcept {
    if (run.incremental && level.wasMissing && !run.flat) return CopyOutcome::New;
    return ClassifyFile(run, source, destination);
}

// With Flat and a destination inside the source tree, the walk meets the copies it made: a file that is its
// own destination is up to date, never copied onto itself (nor, with Move, deleted as its own copy).
bool IsItsOwnDestination(const std::wstring& source, const std::wstring& destination) noexcept {
    return ::lstrcmpiW(source.c_str(), destination.c_str()) == 0;
}

// A copy over an existing file takes the source's read-only, hidden and system bits, as the platform gives them
// to a new file (Wine's CopyFileExW leaves an overwritten file's attributes as they were).
void MatchSourceAttributes(DWORD sourceAttributes, const std::wstring& destination) noexcept {
    constexpr DWORD kCopied = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
    const DWORD current = ::GetFileAttributesW(destination.c_str());
    if (sourceAttributes == INVALID_FILE_ATTRIBUTES || current == INVALID_FILE_ATTRIBUTES) return;
    if ((current & kCopied) == (sourceAttributes & kCopied)) return;
    const DWORD wanted = (current & ~kCopied & ~FILE_ATTRIBUTE_DIRECTORY) | (sourceAttributes & kCopied);
    (void)::SetFileAttributesW(destination.c_str(), wanted ? wanted : FILE_ATTRIBUTE_NORMAL);
}

// Copies under the retry rule, then the attribute fixes and the move's delete; failures of those are ignored.
StepStatus CopyAndFinish(CopyFilesRun& run, const SourceFile& source, const std::wstring& destination,
                         CopyOutcome outcome) {
    // A missing destination has no attributes to clear: the calls are saved where the comparison saw it missing.
    if (outcome != CopyOutcome::New) (void)::SetFileAttributesW(destination.c_str(), FILE_ATTRIBUTE_NORMAL);
    const StepStatus copied =
        RunWithRetries(run, kCannotCopy, destination, [&] { return CopyFileOnce(run, source.path, destination); });
    if (copied != StepSucceeded) return copied;
    if (outcome != CopyOutcome::New) MatchSourceAttributes(source.attributes, destination);
    if (run.archive && run.clearArchive) ClearArchiveBit(source.path);
    if (!run.readOnly) (void)ClearReadOnly(destination);
    if (run.move) (void)DeleteFileForced(source.path);
    return StepSucceeded;
}

} // namespace

std::wstring PartialCopyName(const std::wstring& destination) { return destination + L".velmora-partial"; }

bool CopyFileOnce(CopyFilesRun& run, const std::wstring& source, const std::wstring& destination) noexcept {
    if (run.restartable)
        return ::CopyFileExW(source.c_str(), destination.c_str(), CopyProgress, &run, nullptr, COPY_FILE_RESTARTABLE);
    try {
        return CopyThroughPartialName(run, source, destination);
    } catch (const std::bad_alloc&) {
        ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
}

StepStatus CopyOneFile(CopyFilesRun& run, const SourceFile& source, const std::wstring& destination, LevelFolder& level) {
    const StepStatus ready = EnsureDestinationFolder(run, source.path, destination, true, level);
    if (ready != StepSucceeded) return ready;
    const CopyOutcome outcome = IsItsOwnDestination(source.path, destination) ? CopyOutcome::Same
                                                                              : Classify(run, source.path, destination, level);
    if (outcome == CopyOutcome::Same) {
        if (run.logUpToDate) LogItem(run, LinePrefix::kSame, source.path, run.sourceRoot);
        return StepSucceeded;
    }
    if (run.logCopied) LogItem(run, OutcomePrefix(outcome), source.path, run.sourceRoot);
    if (!run.noCopy) {
        const StepStatus copied = CopyAndFinish(run, source, destination, outcome);
        if (copied != StepSucceeded) return copied;
    }
    ++run.filesCounted;
    return StepSucceeded;
}

} // namespace tol
