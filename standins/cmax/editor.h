// The "CodeMax" window: one editor per window, kept in the window's extra bytes.
#pragma once
#include "hotkeys.h"
#include "language.h"
#include "settings.h"
#include "text_buffer.h"
#include "frame/handles.h"
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace cmax {

bool RegisterEditorClass(HINSTANCE instance) noexcept;

class Editor {
public:
    explicit Editor(HWND window) : window_(window) {}
    LRESULT Handle(UINT message, WPARAM w, LPARAM l);

private:
    struct Edit {
        Position start;
        std::wstring removed, inserted;   // line breaks as CR LF
        bool typing;                      // typed characters join the edit before them
    };

    // Text and editing (editor.cpp).
    LRESULT HandleControlMessage(UINT message, WPARAM w, LPARAM l);
    void Create(const CREATESTRUCTW& create);
    Position Apply(Position a, Position b, std::wstring_view text);
    void Replace(Position a, Position b, std::wstring_view text, bool typing = false);
    void ReplaceSelection(std::wstring_view text, bool typing = false) { Replace(anchor_, caret_, text, typing); }
    void SetText(std::wstring_view text, bool notify);
    void Undo(bool redo);
    LRESULT CopyText(bool all, wchar_t* buffer, WPARAM capacity) const;
    std::wstring SelectedText() const;
    bool Execute(WORD command);
    void FindAndReplace();
    void Notify(UINT code);
    void SettingsChanged();

    // Keys and mouse (input.cpp).
    bool OnKeyDown(UINT key);
    bool MoveKey(UINT key, bool shift, bool ctrl);
    void OnChar(wchar_t c);
    void OnMouse(UINT message, WPARAM w, LPARAM l);
    void Type(wchar_t c);
    void NewLine();
    void NormalizeWordBefore(Position end);
    std::wstring Indentation() const;
    void Select(Position anchor, Position caret);
    void MoveCaret(Position to, bool extend) { Select(extend ? anchor_ : to, to); }
    void MoveVertically(int lines, bool extend);
    Position Left(Position p) const noexcept;
    Position Right(Position p) const noexcept;
    Position WordLeft(Position p) const noexcept;
    Position WordRight(Position p) const noexcept;

    // Display (view.cpp).
    void Paint(HDC dc);
    void PaintLine(HDC dc, int line, int y, int left, int right, const std::shared_ptr<const Language>& language);
    void PaintGutter(HDC dc, int width, int bottom);
    void UpdateMetrics();
    void UpdateScrollBars();
    void OnScroll(int bar, WORD code);
    void ScrollTo(int top, int left);
    void EnsureCaretVisible();
    void PlaceCaret();
    int GutterWidth() const;
    int VisibleLines() const;
    int VisibleColumns() const;
    int VisualColumn(int line, int column) const;
    int ColumnAt(int line, int visual) const;
    Position PositionAt(POINT point) const;
    HFONT Font() const noexcept;
    HFONT StyledFont(BYTE style);
    std::shared_ptr<const Language> CurrentLanguage() const;
    std::vector<BYTE> Classes(int line, const std::shared_ptr<const Language>& language);
    void TextChanged(int fromLine);

    HWND window_;
    TextBuffer text_;
    Position anchor_, caret_;
    int wantedColumn_ = -1;   // the visual column that up and down keep
    Settings settings_;
    std::wstring language_;
    bool scopeAll_ = true;
    std::vector<Edit> undo_, redo_;
    std::optional<Stroke> chord_;   // the first stroke of a two-stroke binding
    bool selecting_ = false;        // the mouse is selecting
    bool updatingBars_ = false;
    std::wstring lastFind_, lastReplacement_;

    HFONT font_ = nullptr;   // set by WM_SETFONT; owned by whoever set it
    tol::unique_gdi_object styled_[8];   // the font with CM_FONT_ styles, made when first painted
    int charWidth_ = 8, lineHeight_ = 16;
    int topLine_ = 0, leftColumn_ = 0;
    int longest_ = 0;   // the width of the longest line in columns

    // The scanner state at the start of each line, valid below statesValid_, for the language statesFor_.
    std::vector<int> lineStates_;
    int statesValid_ = 0;
    std::shared_ptr<const Language> statesFor_;
};

} // namespace cmax
