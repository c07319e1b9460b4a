// Cuts a command's output bytes into lines and decodes each: UTF-8 when the line is valid UTF-8, else the OEM
// code page that console programs write in.
#pragma once
#include <functional>
#include <string>
#include <string_view>

namespace host {

using LineSink = std::function<void(const std::wstring&)>;

std::wstring DecodeLine(std::string_view bytes);

class LineSplitter {
public:
    // A line longer than this is handed on in pieces, so that output without line breaks cannot grow without end.
    static constexpr size_t kLongestLine = 65536;

    explicit LineSplitter(LineSink sink) : sink_(std::move(sink)) {}
    // Hands on each complete line (LF or CR LF ends a line; the line end is dropped).
    void Feed(const char* bytes, size_t count);
    // Hands on the text after the last line end, if any.
    void Finish();

private:
    void Emit(std::string_view line);
    LineSink sink_;
    std::string pending_;
};

} // namespace host
