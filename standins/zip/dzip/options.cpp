#include "options.h"
#include "common/long_path.h"
#include "common/text.h"
#include "format/command_line.h"
#include "format/records.h"

namespace zipper {
namespace {

// A quoted argument list as masks for the file-mask filter, one per line.
bool ReadMasks(bool present, const char* list, std::wstring& masks) {
    masks.clear();
    if (!present || !list) return true;
    std::vector<std::string> arguments;
    if (!zipformat::SplitArguments(list, arguments)) return false;
    for (const std::string& argument : arguments) masks += zipwin::ToWide(argument, CP_ACP) + L"\n";
    return true;
}

bool ReadItems(const char* item, std::vector<std::wstring>& items) {
    std::vector<std::string> arguments;
    if (!item || !zipformat::SplitArguments(item, arguments) || arguments.empty()) return false;
    for (const std::string& argument : arguments) items.push_back(zipwin::ToWide(argument, CP_ACP));
    return true;
}

bool IsKnownFunction(std::int32_t function) noexcept {
    return function == tol::ZipAdd || function == tol::ZipFreshen || function == tol::ZipUpdate;
}

void ReadSwitches(const tol::ZipCommandBlock& b, ZipOptions& o) {
    o.function = b.function;
    o.recurse = b.recurse != 0;
    o.level = b.compression > 9 ? 9 : b.compression;
    o.fileMessages = b.fileMessages != 0;
    o.folderEntries = b.folderEntries != 0;
    o.allowZip64 = b.allowZip64 != 0;
    o.grow = b.grow != 0;
    o.paths = b.noPaths ? PathMode::None : (b.options & tol::ZipRelativePaths) ? PathMode::Relative : PathMode::Full;
    o.hiddenFiles = b.hiddenFiles != 0;
    o.shortNames = (b.options & tol::ZipShortNames) != 0;
    o.skipLocked = (b.options & tol::ZipSkipLocked) != 0;
    o.archiveOnly = (b.options & tol::ZipArchiveOnly) != 0;
    o.resetArchive = (b.options & tol::ZipResetArchive) != 0;
    o.utf8Names = (b.options & tol::ZipUtf8Names) != 0;
    o.extendedTimes = b.extendedTimes != 0;
    o.callbacks = {b.cancel, b.cancelData, b.message, b.messageData, b.confirm, b.confirmData};
}

} // namespace

ZipResult ReadOptions(const tol::ZipCommandBlock& b, ZipOptions& o) {
    if (b.size != sizeof(tol::ZipCommandBlock) || !IsKnownFunction(b.function)) return ZipBadParameters;
    if (b.compression < 0 || b.compression > 19 || !b.zipFile || !*b.zipFile) return ZipBadParameters;
    ReadSwitches(b, o);
    o.zipFile = zipwin::FullPath(zipwin::ToWide(b.zipFile, CP_ACP));
    if (o.zipFile.empty() || !ReadItems(b.item, o.items)) return ZipBadParameters;
    if (!ReadMasks(b.hasInclude, b.include, o.include) || !ReadMasks(b.hasExclude, b.exclude, o.exclude))
        return ZipBadParameters;
    o.setComment = b.hasComment != 0 && b.comment;
    if (o.setComment) o.comment = b.comment;
    return o.comment.size() > zipformat::kMaxCommentSize ? ZipBadComment : ZipOk;
}

} // namespace zipper
