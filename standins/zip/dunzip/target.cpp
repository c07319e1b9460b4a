#include "target.h"
#include "common/long_path.h"
#include "common/text.h"
#include "format/entry_path.h"
#include <windows.h>

namespace unzipper {
namespace {

std::wstring Join(const std::vector<std::wstring>& components, size_t count) {
    std::wstring joined;
    for (size_t i = 0; i < count; ++i) {
        if (i) joined += L'\\';
        joined += components[i];
    }
    return joined;
}

std::wstring DisplayName(const zipformat::Entry& entry, unsigned codePage) {
    std::wstring name = zipwin::ToWide(entry.name, zipwin::NameCodePage(entry, codePage));
    for (wchar_t& c : name)
        if (c == L'/') c = L'\\';
    return name;
}

} // namespace

// A component that decodes to a separator, a colon or nothing (bytes the code page cannot take) is unsafe too.
bool TargetMaker::Decode(const zipformat::Entry& entry, std::vector<std::wstring>& components) const {
    zipformat::EntryPath path;
    if (!zipformat::SplitEntryPath(entry.name, path)) return false;
    const UINT codePage = zipwin::NameCodePage(entry, options_.nameCodePage);
    for (const std::string& component : path.components) {
        std::wstring wide = zipwin::ToWide(component, codePage);
        if (wide.empty() || wide.find_first_of(L"\\/:") != std::wstring::npos) return false;
        components.push_back(std::move(wide));
    }
    return true;
}

bool TargetMaker::LiesInside(const std::wstring& full) const {
    const std::wstring resolved = zipwin::FoldCase(zipwin::FullPath(full));
    const std::wstring root = zipwin::FoldCase(options_.destination) + L"\\";
    return resolved.size() > root.size() && resolved.compare(0, root.size(), root) == 0;
}

// Each folder on the way that exists must be a plain folder: a link could lead out of the destination.
bool TargetMaker::CrossesLink(const std::vector<std::wstring>& components, size_t folders) {
    std::wstring folder = options_.destination;
    for (size_t i = 0; i < folders; ++i) {
        folder += L'\\';
        folder += components[i];
        const std::wstring key = zipwin::FoldCase(folder);
        if (checkedFolders_.count(key)) continue;
        const DWORD attributes = ::GetFileAttributesW(zipwin::SystemPath(folder).c_str());
        if (attributes == INVALID_FILE_ATTRIBUTES) return false;  // missing from here on: created as plain folders
        if (attributes & FILE_ATTRIBUTE_REPARSE_POINT) return true;
        checkedFolders_.insert(key);
    }
    return false;
}

bool TargetMaker::Make(const zipformat::Entry& entry, Target& target, std::wstring& displayName) {
    displayName = DisplayName(entry, options_.nameCodePage);
    std::vector<std::wstring> components;
    if (!Decode(entry, components)) return false;
    target.folder = entry.IsFolder();
    if (options_.dropFolders) components.erase(components.begin(), components.end() - 1);
    if (options_.shortNames) {
        std::wstring folder;
        for (std::wstring& component : components) {
            component = shortNamer_.ShortName(folder, component);
            folder += L'\\' + component;
        }
    }
    target.relative = Join(components, components.size());
    const std::wstring full = options_.destination + L'\\' + target.relative;
    if (!LiesInside(full) || CrossesLink(components, components.size() - (target.folder ? 0 : 1))) return false;
    target.path = zipwin::SystemPath(full);
    return true;
}

} // namespace unzipper
