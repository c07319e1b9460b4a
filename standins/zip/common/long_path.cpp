#include "long_path.h"
#include <windows.h>

namespace zipwin {
namespace {

constexpr size_t kClassicLimit = 240;  // below MAX_PATH, with room for an 8.3 name inside a folder

} // namespace

std::wstring FullPath(const std::wstring& path) {
    DWORD capacity = ::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    for (int attempt = 0; attempt < 3 && capacity != 0; ++attempt) {
        std::wstring full(capacity, L'\0');
        const DWORD length = ::GetFullPathNameW(path.c_str(), capacity, full.data(), nullptr);
        if (length == 0) break;
        if (length < capacity) {
            full.resize(length);
            return full;
        }
        capacity = length;
    }
    return {};
}

std::wstring SystemPath(const std::wstring& fullPath) {
    if (fullPath.size() < kClassicLimit || fullPath.compare(0, 4, L"\\\\?\\") == 0) return fullPath;
    if (fullPath.compare(0, 2, L"\\\\") == 0) return L"\\\\?\\UNC\\" + fullPath.substr(2);
    return L"\\\\?\\" + fullPath;
}

} // namespace zipwin
