// Reading a whole text file in a code page.
#include "textfile.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include <climits>
#include <memory>

namespace tol {

TextFileReader::TextFileReader(const std::wstring& name, UINT codePage) : codePage_(codePage) {
    file_.Open(name, FileMode::Read);
    if (codePage_ == kCodePageUtf16) SkipByteOrderMark();
}

// A file that is not UTF-16 after all is not detected: without FF FE every byte is text.
void TextFileReader::SkipByteOrderMark() {
    unsigned char mark[2] = {};
    if (file_.ReadBytes(mark, sizeof mark) && mark[0] == 0xFF && mark[1] == 0xFE) {
        textStart_ = sizeof mark;
        return;
    }
    LARGE_INTEGER start{};
    if (!::SetFilePointerEx(file_.get(), start, nullptr, FILE_BEGIN)) {
        const HRESULT hr = HResultFromLastError();
        throw win32_error(FormatMessageText(L"Failed to read file '%1': %2", {file_.Name(), SystemErrorText(hr)}));
    }
}

std::wstring TextFileReader::ReadAll() {
    const DWORD size = SizeToRead();
    if (size <= textStart_) return {};
    const DWORD count = size - textStart_;
    return codePage_ == kCodePageUtf16 ? ReadUtf16(count) : ReadConverted(count);
}

// The file's size; a low part of 0xFFFFFFFF counts as failure, a high part as too big.
DWORD TextFileReader::SizeToRead() {
    DWORD high = 0;
    const DWORD low = ::GetFileSize(file_.get(), &high);
    if (low == INVALID_FILE_SIZE)
        throw win32_error(FormatMessageText(L"Failed to determine size of '%1'.", {file_.Name()}));
    if (high != 0) throw truntime_error(FormatMessageText(L"File '%1' too big to read.", {file_.Name()}));
    return low;
}

// The bytes are the code units: read straight into the text, an odd last byte dropped.
std::wstring TextFileReader::ReadUtf16(DWORD count) {
    std::wstring text((static_cast<std::size_t>(count) + 1) / 2, L'\0');
    DWORD read = 0;
    (void)file_.ReadBytes(text.data(), count, &read);
    text.resize(read / 2);
    return text;
}

// The platform converters take an int count, so a converted file must stay under 2 GiB.
std::wstring TextFileReader::ReadConverted(DWORD count) {
    if (count > static_cast<DWORD>(INT_MAX))
        throw truntime_error(FormatMessageText(L"File '%1' too big to read.", {file_.Name()}));
    const std::unique_ptr<char[]> bytes(new char[count]);
    DWORD read = 0;
    (void)file_.ReadBytes(bytes.get(), count, &read);
    if (read == 0) return {};

    const int length = static_cast<int>(read);
    const int needed = ::MultiByteToWideChar(codePage_, MB_ERR_INVALID_CHARS, bytes.get(), length, nullptr, 0);
    if (needed == 0) throw truntime_error(L"Failed to convert text to Unicode.");
    std::wstring text(static_cast<std::size_t>(needed), L'\0');
    if (::MultiByteToWideChar(codePage_, MB_ERR_INVALID_CHARS, bytes.get(), length, text.data(), needed) == 0)
        throw truntime_error(L"Failed to convert text to Unicode.");
    return text;
}

} // namespace tol
