#include "files.h"
#include "failure.h"
#include "frame/handles.h"
#include "names.h"
#include <windows.h>
#include <vector>

namespace gac {
namespace {

// Full paths only: C:\... becomes \\?\C:\..., \\server\share\... becomes \\?\UNC\server\share\....
std::wstring Extended(const std::wstring& fullPath) {
    if (fullPath.rfind(L"\\\\?\\", 0) == 0 || fullPath.rfind(L"\\\\.\\", 0) == 0) return fullPath;
    if (fullPath.rfind(L"\\\\", 0) == 0) return L"\\\\?\\UNC\\" + fullPath.substr(2);
    return L"\\\\?\\" + fullPath;
}

[[noreturn]] void FailLastError(const std::wstring& what) {
    const DWORD code = ::GetLastError();
    Fail(what + L": " + SystemText(code));
}

tol::unique_file OpenForReading(const std::wstring& path) {
    tol::unique_file file(::CreateFileW(Extended(path).c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) FailLastError(L"Cannot open " + path);
    return file;
}

DWORD ReadChunk(HANDLE file, std::vector<char>& buffer, const std::wstring& path) {
    DWORD read = 0;
    if (!::ReadFile(file, buffer.data(), static_cast<DWORD>(buffer.size()), &read, nullptr))
        FailLastError(L"Cannot read " + path);
    return read;
}

// A drive ("C:"), a share (\\server\share) or nothing: what folder creation takes as given.
bool IsRoot(const std::wstring& path) noexcept {
    if (path.empty() || (path.size() == 2 && path[1] == L':')) return true;
    if (path.rfind(L"\\\\", 0) != 0) return false;
    const size_t server = path.find(L'\\', 2);
    return server == std::wstring::npos || path.find(L'\\', server + 1) == std::wstring::npos;
}

// The path without its last component; empty when it has no separator.
std::wstring ParentOf(const std::wstring& path) {
    const size_t cut = path.find_last_of(L"\\/");
    return cut == std::wstring::npos ? std::wstring() : path.substr(0, cut);
}

// A linked folder is removed as a link: what it points to is never entered.
void RemoveEntry(const std::wstring& path, const FolderEntry& entry) {
    const std::wstring extended = Extended(path);
    if (entry.isFolder && !entry.isLink) {
        RemoveFolderTree(path);
        return;
    }
    if (entry.isFolder) {
        if (!::RemoveDirectoryW(extended.c_str())) FailLastError(L"Cannot remove the folder " + path);
        return;
    }
    ::SetFileAttributesW(extended.c_str(), FILE_ATTRIBUTE_NORMAL);
    if (!::DeleteFileW(extended.c_str())) FailLastError(L"Cannot delete " + path);
}

} // namespace

std::wstring FullPath(const std::wstring& path) {
    std::vector<wchar_t> buffer(1024); // grows to what the system asks for
    for (;;) {
        const DWORD length = ::GetFullPathNameW(path.c_str(), static_cast<DWORD>(buffer.size()), buffer.data(), nullptr);
        if (length == 0) FailLastError(L"The path \"" + path + L"\" is not valid");
        if (length < buffer.size()) return std::wstring(buffer.data(), length);
        buffer.resize(length);
    }
}

bool IsFile(const std::wstring& fullPath) noexcept {
    const DWORD attributes = ::GetFileAttributesW(Extended(fullPath).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool IsFolder(const std::wstring& fullPath) noexcept {
    const DWORD attributes = ::GetFileAttributesW(Extended(fullPath).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY);
}

bool SameContents(const std::wstring& first, const std::wstring& second) {
    const tol::unique_file a = OpenForReading(first), b = OpenForReading(second);
    LARGE_INTEGER sizeA{}, sizeB{};
    if (!::GetFileSizeEx(a.get(), &sizeA) || !::GetFileSizeEx(b.get(), &sizeB)) FailLastError(L"Cannot compare " + first);
    if (sizeA.QuadPart != sizeB.QuadPart) return false;
    std::vector<char> bufferA(1 << 16), bufferB(1 << 16);
    for (;;) {
        const DWORD readA = ReadChunk(a.get(), bufferA, first), readB = ReadChunk(b.get(), bufferB, second);
        if (readA != readB || !std::equal(bufferA.begin(), bufferA.begin() + readA, bufferB.begin())) return false;
        if (readA == 0) return true;
    }
}

void CreateFolderPath(const std::wstring& fullPath) {
    std::vector<std::wstring> missing; // the deepest first
    for (std::wstring path = fullPath; !IsRoot(path) && !IsFolder(path); path = ParentOf(path)) missing.push_back(path);
    for (auto path = missing.rbegin(); path != missing.rend(); ++path) {
        if (!::CreateDirectoryW(Extended(*path).c_str(), nullptr) && ::GetLastError() != ERROR_ALREADY_EXISTS)
            FailLastError(L"Cannot create the folder " + *path);
    }
}

void RemoveFolderTree(const std::wstring& fullPath) {
    for (const FolderEntry& entry : ListFolder(fullPath)) RemoveEntry(fullPath + L"\\" + entry.name, entry);
    if (!::RemoveDirectoryW(Extended(fullPath).c_str())) FailLastError(L"Cannot remove the folder " + fullPath);
}

void CopyOneFile(const std::wstring& source, const std::wstring& target) {
    if (!::CopyFileW(Extended(source).c_str(), Extended(target).c_str(), FALSE))
        FailLastError(L"Cannot copy " + source + L" to " + target);
}

std::vector<FolderEntry> ListFolder(const std::wstring& fullPath) {
    std::vector<FolderEntry> entries;
    WIN32_FIND_DATAW data;
    tol::unique_find find(::FindFirstFileW(Extended(fullPath + L"\\*").c_str(), &data));
    if (!find) return entries;
    do {
        const std::wstring name = data.cFileName;
        if (name == L"." || name == L"..") continue;
        entries.push_back({name, (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                           (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0});
    } while (::FindNextFileW(find.get(), &data));
    return entries;
}

std::wstring SystemText(unsigned long code) {
    wchar_t* buffer = nullptr;
    ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                     code, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    const tol::unique_hlocal owner(buffer);
    std::wstring text = buffer ? buffer : L"error " + std::to_wstring(code);
    while (!text.empty() && (text.back() == L'\n' || text.back() == L'\r' || text.back() == L' ')) text.pop_back();
    return text;
}

} // namespace gac
