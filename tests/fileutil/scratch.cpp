#include "scratch.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <gtest/gtest.h>
#include <stdexcept>

namespace test {
namespace {

// Removes a tree through \\?\ paths, so that long paths and read-only items go as well.
void RemoveTree(const std::wstring& path) {
    WIN32_FIND_DATAW entry{};
    tol::unique_find find(::FindFirstFileW((path + L"\\*").c_str(), &entry));
    for (bool more = static_cast<bool>(find); more; more = ::FindNextFileW(find.get(), &entry)) {
        const std::wstring name = entry.cFileName;
        if (name == L"." || name == L"..") continue;
        const std::wstring item = path + L"\\" + name;
        ::SetFileAttributesW(item.c_str(), FILE_ATTRIBUTE_NORMAL);
        if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            RemoveTree(item);
        else
            ::DeleteFileW(item.c_str());
    }
    find.reset();
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
    ::RemoveDirectoryW(path.c_str());
}

} // namespace

ScratchFolder::ScratchFolder(std::wstring_view prefix) {
    static unsigned counter = 0;
    std::wstring temp(::GetTempPathW(0, nullptr), L'\0');
    temp.resize(::GetTempPathW(static_cast<DWORD>(temp.size()), temp.data()));
    path_ = temp + std::wstring(prefix) + L"-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++counter) +
            L"-" + std::to_wstring(::GetTickCount());
    MakeFolder(path_);
}

ScratchFolder::~ScratchFolder() { RemoveTree(L"\\\\?\\" + path_); }

std::string Hex(std::string_view text) {
    std::string bytes;
    for (size_t i = text.find_first_not_of(' '); i != std::string_view::npos; i = text.find_first_not_of(' ', i + 2))
        bytes += static_cast<char>(std::stoi(std::string(text.substr(i, 2)), nullptr, 16));
    return bytes;
}

std::string ToHex(std::string_view bytes) {
    std::string text;
    char digits[4];
    for (const unsigned char c : bytes) text.append(digits, ::wsprintfA(digits, text.empty() ? "%02X" : " %02X", c));
    return text;
}

void WriteFileBytes(const std::wstring& path, std::string_view bytes) {
    tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    ASSERT_TRUE(file && ::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        << "cannot write the test file, error " << ::GetLastError();
}

std::string ReadFileBytes(const std::wstring& path) {
    tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                              OPEN_EXISTING, 0, nullptr));
    if (!file) return "<missing>";
    std::string bytes;
    char buffer[4096];
    DWORD read = 0;
    while (::ReadFile(file.get(), buffer, sizeof buffer, &read, nullptr) && read > 0) bytes.append(buffer, read);
    return bytes;
}

void MakeFolder(const std::wstring& path) {
    if (!::CreateDirectoryW(path.c_str(), nullptr)) throw std::runtime_error("cannot create a test folder");
}

std::wstring ErrorText(DWORD code) { return tol::SystemErrorText(HRESULT_FROM_WIN32(code)); }

} // namespace test
