#include "text_buffer.h"
#include <algorithm>

namespace cmax {

Position TextBuffer::Clamp(Position p) const noexcept {
    p.line = std::clamp(p.line, 0, LineCount() - 1);
    p.column = std::clamp(p.column, 0, static_cast<int>(lines_[p.line].size()));
    return p;
}

std::wstring TextBuffer::Text(Position a, Position b) const {
    if (a.line == b.line) return lines_[a.line].substr(a.column, b.column - a.column);
    std::wstring text;
    text.reserve(Length(a, b));
    text.append(lines_[a.line], a.column);
    for (int line = a.line + 1; line <= b.line; ++line) {
        text.append(L"\r\n");
        text.append(lines_[line], 0, line == b.line ? b.column : std::wstring::npos);
    }
    return text;
}

size_t TextBuffer::Length(Position a, Position b) const noexcept {
    if (a.line == b.line) return b.column - a.column;
    size_t length = lines_[a.line].size() - a.column + b.column;
    for (int line = a.line + 1; line < b.line; ++line) length += lines_[line].size();
    return length + 2 * static_cast<size_t>(b.line - a.line);
}

Position TextBuffer::Replace(Position a, Position b, std::wstring_view text) {
    const std::wstring tail = lines_[b.line].substr(b.column);
    std::vector<std::wstring> inserted(1, lines_[a.line].substr(0, a.column));
    for (size_t at = 0; at < text.size(); ++at) {
        if (text[at] == L'\r' || text[at] == L'\n') {
            if (text[at] == L'\r' && at + 1 < text.size() && text[at + 1] == L'\n') ++at;
            inserted.emplace_back();
        } else {
            inserted.back().push_back(text[at]);
        }
    }
    const Position end{a.line + static_cast<int>(inserted.size()) - 1, static_cast<int>(inserted.back().size())};
    inserted.back().append(tail);
    lines_.erase(lines_.begin() + a.line + 1, lines_.begin() + b.line + 1);
    lines_[a.line] = std::move(inserted.front());
    lines_.insert(lines_.begin() + a.line + 1, std::make_move_iterator(inserted.begin() + 1),
                  std::make_move_iterator(inserted.end()));
    return end;
}

Position TextBuffer::Advance(Position p, size_t count) const noexcept {
    while (count > 0) {
        const size_t rest = lines_[p.line].size() - p.column;
        if (count <= rest || p.line == LineCount() - 1) {
            p.column += static_cast<int>(std::min(count, rest));
            return p;
        }
        count -= std::min(count, rest + 2);
        p = {p.line + 1, 0};
    }
    return p;
}

} // namespace cmax
