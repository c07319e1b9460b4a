#include "settings.h"
#include "fileutil/paths.h"
#include "frame/messages.h"
#include "frame/step.h"
#include <shlwapi.h>

namespace tol {
namespace {

constexpr unsigned kFolderEmpty = 34;      // "%1 Folder cannot be empty"
constexpr unsigned kSameFolders = 39;      // "Source and destination folders must be different."

std::optional<CopySettings> Reject(IBuildRun* build, unsigned messageId, std::initializer_list<MessageArg> inserts = {}) {
    LogMessage(build, FormatResourceMessage(messageId, inserts));
    return std::nullopt;
}

// The options, in the order in which the action has always asked for them.
void ReadOptions(IBuildRun* build, IBuildStep* step, CopySettings& s) {
    s.delay = GetStepLong(step, build, L"Delay");
    s.retries = GetStepLong(step, build, L"Retries");
    struct Flag {
        const wchar_t* name;
        bool CopySettings::*field;
    };
    static constexpr Flag kFlags[] = {
        {L"TBD", &CopySettings::tbd},           {L"ShortNames", &CopySettings::shortNames},
        {L"ClearArchive", &CopySettings::clearArchive}, {L"Archive", &CopySettings::archive},
        {L"Hidden", &CopySettings::hidden},     {L"ReadOnly", &CopySettings::readOnly},
        {L"Restartable", &CopySettings::restartable},   {L"LogUpToDate", &CopySettings::logUpToDate},
        {L"LogCopied", &CopySettings::logCopied},       {L"NoCopy", &CopySettings::noCopy},
        {L"MoveDirs", &CopySettings::moveDirs}, {L"Move", &CopySettings::move},
        {L"Purge", &CopySettings::purge},       {L"Incremental", &CopySettings::incremental},
        {L"Flat", &CopySettings::flat},         {L"Empty", &CopySettings::empty},
        {L"Recurse", &CopySettings::recurse},
    };
    for (const Flag& flag : kFlags) s.*flag.field = GetStepBool(step, build, flag.name);
}

} // namespace

std::wstring RootPath(const std::wstring& typed) {
    if (typed.empty()) return typed;
    const std::wstring root = CombinePath(typed);
    if (root.size() >= MAX_PATH) return root;  // beyond what the platform's canonicaliser takes: as typed
    std::wstring canonical(MAX_PATH, L'\0');   // the size PathCanonicalizeW writes into, by its contract
    if (!::PathCanonicalizeW(canonical.data(), root.c_str())) return root;
    canonical.resize(::lstrlenW(canonical.c_str()));
    return canonical;
}

std::optional<CopySettings> ReadCopySettings(IBuildRun* build, IBuildStep* step) {
    const bool ignoreSource = GetStepBool(step, build, L"IgnoreSrc");
    std::wstring source = RootPath(GetStepText(step, build, L"SourceDir"));
    if (source.empty() && !ignoreSource) return Reject(build, kFolderEmpty, {L"Source"});
    std::wstring dest = RootPath(GetStepText(step, build, L"DestDir"));
    if (dest.empty()) return Reject(build, kFolderEmpty, {L"Dest"});
    if (::lstrcmpiW(source.c_str(), dest.c_str()) == 0) return Reject(build, kSameFolders);

    CopySettings s{std::move(source), std::move(dest), FileMaskFilter(L"", L"", true)};
    s.ignoreSrc = ignoreSource;
    ReadOptions(build, step, s);
    const std::wstring exclude = GetStepText(step, build, L"ExclExt");
    const std::wstring include = GetStepText(step, build, L"Ext");
    s.filter = FileMaskFilter(include, exclude, true);
    return s;
}

} // namespace tol
