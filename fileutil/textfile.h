// Text files in a code page: a reader that returns a whole file as wide text, and a writer that encodes wide
// text with normalised line breaks. Code page 1200 (UTF-16 little-endian, mark FF FE) is handled here; every
// other number goes unchanged to the platform's converters (0 ANSI, 1 OEM, 65001 UTF-8, ...).
#pragma once
#include "filehandle.h"
#include <string>

namespace tol {

constexpr UINT kCodePageUtf16 = 1200;

class TextFileReader {
public:
    // Opens the file for reading (tol::win32_error when it cannot). With code page 1200 a leading FF FE is
    // skipped; any other byte-order mark stays part of the text.
    TextFileReader(const std::wstring& name, UINT codePage);

    // The whole text from the current position: one read, one conversion. Throws tol::win32_error when the
    // size or the read fails, tol::truntime_error for a file too big to read or bytes that are not valid
    // in the code page.
    std::wstring ReadAll();

private:
    void SkipByteOrderMark();
    DWORD SizeToRead();
    std::wstring ReadUtf16(DWORD count);
    std::wstring ReadConverted(DWORD count);

    FileHandle file_;
    UINT codePage_;
    DWORD textStart_ = 0;  // 2 after a skipped byte-order mark
};

// A text output with one operation to implement.
class TextSink {
public:
    virtual ~TextSink() = default;

    // Encodes and writes length characters of text; a length of -1 means up to the terminating NUL.
    virtual void Write(const wchar_t* text, int length) = 0;

    // Writes a NUL-terminated text so that every line feed goes out preceded by a carriage return; an
    // existing CR LF pair stays one pair, a lone carriage return stays as it is. A null text writes nothing.
    void WriteText(const wchar_t* text);
};

class TextFileWriter final : public TextSink {
public:
    // Creates (replaces) the file, or opens it at its end when append is set; tol::win32_error when it cannot.
    // A new, non-appending writer with code page 1200 writes FF FE at once; an appending one never does.
    TextFileWriter(const std::wstring& name, UINT codePage, bool append);

    // Throws tol::truntime_error "Failed to convert text to codepage N" when the code page cannot take the text,
    // tol::win32_error when the write fails.
    void Write(const wchar_t* text, int length) override;

private:
    FileHandle file_;
    UINT codePage_;
};

} // namespace tol
