#include "options.h"
#include "common/long_path.h"
#include "common/text.h"
#include "format/command_line.h"

namespace unzipper {
namespace {

bool ReadMasks(const char* list, std::vector<std::wstring>& masks) {
    std::vector<std::string> arguments;
    if (list && !zipformat::SplitArguments(list, arguments)) return false;
    for (const std::string& argument : arguments) masks.push_back(zipwin::ToWide(argument, CP_ACP));
    if (masks.empty()) masks.push_back(L"*");
    return true;
}

std::string WithoutSeparator(std::string folder) {
    if (!folder.empty() && (folder.back() == '\\' || folder.back() == '/')) folder.pop_back();
    return folder;
}

void ReadSwitches(const tol::UnzipCommandBlock& b, UnzipOptions& o) {
    o.freshen = b.freshen != 0;
    o.update = b.update != 0;
    o.restoreTimes = b.restoreTimes != 0;
    o.dropFolders = b.dropFolders != 0;
    o.recurse = b.recurse != 0;
    o.overwriteReadOnly = (b.options & tol::UnzipOverwriteReadOnly) != 0;
    o.shortNames = (b.options & tol::UnzipShortNames) != 0;
    o.nameCodePage = (b.options & tol::UnzipOemNames) ? zipwin::kOemNames : CP_ACP;
    o.callbacks = {b.cancel, b.cancelData, b.message, b.messageData, b.confirm, b.confirmData};
}

} // namespace

UnzipResult ReadOptions(const tol::UnzipCommandBlock& b, UnzipOptions& o) {
    if (b.size != sizeof(tol::UnzipCommandBlock) || b.function != tol::kUnzipExtract) return UnzipSyntaxError;
    if (!b.zipFile || !*b.zipFile || !ReadMasks(b.files, o.masks)) return UnzipSyntaxError;
    ReadSwitches(b, o);
    o.zipFile = zipwin::FullPath(zipwin::ToWide(b.zipFile, CP_ACP));
    o.messageFolder = WithoutSeparator(b.destination ? b.destination : "");
    const std::wstring destination = zipwin::ToWide(o.messageFolder, CP_ACP);
    o.destination = zipwin::FullPath(destination.empty() ? L"." : destination + L"\\");
    while (!o.destination.empty() && (o.destination.back() == L'\\' || o.destination.back() == L'/'))
        o.destination.pop_back();
    return o.zipFile.empty() || o.destination.empty() ? UnzipSyntaxError : UnzipOk;
}

} // namespace unzipper
