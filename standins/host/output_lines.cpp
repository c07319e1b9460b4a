#include "output_lines.h"
#include "frame/messages.h"
#include <windows.h>

namespace host {
namespace {

// Where a long line may be cut without splitting a UTF-8 sequence.
size_t CutPoint(const std::string& text, size_t limit) {
    size_t cut = limit;
    for (int back = 0; back < 3 && cut > 1 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80; ++back) --cut;
    return cut;
}

} // namespace

std::wstring DecodeLine(std::string_view bytes) {
    if (bytes.empty()) return {};
    const int size = static_cast<int>(bytes.size());
    const int length = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), size, nullptr, 0);
    if (length <= 0) return tol::Widen(bytes, CP_OEMCP);
    std::wstring text(length, L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, bytes.data(), size, text.data(), length);
    return text;
}

void LineSplitter::Feed(const char* bytes, size_t count) {
    pending_.append(bytes, count);
    size_t start = 0;
    for (size_t end; (end = pending_.find('\n', start)) != std::string::npos; start = end + 1)
        Emit(std::string_view(pending_).substr(start, end - start));
    pending_.erase(0, start);
    while (pending_.size() > kLongestLine) {
        const size_t cut = CutPoint(pending_, kLongestLine);
        Emit(std::string_view(pending_).substr(0, cut));
        pending_.erase(0, cut);
    }
}

void LineSplitter::Finish() {
    if (!pending_.empty()) Emit(pending_);
    pending_.clear();
}

void LineSplitter::Emit(std::string_view line) {
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    sink_(DecodeLine(line));
}

} // namespace host
