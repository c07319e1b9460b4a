// The least a tree copy costs on this platform: FindFirstFileW over the source, CreateDirectoryW and CopyFileExW
// for every entry, nothing else. Usage: copyfiles-plain-copy SOURCE DEST; prints the number of files copied.
#include "frame/handles.h"
#include <cstdio>
#include <string>

namespace {

bool IsDotEntry(const WIN32_FIND_DATAW& entry) {
    return entry.cFileName[0] == L'.' &&
           (entry.cFileName[1] == L'\0' || (entry.cFileName[1] == L'.' && entry.cFileName[2] == L'\0'));
}

// Returns false at the first failure, after printing it.
bool CopyTree(const std::wstring& source, const std::wstring& dest, unsigned long& files) {
    if (!::CreateDirectoryW(dest.c_str(), nullptr) && ::GetLastError() != ERROR_ALREADY_EXISTS) return false;
    WIN32_FIND_DATAW entry;
    const tol::unique_find find(::FindFirstFileW((source + L"\\*").c_str(), &entry));
    if (!find) return false;
    do {
        if (IsDotEntry(entry)) continue;
        const std::wstring from = source + L"\\" + entry.cFileName, to = dest + L"\\" + entry.cFileName;
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            if (!CopyTree(from, to, files)) return false;
        } else {
            if (!::CopyFileExW(from.c_str(), to.c_str(), nullptr, nullptr, nullptr, 0)) {
                std::fwprintf(stderr, L"copy of %ls failed: %lu\n", from.c_str(), ::GetLastError());
                return false;
            }
            ++files;
        }
    } while (::FindNextFileW(find.get(), &entry));
    return true;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc != 3) {
        std::fwprintf(stderr, L"usage: copyfiles-plain-copy SOURCE DEST\n");
        return 2;
    }
    unsigned long files = 0;
    const bool copied = CopyTree(argv[1], argv[2], files);
    std::wprintf(L"%lu file(s) copied\n", files);
    return copied ? 0 : 1;
}
