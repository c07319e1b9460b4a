#include "entry_names.h"
#include "common/text.h"
#include "fileutil/paths.h"
#include <windows.h>
#include <algorithm>

namespace zipper {
namespace {

std::wstring ShortPath(const std::wstring& path) {
    DWORD capacity = ::GetShortPathNameW(path.c_str(), nullptr, 0);
    for (int attempt = 0; attempt < 3 && capacity != 0; ++attempt) {
        std::wstring result(capacity, L'\0');
        const DWORD length = ::GetShortPathNameW(path.c_str(), result.data(), capacity);
        if (length == 0) break;
        if (length < capacity) {
            result.resize(length);
            return result;
        }
        capacity = length;
    }
    return path;
}

// The full path without its root (drive, server and share, \\?\ prefix), "/" between folders, "/" at the end.
std::wstring FullPrefix(const std::wstring& folder, bool shortNames) {
    const std::wstring path = shortNames ? ShortPath(folder) : folder;
    std::wstring rest = path.substr(std::min(tol::PathRootLength(path), path.size()));
    std::replace(rest.begin(), rest.end(), L'\\', L'/');
    while (!rest.empty() && rest.back() == L'/') rest.pop_back();
    return rest.empty() ? rest : rest + L'/';
}

} // namespace

EntryNamer::EntryNamer(const ZipOptions& options, const std::wstring& folder)
    : mode_(options.paths), shortNames_(options.shortNames) {
    if (mode_ == PathMode::Full) prefix_ = FullPrefix(folder, shortNames_);
}

EntryNamer EntryNamer::Enter(const std::wstring& longName, const std::wstring& shortName) const {
    EntryNamer inner;
    inner.mode_ = mode_;
    inner.shortNames_ = shortNames_;
    if (mode_ != PathMode::None) inner.prefix_ = prefix_ + (shortNames_ ? shortName : longName) + L'/';
    inner.relative_ = relative_.empty() ? longName : relative_ + L'\\' + longName;
    return inner;
}

std::wstring EntryNamer::FileName(const std::wstring& longName, const std::wstring& shortName) const {
    return prefix_ + (shortNames_ ? shortName : longName);
}

std::string StoredName(const std::wstring& name, bool utf8Names, bool& utf8) {
    utf8 = utf8Names && !zipwin::IsAscii(name);
    return zipwin::ToNarrow(name, utf8 ? CP_UTF8 : zipwin::kOemNames);
}

} // namespace zipper
