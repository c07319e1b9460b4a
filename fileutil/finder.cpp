// Enumerating one folder with FindFirstFileW and FindNextFileW.
#include "finder.h"
#include "paths.h"
#include <new>

namespace tol {
namespace {

// GetFullPathNameW into a buffer that grows to what it asks for, so long (\\?\) patterns pass.
bool FullPathName(const std::wstring& path, std::wstring* full) {
    DWORD capacity = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    for (int attempt = 0; attempt < 3 && capacity != 0; ++attempt) {
        full->assign(capacity, L'\0');
        const DWORD length = ::GetFullPathNameW(path.c_str(), capacity, full->data(), nullptr);
        if (length == 0) return false;
        if (length < capacity) {
            full->resize(length);
            return true;
        }
        capacity = length;  // the current folder changed in between: ask again
    }
    return false;
}

} // namespace

bool DirectoryFinder::FindFirst(const std::wstring& pattern) noexcept {
    try {
        return Start(pattern);
    } catch (const std::bad_alloc&) {
        Close();
        ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return false;
    }
}

bool DirectoryFinder::Start(const std::wstring& pattern) {
    Close();
    handle_.reset(::FindFirstFileW(pattern.c_str(), &entry_));
    if (!handle_) {
        const DWORD code = ::GetLastError();
        Close();
        ::SetLastError(code);
        return false;
    }
    std::wstring full;
    if (!FullPathName(pattern, &full)) {
        Close();
        ::SetLastError(ERROR_INVALID_NAME);
        return false;
    }
    folder_ = DirectoryPart(full, false);
    firstPending_ = true;
    return true;
}

bool DirectoryFinder::FindNext() noexcept {
    if (!handle_) return false;
    if (firstPending_) {
        firstPending_ = false;
        return true;
    }
    return ::FindNextFileW(handle_.get(), &entry_) != FALSE;
}

void DirectoryFinder::Close() noexcept {
    handle_.reset();
    firstPending_ = false;
}

bool DirectoryFinder::IsDotEntry() const noexcept {
    const wchar_t* name = entry_.cFileName;
    return IsFolder() && name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

const wchar_t* DirectoryFinder::ShortName() const noexcept {
    return entry_.cAlternateFileName[0] ? entry_.cAlternateFileName : entry_.cFileName;
}

std::wstring DirectoryFinder::FullPath() const { return CombinePath(folder_, entry_.cFileName); }

} // namespace tol
