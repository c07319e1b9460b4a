#include "zip_job.h"
#include "ansi.h"
#include "quoting.h"
#include "fileutil/paths.h"
#include "frame/errors.h"
#include "frame/messages.h"

namespace tol {
namespace {

ArchiveLibrary gZipLibrary(L"DZIP32.dll", "dzip");

constexpr long kInvalidParameters = 16;  // the library's code for an invalid combination of control parameters

std::int32_t FunctionOf(long action) {
    switch (action) {
    case 0: return ZipAdd;
    case 1: return ZipFreshen;
    case 2: return ZipUpdate;
    default: throw truntime_error(kZipResults.Text(kInvalidParameters));
    }
}

std::uint16_t OptionsOf(const ZipSettings& s) {
    std::uint16_t options = ZipUtf8Names;
    if (!s.noPaths && !s.pathInfo) options |= ZipRelativePaths;
    if (s.shortNames) options |= ZipShortNames;
    if (s.skipLocked) options |= ZipSkipLocked;
    if (s.archiveOnly) options |= ZipArchiveOnly;
    if (s.clearArchive) options |= ZipResetArchive;
    return options;
}

} // namespace

ZipJob::ZipJob(IBuildRun* build, bool logDetail) : ArchiveJob(build, logDetail) {}

void ZipJob::Fill(const ZipSettings& settings) {
    block_ = ZipCommandBlock{};
    block_.size = sizeof block_;
    block_.function = FunctionOf(settings.action);
    FillTexts(settings);
    FillSwitches(settings);
    FillCallbacks();
}

void ZipJob::FillTexts(const ZipSettings& s) {
    zipFile_ = ToAnsi(s.dest);
    item_ = QuoteArgument(ToAnsi(CombinePath(s.source, L"*.*")));
    comment_ = ToAnsi(s.comment);
    include_ = QuoteMaskList(s.include);
    exclude_ = QuoteMaskList(s.exclude);
    block_.zipFile = zipFile_.c_str();
    block_.item = item_.c_str();
    block_.hasComment = comment_.empty() ? 0 : 1;
    block_.comment = comment_.c_str();
    block_.hasInclude = include_.empty() ? 0 : 1;
    block_.include = include_.c_str();
    block_.hasExclude = exclude_.empty() ? 0 : 1;
    block_.exclude = exclude_.c_str();
}

void ZipJob::FillSwitches(const ZipSettings& s) {
    block_.recurse = s.recurse ? 1 : 0;
    block_.compression = s.compression;
    block_.fileMessages = 1;
    block_.folderEntries = 1;
    block_.allowZip64 = 1;
    block_.grow = s.grow ? -1 : 0;  // VARIANT_TRUE widened to 32 bits
    block_.noPaths = s.noPaths ? 1 : 0;
    block_.hiddenFiles = s.hidden ? 1 : 0;
    block_.options = OptionsOf(s);
    block_.extendedTimes = 1;
}

void ZipJob::FillCallbacks() {
    block_.cancel = &ArchiveJob::OnCancel;
    block_.cancelData = this;
    block_.message = &ArchiveJob::OnMessage;
    block_.messageData = this;
    block_.confirm = &ArchiveJob::OnConfirm;
    block_.confirmData = this;
}

StepStatus ZipJob::Run() { return CallLibrary(gZipLibrary, &block_, kZipResults); }

void ZipJob::LogLibraryMessage(const char* text) { LogMessage(LogSink(), Widen(text, CP_ACP)); }

std::wstring ZipJob::SourceFolder() const {
    std::wstring folder = Widen(item_, CP_ACP);
    if (!folder.empty() && folder.front() == L'"') folder.erase(0, 1);
    if (!folder.empty() && folder.back() == L'"') folder.pop_back();
    folder.resize(folder.size() >= 4 ? folder.size() - 4 : 0);
    return folder;
}

std::wstring ZipJob::ZipFile() const { return Widen(zipFile_, CP_ACP); }

} // namespace tol
