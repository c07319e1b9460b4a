#include "settings.h"
#include <cstring>

namespace cmax {
namespace {

static_assert(sizeof(CM_COLORS) == 124 && sizeof(CM_FONTSTYLES) == 12 && sizeof(CM_LINENUMBERING) == 12);

struct NumberSetting {
    UINT set, get;
    int selector;   // -1: the value travels in wParam; else the wParam that chooses this setting, value in lParam
    DWORD Settings::*member;
    DWORD low, high;
};

constexpr DWORD kFlag = 1;
constexpr NumberSetting kNumbers[] = {
    {CMM_SETCOLORSYNTAX, CMM_GETCOLORSYNTAX, -1, &Settings::colorSyntax, 0, kFlag},
    {CMM_SHOWSCROLLBAR, CMM_HASSCROLLBAR, 1, &Settings::hScrollBar, 0, kFlag},
    {CMM_SHOWSCROLLBAR, CMM_HASSCROLLBAR, 0, &Settings::vScrollBar, 0, kFlag},
    {CMM_ENABLESPLITTER, CMM_ISSPLITTERENABLED, 1, &Settings::hSplitter, 0, kFlag},
    {CMM_ENABLESPLITTER, CMM_ISSPLITTERENABLED, 0, &Settings::vSplitter, 0, kFlag},
    {CMM_SETWHOLEWORD, CMM_GETWHOLEWORD, -1, &Settings::wholeWord, 0, kFlag},
    {CMM_SETAUTOINDENTMODE, CMM_GETAUTOINDENTMODE, -1, &Settings::autoIndentMode, 0, 2},
    {CMM_SETSMOOTHSCROLL, CMM_GETSMOOTHSCROLL, -1, &Settings::smoothScrolling, 0, kFlag},
    {CMM_SETLINETOOLTIPS, CMM_GETLINETOOLTIPS, -1, &Settings::lineToolTips, 0, kFlag},
    {CMM_SETLEFTMARGIN, CMM_GETLEFTMARGIN, -1, &Settings::leftMargin, 0, kFlag},
    {CMM_SETCOLUMNSEL, CMM_GETCOLUMNSEL, -1, &Settings::columnSel, 0, kFlag},
    {CMM_SETDRAGDROP, CMM_GETDRAGDROP, -1, &Settings::dragDrop, 0, kFlag},
    {CMM_SETCASESENSITIVE, CMM_GETCASESENSITIVE, -1, &Settings::caseSensitive, 0, kFlag},
    {CMM_SETPRESERVECASE, CMM_GETPRESERVECASE, -1, &Settings::preserveCase, 0, kFlag},
    {CMM_SETTABEXPAND, CMM_GETTABEXPAND, -1, &Settings::tabExpand, 0, kFlag},
    {CMM_SETTABSIZE, CMM_GETTABSIZE, -1, &Settings::tabSize, 1, 64},
    {CMM_SETNORMALIZECASE, CMM_GETNORMALIZECASE, -1, &Settings::normalizeCase, 0, kFlag},
    {CMM_SETSELBOUNDS, CMM_GETSELBOUNDS, -1, &Settings::selBounds, 0, kFlag},
};

struct RecordSetting {
    UINT set, get;
    size_t offset, size;
    bool (*valid)(const void* record);
};

bool AnyRecord(const void*) { return true; }
bool ValidNumbering(const void* record) {
    CM_LINENUMBERING numbering;
    std::memcpy(&numbering, record, sizeof numbering);
    return numbering.radix == 2 || numbering.radix == 8 || numbering.radix == 10 || numbering.radix == 16;
}

const RecordSetting kRecords[] = {
    {CMM_SETCOLORS, CMM_GETCOLORS, offsetof(Settings, colors), sizeof(CM_COLORS), AnyRecord},
    {CMM_SETFONTSTYLES, CMM_GETFONTSTYLES, offsetof(Settings, fontStyles), sizeof(CM_FONTSTYLES), AnyRecord},
    {CMM_SETLINENUMBERING, CMM_GETLINENUMBERING, offsetof(Settings, lineNumbering), sizeof(CM_LINENUMBERING),
     ValidNumbering},
};

bool Selects(const NumberSetting& row, WPARAM w) noexcept { return row.selector < 0 || static_cast<WPARAM>(row.selector) == w; }

} // namespace

CM_COLORS Settings::DefaultColors() noexcept {
    CM_COLORS c;
    const COLORREF text[CMT_COUNT] = {RGB(0, 0, 0),       RGB(0, 0, 255),   RGB(128, 0, 0),     RGB(0, 128, 0),
                                      RGB(163, 21, 21),   RGB(9, 134, 88),  RGB(0, 0, 160),     RGB(128, 0, 128),
                                      RGB(160, 80, 0),    RGB(0, 128, 128), RGB(43, 145, 175),  RGB(255, 255, 255)};
    for (int i = 0; i < CMT_COUNT; ++i) {
        c.text[i] = text[i];
        c.back[i] = CLR_INVALID;
    }
    c.back[CMT_SELECTION] = RGB(51, 103, 214);
    c.window = RGB(255, 255, 255);
    c.leftMargin = RGB(240, 240, 240);
    c.marginDivider = RGB(200, 200, 200);
    c.currentLine = CLR_INVALID;
    c.inactiveSelectionText = RGB(0, 0, 0);
    c.inactiveSelectionBack = RGB(204, 204, 204);
    c.reserved = 0;
    return c;
}

std::optional<LRESULT> HandleSettingMessage(Settings& settings, UINT message, WPARAM w, LPARAM l, bool& changed) {
    changed = false;
    for (const NumberSetting& row : kNumbers) {
        if (row.set == message && Selects(row, w)) {
            DWORD value = static_cast<DWORD>(row.selector < 0 ? w : l);
            if (row.high == kFlag) value = value != 0;
            if (value < row.low || value > row.high) return CME_BADARGUMENT;
            settings.*row.member = value;
            changed = true;
            return CME_SUCCESS;
        }
        if (row.get == message && Selects(row, w)) return settings.*row.member;
    }
    for (const RecordSetting& row : kRecords) {
        if (row.set != message && row.get != message) continue;
        if (!l) return CME_BADARGUMENT;
        BYTE* const stored = reinterpret_cast<BYTE*>(&settings) + row.offset;
        if (row.get == message) {
            std::memcpy(reinterpret_cast<void*>(l), stored, row.size);
        } else {
            if (!row.valid(reinterpret_cast<const void*>(l))) return CME_BADARGUMENT;
            std::memcpy(stored, reinterpret_cast<const void*>(l), row.size);
            changed = true;
        }
        return CME_SUCCESS;
    }
    return std::nullopt;
}

} // namespace cmax
