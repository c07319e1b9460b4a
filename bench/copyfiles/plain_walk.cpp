// The least platform work an incremental comparison of two trees needs: FindFirstFileW over the source, and for
// each file one open of the source and one of its destination, each reading the last-write time and the size
// through that one handle. Usage: copyfiles-plain-walk SOURCE DEST; prints how many files are the same.
#include "frame/handles.h"
#include <cstdio>
#include <string>

namespace {

struct Stamp {
    ULONGLONG written = 0;
    LONGLONG size = -1;
};

bool IsDotEntry(const WIN32_FIND_DATAW& entry) {
    return entry.cFileName[0] == L'.' &&
           (entry.cFileName[1] == L'\0' || (entry.cFileName[1] == L'.' && entry.cFileName[2] == L'\0'));
}

bool ReadStamp(const std::wstring& path, Stamp& stamp) {
    const tol::unique_file file(
        ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    FILETIME time{};
    LARGE_INTEGER size{};
    if (!file || !::GetFileTime(file.get(), nullptr, nullptr, &time) || !::GetFileSizeEx(file.get(), &size)) return false;
    stamp.written = (static_cast<ULONGLONG>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    stamp.size = size.QuadPart;
    return true;
}

void WalkTree(const std::wstring& source, const std::wstring& dest, unsigned long& same, unsigned long& differ) {
    WIN32_FIND_DATAW entry;
    const tol::unique_find find(::FindFirstFileW((source + L"\\*").c_str(), &entry));
    if (!find) return;
    do {
        if (IsDotEntry(entry)) continue;
        const std::wstring from = source + L"\\" + entry.cFileName, to = dest + L"\\" + entry.cFileName;
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
            WalkTree(from, to, same, differ);
            continue;
        }
        Stamp a, b;
        const bool equal = ReadStamp(from, a) && ReadStamp(to, b) && a.size == b.size &&
                           (a.written > b.written ? a.written - b.written : b.written - a.written) <= 20000000;
        ++(equal ? same : differ);
    } while (::FindNextFileW(find.get(), &entry));
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc != 3) {
        std::fwprintf(stderr, L"usage: copyfiles-plain-walk SOURCE DEST\n");
        return 2;
    }
    unsigned long same = 0, differ = 0;
    WalkTree(argv[1], argv[2], same, differ);
    std::wprintf(L"%lu file(s) the same, %lu different\n", same, differ);
    return 0;
}
