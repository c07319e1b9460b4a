// The settings of one control and the messages that set and answer them.
#pragma once
#include "codemax.h"
#include <optional>

namespace cmax {

struct Settings {
    DWORD colorSyntax = 1;
    DWORD hScrollBar = 1;
    DWORD vScrollBar = 1;
    DWORD hSplitter = 1;
    DWORD vSplitter = 1;
    DWORD wholeWord = 0;
    DWORD autoIndentMode = 1;
    DWORD smoothScrolling = 0;
    DWORD lineToolTips = 0;
    DWORD leftMargin = 1;
    DWORD columnSel = 0;
    DWORD dragDrop = 0;
    DWORD caseSensitive = 0;
    DWORD preserveCase = 0;
    DWORD tabExpand = 0;
    DWORD tabSize = 8;
    DWORD normalizeCase = 0;
    DWORD selBounds = 0;
    CM_COLORS colors = DefaultColors();
    CM_FONTSTYLES fontStyles = {};
    CM_LINENUMBERING lineNumbering = {FALSE, 1, 10};

    static CM_COLORS DefaultColors() noexcept;
};

// Handles a setting's message: the answer, or nothing when the message is not one of the settings; changed tells
// whether a setting took a new value.
std::optional<LRESULT> HandleSettingMessage(Settings& settings, UINT message, WPARAM w, LPARAM l, bool& changed);

} // namespace cmax
