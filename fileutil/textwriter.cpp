// Writing wide text to a file in a code page, and the line-break rule of every text sink.
#include "textfile.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include <memory>

namespace tol {
namespace {

// WriteText hands whole lines to Write, gathered up to about this many characters per call.
constexpr std::size_t kWriteTextBatch = 32 * 1024;

} // namespace

// Lines are cut only after a line feed, so a surrogate pair or a CR LF pair never spans two Write calls.
void TextSink::WriteText(const wchar_t* text) {
    if (!text) return;
    std::wstring batch;
    const wchar_t* rest = text;
    for (const wchar_t* lf = ::wcschr(rest, L'\n'); lf; lf = ::wcschr(rest, L'\n')) {
        batch.append(rest, lf);
        batch += (lf > text && lf[-1] == L'\r') ? L"\n" : L"\r\n";
        rest = lf + 1;
        if (batch.size() >= kWriteTextBatch) {
            Write(batch.data(), static_cast<int>(batch.size()));
            batch.clear();
        }
    }
    batch.append(rest);
    if (!batch.empty()) Write(batch.data(), static_cast<int>(batch.size()));
}

TextFileWriter::TextFileWriter(const std::wstring& name, UINT codePage, bool append) : codePage_(codePage) {
    file_.Open(name, append ? FileMode::Append : FileMode::Create);
    if (!append && codePage_ == kCodePageUtf16) {
        static const unsigned char mark[2] = {0xFF, 0xFE};
        file_.WriteBytes(mark, sizeof mark);
    }
}

void TextFileWriter::Write(const wchar_t* text, int length) {
    if (length < 0) length = ::lstrlenW(text);
    if (length == 0) return;
    if (codePage_ == kCodePageUtf16) {
        file_.WriteBytes(text, static_cast<std::size_t>(length) * sizeof(wchar_t));
        return;
    }
    // No default character and no flags: characters the code page lacks become the platform's default one.
    const int needed = ::WideCharToMultiByte(codePage_, 0, text, length, nullptr, 0, nullptr, nullptr);
    const std::unique_ptr<char[]> bytes(new char[needed > 0 ? needed : 1]);
    if (needed == 0 || ::WideCharToMultiByte(codePage_, 0, text, length, bytes.get(), needed, nullptr, nullptr) == 0)
        throw truntime_error(FormatMessageText(L"Failed to convert text to codepage %1!d!", {static_cast<long>(codePage_)}));
    file_.WriteBytes(bytes.get(), static_cast<std::size_t>(needed));
}

} // namespace tol
