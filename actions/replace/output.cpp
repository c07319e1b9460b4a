#include "output.h"
#include "fileutil/fileops.h"
#include "fileutil/textfile.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include <algorithm>
#include <climits>

namespace tol {
namespace {

// Converting counts only, in pieces that the converter's int lengths take; nothing is kept. An empty text needs
// no conversion, but the code page must still be one the platform can write: a line break stands in for it.
void EnsureConvertible(const std::wstring& text, UINT codePage) {
    if (codePage == kCodePageUtf16) return;
    constexpr std::size_t kPiece = INT_MAX / 4;
    const std::wstring_view all = text.empty() ? std::wstring_view(L"\r\n") : std::wstring_view(text);
    for (std::size_t at = 0; at < all.size(); at += kPiece) {
        const int length = static_cast<int>(std::min(kPiece, all.size() - at));
        if (::WideCharToMultiByte(codePage, 0, all.data() + at, length, nullptr, 0, nullptr, nullptr) == 0)
            throw truntime_error(FormatMessageText(L"Failed to convert text to codepage %1!d!", {static_cast<long>(codePage)}));
    }
}

// WriteText stops at a NUL: the runs between NUL characters go through it, each NUL is written as it is.
void WriteWholeText(TextSink& sink, const std::wstring& text) {
    std::size_t start = 0;
    for (std::size_t nul = text.find(L'\0'); nul != std::wstring::npos; nul = text.find(L'\0', start)) {
        sink.WriteText(text.substr(start, nul - start).c_str());
        sink.Write(L"", 1);
        start = nul + 1;
    }
    sink.WriteText(text.c_str() + start);
}

} // namespace

void WriteOutputFile(const std::wstring& name, UINT codePage, const std::wstring& text, bool clearReadOnly) {
    EnsureConvertible(text, codePage);
    if (clearReadOnly) (void)ClearReadOnly(name);  // false also when the file was not read-only or is missing
    TextFileWriter writer(name, codePage, false);
    WriteWholeText(writer, text);
}

} // namespace tol
