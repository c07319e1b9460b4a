// cmax20u.dll: a syntax-colouring text editor control. Include this header to create "CodeMax" windows, send
// them messages and call the library's functions, which it exports by ordinal only.
#pragma once
#include <windows.h>

#define CODEMAX_CLASS L"CodeMax"
#define CODEMAX_LIBRARY L"cmax20u.dll"

// Result codes of the messages that apply a value and of the library functions.
#define CME_SUCCESS 0
#define CME_BADARGUMENT 1
#define CME_NOTFOUND 2
#define CME_OUTOFMEMORY 3

// Token classes: the colouring of the text and the entries of CM_COLORS and CM_FONTSTYLES.
#define CMT_TEXT 0
#define CMT_KEYWORD 1
#define CMT_OPERATOR 2
#define CMT_COMMENT 3
#define CMT_STRING 4
#define CMT_NUMBER 5
#define CMT_SCOPEKEYWORD 6
#define CMT_WORDS1 7
#define CMT_WORDS2 8
#define CMT_WORDS3 9
#define CMT_LINENUMBER 10
#define CMT_SELECTION 11
#define CMT_COUNT 12

#include <pshpack4.h>

// 124 bytes. A background of CLR_INVALID shows the window colour.
typedef struct CM_COLORS {
    COLORREF text[CMT_COUNT];         // foreground per token class
    COLORREF back[CMT_COUNT];         // background per token class
    COLORREF window;
    COLORREF leftMargin;
    COLORREF marginDivider;
    COLORREF currentLine;             // background of the caret's line; CLR_INVALID: not marked
    COLORREF inactiveSelectionText;   // the selection while the control has no focus
    COLORREF inactiveSelectionBack;
    COLORREF reserved;
} CM_COLORS;

// 12 bytes: the font style of each token class, a combination of the CM_FONT_ flags.
#define CM_FONT_NORMAL 0
#define CM_FONT_BOLD 1
#define CM_FONT_ITALIC 2
#define CM_FONT_UNDERLINE 4
typedef struct CM_FONTSTYLES {
    BYTE style[CMT_COUNT];
} CM_FONTSTYLES;

// 12 bytes: line numbers in the margin.
typedef struct CM_LINENUMBERING {
    BOOL enabled;
    DWORD startAt;   // the number of the first line
    DWORD radix;     // 2, 8, 10 or 16
} CM_LINENUMBERING;

#include <poppack.h>

// A language: lists are texts of items separated by line feeds; null or empty lists have no items. Words ending
// in a letter, digit or underscore match only as whole words; a word list item may contain blanks ("End With").
#define CMLS_PROCEDURAL 0
typedef struct CM_LANGUAGE {
    DWORD style;                     // CMLS_PROCEDURAL
    BOOL caseSensitive;
    LPCWSTR keywords;
    LPCWSTR operators;
    LPCWSTR singleLineComments;
    LPCWSTR multiLineCommentStart;   // item n opens the comment that item n of multiLineCommentEnd closes
    LPCWSTR multiLineCommentEnd;
    LPCWSTR scopeKeywordsOpen;
    LPCWSTR scopeKeywordsClose;
    LPCWSTR stringDelimiters;        // a string ends at the delimiter that opened it, or at the line's end
    WCHAR escapeChar;                // 0: none
    WCHAR terminatorChar;            // 0: none
    LPCWSTR words1;                  // three further lists, coloured as CMT_WORDS1 to CMT_WORDS3
    LPCWSTR words2;
    LPCWSTR words3;
} CM_LANGUAGE;

// A key binding: the key with its modifiers, optionally followed by a second key (a two-stroke binding).
#define CM_MOD_SHIFT 1
#define CM_MOD_CTRL 2
#define CM_MOD_ALT 4
typedef struct CM_HOTKEY {
    BYTE modifiers1;
    UINT virtualKey1;
    BYTE modifiers2;
    UINT virtualKey2;   // 0: a single-stroke binding
} CM_HOTKEY;

// Commands, the targets of key bindings (CMM_EXECUTECMD runs one directly).
#define CMD_COPY 0x80
#define CMD_CUT 0x81
#define CMD_PASTE 0x82
#define CMD_UNDO 0x83
#define CMD_REDO 0x84
#define CMD_SELECTALL 0x89
#define CMD_FINDREPLACE 0xA9   // the find and replace dialog

// Library functions, exported by ordinal only. The "get" functions answer the size in bytes that they need and
// copy only into a buffer at least that large; call them with a null buffer for the size.
#define CM_ORDINAL_REGISTERLANGUAGE 3
#define CM_ORDINAL_UNREGISTERLANGUAGE 4
#define CM_ORDINAL_GETLANGUAGEDEF 5
#define CM_ORDINAL_GETHOTKEYS 7
#define CM_ORDINAL_SETHOTKEYS 8
#define CM_ORDINAL_REGISTERHOTKEY 11
#define CM_ORDINAL_UNREGISTERHOTKEY 12
#define CM_ORDINAL_GETMACRO 14
#define CM_ORDINAL_SETMACRO 15
#define CM_MAX_MACROS 10

// Registers (or replaces) a language under a name, compared without case; the record is copied.
typedef LONG(WINAPI* CMREGISTERLANGUAGE)(LPCWSTR name, const CM_LANGUAGE* language);
typedef LONG(WINAPI* CMUNREGISTERLANGUAGE)(LPCWSTR name);
// A copy of a registered language: a CM_LANGUAGE whose texts follow it in the same buffer.
typedef DWORD(WINAPI* CMGETLANGUAGEDEF)(LPCWSTR name, BYTE* buffer, DWORD size);
// All key bindings of the process, as one record that CMSETHOTKEYS takes back (replacing them all).
typedef DWORD(WINAPI* CMGETHOTKEYS)(BYTE* buffer, DWORD size);
typedef LONG(WINAPI* CMSETHOTKEYS)(const BYTE* buffer, DWORD size);
// Binds a key to a command, replacing the key's binding; unbinding answers CME_NOTFOUND for an unbound key.
typedef LONG(WINAPI* CMREGISTERHOTKEY)(const CM_HOTKEY* key, WORD command);
typedef LONG(WINAPI* CMUNREGISTERHOTKEY)(const CM_HOTKEY* key);
// Keystroke macro n (0 to CM_MAX_MACROS - 1) as bytes; setting a null buffer or size 0 clears it.
typedef DWORD(WINAPI* CMGETMACRO)(int index, BYTE* buffer, DWORD size);
typedef LONG(WINAPI* CMSETMACRO)(int index, const BYTE* buffer, DWORD size);

// Settings. A message without a selector takes the value in wParam; a message with a selector (w) takes the
// selector in wParam and the value in lParam. The set messages answer a CME_ code, the get messages the value.
#define CMM_SETCOLORSYNTAX 0x0A4A
#define CMM_GETCOLORSYNTAX 0x0A54
#define CMM_SETCOLORS 0x0A5E   // lParam: const CM_COLORS*
#define CMM_GETCOLORS 0x0A68   // lParam: CM_COLORS* to fill
#define CMM_SETTABEXPAND 0x0B13
#define CMM_GETTABEXPAND 0x0B14
#define CMM_SETSMOOTHSCROLL 0x0B1C
#define CMM_SETTABSIZE 0x0B1D   // 1 to 64
#define CMM_GETTABSIZE 0x0B1E
#define CMM_GETSMOOTHSCROLL 0x0B26
#define CMM_SETLINETOOLTIPS 0x0B44
#define CMM_GETLINETOOLTIPS 0x0B4E
#define CMM_SETLEFTMARGIN 0x0B58
#define CMM_GETLEFTMARGIN 0x0B62
#define CMM_SETCOLUMNSEL 0x0B63
#define CMM_GETCOLUMNSEL 0x0B64
#define CMM_SETDRAGDROP 0x0B65
#define CMM_GETDRAGDROP 0x0B66
#define CMM_SETCASESENSITIVE 0x0B80   // find and replace: case-sensitive
#define CMM_GETCASESENSITIVE 0x0B8A
#define CMM_SETPRESERVECASE 0x0B8B    // replace: the replacement takes the case of the found text
#define CMM_GETPRESERVECASE 0x0B8C
#define CMM_SETWHOLEWORD 0x0B94       // find and replace: whole words only
#define CMM_GETWHOLEWORD 0x0B9E
#define CMM_SETAUTOINDENTMODE 0x101C  // 0 none, 1 as the previous line, 2 also one level deeper after a scope opening
#define CMM_GETAUTOINDENTMODE 0x1026
#define CMM_SHOWSCROLLBAR 0x1274      // w: 1 horizontal, 0 vertical
#define CMM_HASSCROLLBAR 0x127E
#define CMM_ENABLESPLITTER 0x1288     // w: 1 horizontal, 0 vertical
#define CMM_ISSPLITTERENABLED 0x1292
#define CMM_RESETPROPS 0x129C         // every setting back to the control's initial value
#define CMM_SETSELBOUNDS 0x12B0
#define CMM_GETSELBOUNDS 0x12BA
#define CMM_SETFONTSTYLES 0x12C4      // lParam: const CM_FONTSTYLES*
#define CMM_GETFONTSTYLES 0x12CE      // lParam: CM_FONTSTYLES* to fill
#define CMM_SETLINENUMBERING 0x133C   // lParam: const CM_LINENUMBERING*
#define CMM_GETLINENUMBERING 0x1346   // lParam: CM_LINENUMBERING* to fill
#define CMM_SETNORMALIZECASE 0x1382   // keywords of a language without case take the case of their list
#define CMM_GETNORMALIZECASE 0x138C

// Text. CMM_GETTEXTLENGTH and CMM_GETTEXT address the whole text or the selection, as CMM_SETTEXTSCOPE chose
// (initially the whole text); lines are separated by CR LF.
#define CM_SCOPE_SELECTION 0
#define CM_SCOPE_ALL 1
#define CMM_GETTEXTLENGTH 0x0D2E   // answers the length in characters
#define CMM_GETTEXT 0x0D38         // wParam: buffer size in characters, lParam: WCHAR*; answers the characters copied
#define CMM_SETTEXTSCOPE 0x0D74    // wParam: CM_SCOPE_
#define CMM_REPLACESEL 0x0D92      // lParam: LPCWSTR (null: the selection is deleted)

typedef struct CM_RANGE {
    int startLine, startColumn;   // the anchor
    int endLine, endColumn;       // the caret
} CM_RANGE;

#define CMM_SETLANGUAGE 0x1400      // lParam: a registered language's name; null or "": plain text
#define CMM_GETLANGUAGE 0x1401      // wParam: buffer size in characters, lParam: WCHAR*; answers the name's length
#define CMM_SETSEL 0x1402           // lParam: const CM_RANGE*, clamped to the text; wParam: scroll to the caret
#define CMM_GETSEL 0x1403           // lParam: CM_RANGE*
#define CMM_EXECUTECMD 0x1404       // wParam: CMD_
#define CMM_PROPSCHANGED 0x1405     // sends CMN_PROPSCHANGE, as when the user changes a setting
#define CMM_GETLINECOUNT 0x1406

// Notifications, sent to the parent as WM_NOTIFY with an NMHDR.
#define CMN_CHANGE 100        // the text changed
#define CMN_PROPSCHANGE 170   // the user changed a setting (the find options of the find and replace dialog)
