// Display: metrics, scrolling, hit testing and painting. The text is laid out on a grid of cells of the font's
// average character width; a tab covers the cells to the next tab stop.
#include "editor.h"
#include "shared.h"
#include <algorithm>

namespace cmax {
namespace {

void Fill(HDC dc, const RECT& area, COLORREF color) {
    ::SetBkColor(dc, color);
    ::ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &area, nullptr, 0, nullptr);
}

COLORREF Or(COLORREF color, COLORREF fallback) noexcept { return color == CLR_INVALID ? fallback : color; }

std::wstring NumberText(DWORD number, DWORD radix) {
    std::wstring text;
    do {
        text.insert(text.begin(), L"0123456789ABCDEF"[number % radix]);
        number /= radix;
    } while (number > 0);
    return text;
}

// A hidden bar has an empty range; a shown one stays visible, disabled while everything fits.
void SetBar(HWND window, int bar, bool shown, int maximum, int page, int position) {
    SCROLLINFO info{sizeof info, SIF_ALL | SIF_DISABLENOSCROLL, 0, maximum, static_cast<UINT>(page), position, 0};
    if (!shown) info = {sizeof info, SIF_ALL, 0, 0, 0, 0, 0};
    ::ShowScrollBar(window, bar, shown ? TRUE : FALSE);
    ::SetScrollInfo(window, bar, &info, TRUE);
}

} // namespace

HFONT Editor::Font() const noexcept { return font_ ? font_ : static_cast<HFONT>(::GetStockObject(SYSTEM_FIXED_FONT)); }

HFONT Editor::StyledFont(BYTE style) {
    style &= CM_FONT_BOLD | CM_FONT_ITALIC | CM_FONT_UNDERLINE;
    if (style == CM_FONT_NORMAL) return Font();
    if (!styled_[style]) {
        LOGFONTW font;
        if (::GetObjectW(Font(), sizeof font, &font) != sizeof font) return Font();
        if (style & CM_FONT_BOLD) font.lfWeight = FW_BOLD;
        font.lfItalic = (style & CM_FONT_ITALIC) ? TRUE : FALSE;
        font.lfUnderline = (style & CM_FONT_UNDERLINE) ? TRUE : FALSE;
        styled_[style].reset(::CreateFontIndirectW(&font));
    }
    return styled_[style] ? static_cast<HFONT>(styled_[style].get()) : Font();
}

std::shared_ptr<const Language> Editor::CurrentLanguage() const { return FindLanguage(language_); }

void Editor::UpdateMetrics() {
    if (HDC dc = ::GetDC(window_)) {
        const HGDIOBJ old = ::SelectObject(dc, Font());
        TEXTMETRICW metrics;
        if (::GetTextMetricsW(dc, &metrics)) {
            lineHeight_ = std::max<int>(1, metrics.tmHeight);
            charWidth_ = std::max<int>(1, metrics.tmAveCharWidth);
        }
        ::SelectObject(dc, old);
        ::ReleaseDC(window_, dc);
    }
    if (::GetFocus() == window_) {
        ::CreateCaret(window_, nullptr, 2, lineHeight_);
        ::ShowCaret(window_);
    }
    UpdateScrollBars();
    PlaceCaret();
}

int Editor::GutterWidth() const {
    int width = settings_.leftMargin ? 2 * charWidth_ : 0;
    const CM_LINENUMBERING& numbering = settings_.lineNumbering;
    if (numbering.enabled) {
        const DWORD last = numbering.startAt + static_cast<DWORD>(text_.LineCount() - 1);
        width += static_cast<int>(NumberText(last, numbering.radix).size() + 1) * charWidth_;
    }
    return width;
}

int Editor::VisibleLines() const {
    RECT client;
    ::GetClientRect(window_, &client);
    return std::max(1, static_cast<int>(client.bottom) / lineHeight_);
}

int Editor::VisibleColumns() const {
    RECT client;
    ::GetClientRect(window_, &client);
    return std::max(1, (static_cast<int>(client.right) - GutterWidth()) / charWidth_);
}

int Editor::VisualColumn(int line, int column) const {
    const std::wstring& text = text_.Line(line);
    const int tab = static_cast<int>(settings_.tabSize);
    int visual = 0;
    for (int i = 0; i < column && i < static_cast<int>(text.size()); ++i) visual = text[i] == L'\t' ? (visual / tab + 1) * tab : visual + 1;
    return visual;
}

// The index of the character whose cells hold the visual column; the line's end beyond its last character.
int Editor::ColumnAt(int line, int visual) const {
    const std::wstring& text = text_.Line(line);
    const int tab = static_cast<int>(settings_.tabSize);
    int at = 0;
    for (int i = 0; i < static_cast<int>(text.size()); ++i) {
        const int next = text[i] == L'\t' ? (at / tab + 1) * tab : at + 1;
        if (visual < next) return visual - at <= next - visual ? i : i + 1;
        at = next;
    }
    return static_cast<int>(text.size());
}

Position Editor::PositionAt(POINT point) const {
    const int row = point.y >= 0 ? point.y / lineHeight_ : -1;
    const int line = std::clamp(topLine_ + row, 0, text_.LineCount() - 1);
    const int visual = std::max(0, (static_cast<int>(point.x) - GutterWidth() + charWidth_ / 2) / charWidth_ + leftColumn_);
    return {line, ColumnAt(line, visual)};
}

void Editor::TextChanged(int fromLine) {
    statesValid_ = std::min(statesValid_, fromLine + 1);
    UpdateScrollBars();
    ::InvalidateRect(window_, nullptr, FALSE);
}

void Editor::UpdateScrollBars() {
    if (updatingBars_) return;
    updatingBars_ = true;
    longest_ = 0;
    for (int line = 0; line < text_.LineCount(); ++line)
        longest_ = std::max(longest_, VisualColumn(line, static_cast<int>(text_.Line(line).size())));
    // Showing or hiding one bar changes the room for the other: a second pass settles it.
    for (int pass = 0; pass < 2; ++pass) {
        RECT before, after;
        ::GetClientRect(window_, &before);
        topLine_ = std::clamp(topLine_, 0, std::max(0, text_.LineCount() - VisibleLines()));
        leftColumn_ = std::clamp(leftColumn_, 0, longest_);
        SetBar(window_, SB_VERT, settings_.vScrollBar != 0, text_.LineCount() - 1, VisibleLines(), topLine_);
        SetBar(window_, SB_HORZ, settings_.hScrollBar != 0, longest_, VisibleColumns(), leftColumn_);
        ::GetClientRect(window_, &after);
        if (::EqualRect(&before, &after)) break;
    }
    updatingBars_ = false;
}

void Editor::ScrollTo(int top, int left) {
    top = std::clamp(top, 0, std::max(0, text_.LineCount() - VisibleLines()));
    left = std::clamp(left, 0, longest_);
    if (top == topLine_ && left == leftColumn_) return;
    topLine_ = top;
    leftColumn_ = left;
    SCROLLINFO info{sizeof info, SIF_POS};
    info.nPos = topLine_;
    if (settings_.vScrollBar) ::SetScrollInfo(window_, SB_VERT, &info, TRUE);
    info.nPos = leftColumn_;
    if (settings_.hScrollBar) ::SetScrollInfo(window_, SB_HORZ, &info, TRUE);
    PlaceCaret();
    ::InvalidateRect(window_, nullptr, FALSE);
}

void Editor::OnScroll(int bar, WORD code) {
    SCROLLINFO info{sizeof info, SIF_ALL};
    ::GetScrollInfo(window_, bar, &info);
    const bool vertical = bar == SB_VERT;
    const int page = vertical ? VisibleLines() : VisibleColumns();
    int position = vertical ? topLine_ : leftColumn_;
    switch (code) {
    case SB_LINEUP: --position; break;
    case SB_LINEDOWN: ++position; break;
    case SB_PAGEUP: position -= page; break;
    case SB_PAGEDOWN: position += page; break;
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION: position = info.nTrackPos; break;
    case SB_TOP: position = 0; break;
    case SB_BOTTOM: position = vertical ? text_.LineCount() : longest_; break;
    default: return;
    }
    vertical ? ScrollTo(position, leftColumn_) : ScrollTo(topLine_, position);
}

void Editor::EnsureCaretVisible() {
    const int lines = VisibleLines(), columns = VisibleColumns();
    const int column = VisualColumn(caret_.line, caret_.column);
    ScrollTo(std::clamp(topLine_, caret_.line - lines + 1, caret_.line), std::clamp(leftColumn_, column - columns + 1, column));
}

void Editor::PlaceCaret() {
    if (::GetFocus() != window_) return;
    ::SetCaretPos(GutterWidth() + (VisualColumn(caret_.line, caret_.column) - leftColumn_) * charWidth_,
                  (caret_.line - topLine_) * lineHeight_);
}

std::vector<BYTE> Editor::Classes(int line, const std::shared_ptr<const Language>& language) {
    std::vector<BYTE> classes(text_.Line(line).size(), CMT_TEXT);
    if (!language) return classes;
    if (statesFor_ != language) {
        statesFor_ = language;
        statesValid_ = 0;
    }
    lineStates_.resize(text_.LineCount());
    if (statesValid_ == 0) lineStates_[statesValid_++] = 0;
    for (; statesValid_ <= line; ++statesValid_)
        lineStates_[statesValid_] = language->ScanLine(text_.Line(statesValid_ - 1), lineStates_[statesValid_ - 1], nullptr);
    language->ScanLine(text_.Line(line), lineStates_[line], classes.data());
    return classes;
}

void Editor::Paint(HDC dc) {
    RECT client;
    ::GetClientRect(window_, &client);
    const int gutter = GutterWidth();
    const auto language = settings_.colorSyntax ? CurrentLanguage() : nullptr;
    const HGDIOBJ oldFont = ::SelectObject(dc, Font());
    Fill(dc, {gutter, 0, client.right, client.bottom}, settings_.colors.window);
    for (int line = topLine_, y = 0; line < text_.LineCount() && y < client.bottom; ++line, y += lineHeight_)
        PaintLine(dc, line, y, gutter, client.right, language);
    PaintGutter(dc, gutter, client.bottom);
    ::SelectObject(dc, oldFont);
}

void Editor::PaintLine(HDC dc, int line, int y, int left, int right, const std::shared_ptr<const Language>& language) {
    const CM_COLORS& colors = settings_.colors;
    const COLORREF lineBack = line == caret_.line ? Or(colors.currentLine, colors.window) : colors.window;
    if (lineBack != colors.window) Fill(dc, {left, y, right, y + lineHeight_}, lineBack);

    // One cell per column: its character, token class and selection.
    const std::wstring& text = text_.Line(line);
    const std::vector<BYTE> classes = Classes(line, language);
    const Position from = std::min(anchor_, caret_), to = std::max(anchor_, caret_);
    const int tab = static_cast<int>(settings_.tabSize);
    std::wstring cells;
    std::vector<BYTE> cellClass;
    std::vector<bool> cellSelected;
    for (int i = 0; i <= static_cast<int>(text.size()); ++i) {
        const Position at{line, i};
        const bool selected = !(at < from) && at < to;
        if (i == static_cast<int>(text.size()) && !selected) break;   // a selected line break shows as one cell
        const bool isTab = i < static_cast<int>(text.size()) && text[i] == L'\t';
        const size_t width = isTab ? tab - cells.size() % tab : 1;
        cells.append(width, i < static_cast<int>(text.size()) && !isTab ? text[i] : L' ');
        cellClass.insert(cellClass.end(), width, i < static_cast<int>(text.size()) ? classes[i] : CMT_TEXT);
        cellSelected.insert(cellSelected.end(), width, selected);
    }

    const bool focused = ::GetFocus() == window_;
    const size_t end = std::min(cells.size(), static_cast<size_t>(leftColumn_ + VisibleColumns() + 1));
    const std::vector<INT> advances(cells.size(), charWidth_);
    for (size_t start = leftColumn_; start < end;) {
        size_t stop = start + 1;
        while (stop < end && cellClass[stop] == cellClass[start] && cellSelected[stop] == cellSelected[start]) ++stop;
        const BYTE tokenClass = cellClass[start];
        COLORREF fore = colors.text[tokenClass], back = Or(colors.back[tokenClass], lineBack);
        if (cellSelected[start]) {
            fore = focused ? colors.text[CMT_SELECTION] : colors.inactiveSelectionText;
            back = focused ? Or(colors.back[CMT_SELECTION], lineBack) : colors.inactiveSelectionBack;
        }
        ::SelectObject(dc, StyledFont(settings_.fontStyles.style[tokenClass]));
        ::SetTextColor(dc, fore);
        ::SetBkColor(dc, back);
        const int x = left + static_cast<int>(start - leftColumn_) * charWidth_;
        const RECT cell{x, y, std::min(right, x + static_cast<int>(stop - start) * charWidth_), y + lineHeight_};
        ::ExtTextOutW(dc, x, y, ETO_OPAQUE | ETO_CLIPPED, &cell, cells.data() + start, static_cast<UINT>(stop - start),
                      advances.data());
        start = stop;
    }
}

void Editor::PaintGutter(HDC dc, int width, int bottom) {
    if (width == 0) return;
    const CM_COLORS& colors = settings_.colors;
    Fill(dc, {0, 0, width, bottom}, colors.leftMargin);
    const CM_LINENUMBERING& numbering = settings_.lineNumbering;
    if (numbering.enabled) {
        ::SelectObject(dc, StyledFont(settings_.fontStyles.style[CMT_LINENUMBER]));
        ::SetTextColor(dc, colors.text[CMT_LINENUMBER]);
        ::SetBkColor(dc, Or(colors.back[CMT_LINENUMBER], colors.leftMargin));
        for (int line = topLine_, y = 0; line < text_.LineCount() && y < bottom; ++line, y += lineHeight_) {
            const std::wstring number = NumberText(numbering.startAt + static_cast<DWORD>(line), numbering.radix);
            const int x = width - charWidth_ / 2 - static_cast<int>(number.size()) * charWidth_;
            ::ExtTextOutW(dc, x, y, 0, nullptr, number.c_str(), static_cast<UINT>(number.size()), nullptr);
        }
    }
    Fill(dc, {width - 1, 0, width, bottom}, colors.marginDivider);
}

} // namespace cmax
