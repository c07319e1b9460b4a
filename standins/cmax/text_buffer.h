// The text of a control as lines; positions are (line, index in the line). Line breaks read as CR LF.
#pragma once
#include <windows.h>
#include <string>
#include <string_view>
#include <vector>

namespace cmax {

struct Position {
    int line = 0;
    int column = 0;
    bool operator==(const Position& o) const noexcept { return line == o.line && column == o.column; }
    bool operator!=(const Position& o) const noexcept { return !(*this == o); }
    bool operator<(const Position& o) const noexcept { return line < o.line || (line == o.line && column < o.column); }
};

class TextBuffer {
public:
    TextBuffer() : lines_(1) {}

    int LineCount() const noexcept { return static_cast<int>(lines_.size()); }
    const std::wstring& Line(int line) const { return lines_[line]; }
    Position End() const noexcept { return {LineCount() - 1, static_cast<int>(lines_.back().size())}; }
    Position Clamp(Position p) const noexcept;

    // The text from a to b (a before b), lines joined with CR LF; Length is its length.
    std::wstring Text(Position a, Position b) const;
    size_t Length(Position a, Position b) const noexcept;

    // Replaces the text from a to b (a before b) and answers the end of the inserted text. CR LF, CR and LF all
    // break lines.
    Position Replace(Position a, Position b, std::wstring_view text);

    // The position count characters after p, line breaks counting two; stops at the end.
    Position Advance(Position p, size_t count) const noexcept;

private:
    std::vector<std::wstring> lines_;   // never empty
};

} // namespace cmax
