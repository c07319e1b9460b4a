#include "unzip_run.h"
#include "extract_file.h"
#include "selection.h"
#include "target.h"
#include "common/file_source.h"
#include "common/long_path.h"
#include "common/text.h"
#include "fileutil/fileops.h"
#include "format/central_directory.h"

namespace unzipper {
namespace {

const char* SkipReason(UnzipResult result) {
    switch (result) {
    case UnzipSkipped: return " (unsafe name: not extracted)";
    case UnzipEncrypted: return " (encrypted)";
    case UnzipUnknownMethod: return " (unknown compression method)";
    case UnzipBadCrc: return " (bad CRC)";
    case UnzipCreateFailed: return " (cannot be written)";
    default: return " (damaged data)";
    }
}

UnzipResult OpenArchive(const UnzipOptions& options, zipwin::FileSource& source, zipformat::Archive& archive) {
    const std::wstring path = zipwin::SystemPath(options.zipFile);
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_DIRECTORY)) return UnzipNotFound;
    if (!source.Open(path)) return UnzipOpenFailed;
    return ResultOf(zipformat::ReadArchive(source, archive));
}

class Extraction {
public:
    Extraction(const UnzipOptions& options, zipwin::FileSource& source, const zipformat::Archive& archive)
        : options_(options), archive_(archive), reporter_(options.callbacks, true), selection_(options.masks, options.recurse),
          targets_(options), files_(options, source, archive, reporter_) {}

    UnzipResult Run();

private:
    // False when the call must end now.
    bool ExtractEntry(const zipformat::Entry& entry);
    void Skip(const std::wstring& name, UnzipResult result, const char* reason);

    const UnzipOptions& options_;
    const zipformat::Archive& archive_;
    zipwin::Reporter reporter_;
    EntrySelection selection_;
    TargetMaker targets_;
    FileExtractor files_;
    UnzipResult first_ = UnzipOk;  // the first entry that did not come out
    bool selected_ = false;
};

void Extraction::Skip(const std::wstring& name, UnzipResult result, const char* reason) {
    reporter_.FileMessage(FileMessageText(kSkippedLead, options_, name) + reason);
    if (first_ == UnzipOk) first_ = result;
}

bool Extraction::ExtractEntry(const zipformat::Entry& entry) {
    Target target;
    std::wstring name;
    if (!targets_.Make(entry, target, name)) {
        Skip(name, UnzipSkipped, SkipReason(UnzipSkipped));
        return true;
    }
    if (target.folder) {
        if (!options_.dropFolders && !tol::IsExistingFolder(target.path) && !tol::CreatePath(target.path + L"\\"))
            Skip(target.relative, UnzipCreateFailed, SkipReason(UnzipCreateFailed));
        return true;
    }
    UnzipResult result = UnzipOk;
    const FileOutcome outcome = files_.Extract(entry, target, result);
    if (outcome == FileOutcome::ReadOnly) Skip(target.relative, UnzipCreateFailed, " (read-only: not replaced)");
    if (outcome != FileOutcome::Failed) return true;
    if (EndsExtraction(result)) {
        first_ = result;
        return false;
    }
    Skip(target.relative, result, SkipReason(result));
    return true;
}

UnzipResult Extraction::Run() {
    if (!tol::IsExistingFolder(options_.destination) && !tol::CreatePath(zipwin::SystemPath(options_.destination) + L"\\"))
        return UnzipCreateFailed;
    reporter_.SetTotal(archive_.entries.size());
    for (const zipformat::Entry& entry : archive_.entries) {
        if (reporter_.Cancelled()) return UnzipCancelled;
        reporter_.EntryDone();
        if (!selection_.Selects(zipwin::ToWide(entry.name, zipwin::NameCodePage(entry, options_.nameCodePage)))) continue;
        selected_ = true;
        if (!ExtractEntry(entry)) return first_;
    }
    if (first_ != UnzipOk) return first_;
    return selected_ ? UnzipOk : UnzipNothingSelected;
}

} // namespace

UnzipResult RunUnzip(const UnzipOptions& options) {
    zipwin::FileSource source;
    zipformat::Archive archive;
    const UnzipResult opened = OpenArchive(options, source, archive);
    if (opened != UnzipOk) return opened;
    Extraction extraction(options, source, archive);
    return extraction.Run();
}

} // namespace unzipper
