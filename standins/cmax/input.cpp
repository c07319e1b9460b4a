// Keys, characters and the mouse.
#include "editor.h"
#include "shared.h"
#include <windowsx.h>
#include <algorithm>
#include <cwctype>

namespace cmax {
namespace {

BYTE CurrentModifiers() noexcept {
    return static_cast<BYTE>((::GetKeyState(VK_SHIFT) < 0 ? CM_MOD_SHIFT : 0) |
                             (::GetKeyState(VK_CONTROL) < 0 ? CM_MOD_CTRL : 0) | (::GetKeyState(VK_MENU) < 0 ? CM_MOD_ALT : 0));
}

// A key that ran a command produces no character: its WM_CHAR, already queued by TranslateMessage, is dropped.
void DropCharacter(HWND window) noexcept {
    MSG message;
    if (!::PeekMessageW(&message, window, WM_CHAR, WM_CHAR, PM_REMOVE))
        ::PeekMessageW(&message, window, WM_SYSCHAR, WM_SYSCHAR, PM_REMOVE);
}

bool IsBlank(wchar_t c) noexcept { return c == L' ' || c == L'\t'; }

} // namespace

bool Editor::OnKeyDown(UINT key) {
    if (key == VK_SHIFT || key == VK_CONTROL || key == VK_MENU || key > 0xFE) return false;
    const Stroke stroke{CurrentModifiers(), static_cast<BYTE>(key)};
    if (chord_) {
        const int command = FindCommand(*chord_, stroke);
        chord_.reset();
        DropCharacter(window_);
        if (command >= 0) Execute(static_cast<WORD>(command));
        return true;
    }
    if (const int command = FindCommand(stroke, {}); command >= 0) {
        DropCharacter(window_);
        Execute(static_cast<WORD>(command));
        return true;
    }
    if (StartsChord(stroke)) {
        chord_ = stroke;
        DropCharacter(window_);
        return true;
    }
    if (stroke.modifiers & CM_MOD_ALT) return false;
    return MoveKey(key, (stroke.modifiers & CM_MOD_SHIFT) != 0, (stroke.modifiers & CM_MOD_CTRL) != 0);
}

bool Editor::MoveKey(UINT key, bool shift, bool ctrl) {
    const int lineEnd = static_cast<int>(text_.Line(caret_.line).size());
    switch (key) {
    case VK_LEFT:
        MoveCaret(ctrl ? WordLeft(caret_) : Left(caret_), shift);
        return true;
    case VK_RIGHT:
        MoveCaret(ctrl ? WordRight(caret_) : Right(caret_), shift);
        return true;
    case VK_UP:
    case VK_DOWN:
        MoveVertically(key == VK_UP ? -1 : 1, shift);
        return true;
    case VK_PRIOR:
    case VK_NEXT:
        MoveVertically(key == VK_PRIOR ? -VisibleLines() : VisibleLines(), shift);
        return true;
    case VK_HOME: {
        // First to the line's first non-blank character, then to its start.
        const std::wstring& line = text_.Line(caret_.line);
        int first = 0;
        while (first < lineEnd && IsBlank(line[first])) ++first;
        MoveCaret(ctrl ? Position{} : Position{caret_.line, caret_.column == first ? 0 : first}, shift);
        return true;
    }
    case VK_END:
        MoveCaret(ctrl ? text_.End() : Position{caret_.line, lineEnd}, shift);
        return true;
    case VK_DELETE:
        if (anchor_ == caret_) anchor_ = Right(caret_);
        ReplaceSelection(L"");
        return true;
    default:
        return false;
    }
}

void Editor::OnChar(wchar_t c) {
    switch (c) {
    case L'\b':
        if (anchor_ == caret_) anchor_ = Left(caret_);
        ReplaceSelection(L"");
        return;
    case L'\r':
        NewLine();
        return;
    case L'\t':
        if (settings_.tabExpand) {
            const int size = static_cast<int>(settings_.tabSize);
            const int column = VisualColumn(std::min(anchor_, caret_).line, std::min(anchor_, caret_).column);
            ReplaceSelection(std::wstring(size - column % size, L' '), true);
        } else {
            ReplaceSelection(L"\t", true);
        }
        return;
    default:
        if (c >= L' ' && c != 0x7F) Type(c);
        return;
    }
}

void Editor::Type(wchar_t c) {
    ReplaceSelection(std::wstring_view(&c, 1), true);
    if (!IsWordChar(c)) NormalizeWordBefore(Left(caret_));
}

void Editor::NewLine() {
    NormalizeWordBefore(std::min(anchor_, caret_));
    ReplaceSelection(L"\r\n" + Indentation());
}

// The blanks that start a new line: those of the caret's line, and one level more after a scope opening.
std::wstring Editor::Indentation() const {
    if (settings_.autoIndentMode == 0) return {};
    const Position at = std::min(anchor_, caret_);
    const std::wstring_view before = std::wstring_view(text_.Line(at.line)).substr(0, at.column);
    const size_t blanks = std::min(before.find_first_not_of(L" \t"), before.size());
    std::wstring indent(before.substr(0, blanks));
    const auto language = CurrentLanguage();
    if (settings_.autoIndentMode == 2 && language && language->OpensScope(before))
        indent += settings_.tabExpand ? std::wstring(settings_.tabSize, L' ') : L"\t";
    return indent;
}

// A keyword just finished in a language without case takes the spelling of its list.
void Editor::NormalizeWordBefore(Position end) {
    const auto language = CurrentLanguage();
    if (!settings_.normalizeCase || !language || language->caseSensitive()) return;
    const std::wstring& line = text_.Line(end.line);
    int start = end.column;
    while (start > 0 && IsWordChar(line[start - 1])) --start;
    if (start == end.column) return;
    // A keyword may begin with a sign ("#Const"): the word with the sign before it is tried first.
    const bool hasSign = start > 0 && !IsBlank(line[start - 1]) && !IsWordChar(line[start - 1]);
    for (const int from : {hasSign ? start - 1 : start, start}) {
        const std::wstring_view word = std::wstring_view(line).substr(from, end.column - from);
        const std::wstring_view spelling = language->Normalized(word);
        if (spelling.empty()) continue;
        const BYTE tokenClass = Classes(end.line, language)[from];
        if (spelling != word && tokenClass != CMT_COMMENT && tokenClass != CMT_STRING) {
            const Position anchor = anchor_, caret = caret_;
            Replace({end.line, from}, end, std::wstring(spelling));
            Select(anchor, caret);
        }
        return;
    }
}

void Editor::Select(Position anchor, Position caret) {
    anchor_ = text_.Clamp(anchor);
    caret_ = text_.Clamp(caret);
    wantedColumn_ = -1;
    EnsureCaretVisible();
    PlaceCaret();
    ::InvalidateRect(window_, nullptr, FALSE);
}

void Editor::MoveVertically(int lines, bool extend) {
    const int wanted = wantedColumn_ >= 0 ? wantedColumn_ : VisualColumn(caret_.line, caret_.column);
    const int line = std::clamp(caret_.line + lines, 0, text_.LineCount() - 1);
    if (std::abs(lines) > 1) ScrollTo(topLine_ + lines, leftColumn_);
    MoveCaret({line, ColumnAt(line, wanted)}, extend);
    wantedColumn_ = wanted;
}

Position Editor::Left(Position p) const noexcept {
    if (p.column > 0) return {p.line, p.column - 1};
    return p.line > 0 ? Position{p.line - 1, static_cast<int>(text_.Line(p.line - 1).size())} : p;
}

Position Editor::Right(Position p) const noexcept {
    if (p.column < static_cast<int>(text_.Line(p.line).size())) return {p.line, p.column + 1};
    return p.line + 1 < text_.LineCount() ? Position{p.line + 1, 0} : p;
}

Position Editor::WordLeft(Position p) const noexcept {
    const std::wstring& line = text_.Line(p.line);
    if (p.column == 0) return Left(p);
    int at = p.column;
    while (at > 0 && IsBlank(line[at - 1])) --at;
    const bool word = at > 0 && IsWordChar(line[at - 1]);
    while (at > 0 && !IsBlank(line[at - 1]) && IsWordChar(line[at - 1]) == word) --at;
    return {p.line, at};
}

Position Editor::WordRight(Position p) const noexcept {
    const std::wstring& line = text_.Line(p.line);
    const int end = static_cast<int>(line.size());
    if (p.column == end) return Right(p);
    int at = p.column;
    const bool word = IsWordChar(line[at]);
    while (at < end && !IsBlank(line[at]) && IsWordChar(line[at]) == word) ++at;
    while (at < end && IsBlank(line[at])) ++at;
    return {p.line, at};
}

void Editor::OnMouse(UINT message, WPARAM w, LPARAM l) {
    const POINT point{GET_X_LPARAM(l), GET_Y_LPARAM(l)};
    switch (message) {
    case WM_LBUTTONDOWN:
        ::SetFocus(window_);
        MoveCaret(PositionAt(point), (w & MK_SHIFT) != 0);
        ::SetCapture(window_);
        selecting_ = true;
        break;
    case WM_MOUSEMOVE:
        if (selecting_) MoveCaret(PositionAt(point), true);
        break;
    case WM_LBUTTONUP:
        if (selecting_) ::ReleaseCapture();
        break;
    case WM_LBUTTONDBLCLK: {
        const Position at = PositionAt(point);
        const std::wstring& line = text_.Line(at.line);
        int start = at.column, end = at.column;
        while (start > 0 && IsWordChar(line[start - 1])) --start;
        while (end < static_cast<int>(line.size()) && IsWordChar(line[end])) ++end;
        Select({at.line, start}, {at.line, end});
        break;
    }
    case WM_MOUSEWHEEL:
        ScrollTo(topLine_ - GET_WHEEL_DELTA_WPARAM(w) * 3 / WHEEL_DELTA, leftColumn_);
        break;
    default:
        break;
    }
}

} // namespace cmax
