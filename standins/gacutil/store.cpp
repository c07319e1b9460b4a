#include "store.h"
#include "failure.h"
#include "files.h"
#include "names.h"
#include <windows.h>

namespace gac {
namespace {

std::wstring EnvironmentValue(const wchar_t* name) {
    std::wstring value(256, L'\0');
    for (;;) {
        const DWORD length = ::GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size()));
        if (length < value.size()) return value.substr(0, length); // 0 also when it is not set
        value.resize(length);
    }
}

std::wstring ProgramFolder() {
    std::wstring path(1024, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
        if (length == 0) Fail(L"Cannot find this program's folder: " + SystemText(::GetLastError()));
        if (length < path.size()) return FullPath(path.substr(0, path.find_last_of(L"\\/", length)));
        path.resize(path.size() * 2);
    }
}

std::wstring WithoutTrailingSeparators(std::wstring path) {
    while (!path.empty() && IsSeparator(path.back())) path.pop_back();
    return path;
}

void RequireValidName(const std::wstring& name, const std::wstring& from) {
    if (!IsValidAssemblyName(name)) Fail(L"\"" + from + L"\" does not give a usable assembly name.");
}

} // namespace

std::wstring StoreFolder() {
    const std::wstring configured = EnvironmentValue(kStoreVariable);
    if (!configured.empty()) return WithoutTrailingSeparators(FullPath(configured));
    return ProgramFolder() + L"\\gac";
}

std::wstring Store::EntryFolder(const std::wstring& name) const { return folder_ + L"\\" + name; }

Installed Store::Install(const std::wstring& assemblyFile, bool force) {
    const std::wstring source = FullPath(assemblyFile);
    if (IsFolder(source)) Fail(L"The assembly file " + source + L" is a folder.");
    if (!IsFile(source)) Fail(L"The assembly file " + source + L" was not found.");
    const std::wstring name = AssemblyNameOfFile(source);
    RequireValidName(name, source);
    const std::wstring entry = EntryFolder(name), copy = entry + L"\\" + FileNamePart(source);
    const bool present = IsFolder(entry);
    if (present) {
        if (IsFile(copy) && SameContents(source, copy)) return {name, InstallOutcome::AlreadyIdentical};
        if (!force) Fail(L"A different assembly named " + name + L" is already in the cache; /if replaces it.");
        RemoveFolderTree(entry);
    }
    CreateFolderPath(entry);
    CopyOneFile(source, copy);
    return {name, present ? InstallOutcome::Replaced : InstallOutcome::Added};
}

void Store::Uninstall(const std::wstring& name) {
    const std::wstring entry = EntryFolder(name);
    if (!IsFolder(entry)) Fail(L"No assembly named " + name + L" is in the cache.");
    RemoveFolderTree(entry);
}

std::vector<std::wstring> Store::List() const {
    std::vector<std::wstring> assemblies;
    for (const FolderEntry& entry : ListFolder(folder_)) {
        if (!entry.isFolder) continue;
        std::wstring line = entry.name;
        for (const FolderEntry& file : ListFolder(EntryFolder(entry.name)))
            if (!file.isFolder) line += L" (" + file.name + L")";
        assemblies.push_back(line);
    }
    return assemblies;
}

} // namespace gac
