#include "unzip_job.h"
#include "ansi.h"
#include "quoting.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include <cstring>

namespace tol {
namespace {

ArchiveLibrary gUnzipLibrary(L"DUNZIP32.dll", "dunzip");

constexpr size_t kLeadLength = 13;       // the library's lead before the extracted file's full path
constexpr long kCommandSyntaxError = 47;

size_t LengthWithoutSeparator(const std::string& folder) {
    const size_t length = folder.size();
    return length > 0 && (folder.back() == '\\' || folder.back() == '/') ? length - 1 : length;
}

} // namespace

UnzipJob::UnzipJob(IBuildRun* build, bool logDetail, std::string destination)
    : ArchiveJob(build, logDetail), destination_(std::move(destination)),
      destinationLength_(LengthWithoutSeparator(destination_)) {}

void UnzipJob::Fill(const UnzipSettings& s) {
    if (s.action < 0 || s.action > 2) throw truntime_error(kUnzipResults.Text(kCommandSyntaxError));
    zipFile_ = ToAnsi(s.source);
    files_ = QuoteMaskList(s.masks);
    if (files_.empty()) files_ = "*.*";
    block_ = UnzipCommandBlock{};
    block_.size = sizeof block_;
    block_.function = kUnzipExtract;
    block_.zipFile = zipFile_.c_str();
    block_.files = files_.c_str();
    block_.destination = destination_.c_str();
    block_.freshen = s.action == 1 ? 1 : 0;
    block_.update = s.action == 2 ? 1 : 0;
    block_.restoreTimes = 1;
    block_.dropFolders = s.pathInfo ? 0 : 1;
    block_.recurse = s.recurse ? 1 : 0;
    block_.message = &ArchiveJob::OnMessage;
    block_.messageData = this;
    block_.cancel = &ArchiveJob::OnCancel;
    block_.cancelData = this;
    block_.confirm = &ArchiveJob::OnConfirm;
    block_.confirmData = this;
    block_.options = static_cast<std::uint16_t>(UnzipOemNames | (s.shortNames ? UnzipShortNames : 0) |
                                                (s.overwriteReadOnly ? UnzipOverwriteReadOnly : 0));
}

StepStatus UnzipJob::Run() { return CallLibrary(gUnzipLibrary, &block_, kUnzipResults); }

void UnzipJob::LogLibraryMessage(const char* text) {
    const size_t skip = kLeadLength + destinationLength_;
    const size_t length = std::strlen(text);
    LogMessage(LogSink(), Widen(length >= skip ? text + skip : text, CP_ACP));
}

std::wstring UnzipJob::ZipFile() const { return Widen(zipFile_, CP_ACP); }
std::wstring UnzipJob::Destination() const { return Widen(destination_, CP_ACP); }

} // namespace tol
