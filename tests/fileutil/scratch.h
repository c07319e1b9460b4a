// A fresh folder under the temp path for one test, removed with everything in it; raw byte access to files.
#pragma once
#include <windows.h>
#include <string>
#include <string_view>

namespace test {

class ScratchFolder {
public:
    // The folder's name starts with prefix.
    explicit ScratchFolder(std::wstring_view prefix = L"vlm-test");
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The folder's absolute path, without a trailing separator.
    const std::wstring& path() const { return path_; }
    // The path of an item in the folder.
    std::wstring operator/(std::wstring_view name) const { return path_ + L"\\" + std::wstring(name); }

private:
    std::wstring path_;
};

// "FF FE 61 00" -> the four bytes; blanks are ignored.
std::string Hex(std::string_view text);
// The bytes as "FF FE 61 00".
std::string ToHex(std::string_view bytes);

void WriteFileBytes(const std::wstring& path, std::string_view bytes);
// The file's bytes; "<missing>" when it cannot be opened.
std::string ReadFileBytes(const std::wstring& path);
void MakeFolder(const std::wstring& path);

// The platform's text for a Win32 error code, as the file services put it into their messages.
std::wstring ErrorText(DWORD code);

} // namespace test
