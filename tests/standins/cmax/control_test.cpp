// The editor control through its window messages and the library's ordinals.
#include "editor_window.h"
#include <gtest/gtest.h>
#include <cstring>
#include <functional>
#include <tuple>

namespace {

using test::EditorFunction;
using test::EditorWindow;

template <class T>
LPARAM Lp(T* pointer) { return reinterpret_cast<LPARAM>(pointer); }

// Small languages of the tests' own: one with case and C-like markers, one without case.
const CM_LANGUAGE kBraces{CMLS_PROCEDURAL, TRUE, L"if\nfunction", L"=\n;", L"//", L"/*", L"*/", L"{", L"}", L"\"", L'\\',
                          L';', nullptr, L"<%\n%>", nullptr};
const CM_LANGUAGE kWords{CMLS_PROCEDURAL, FALSE, L"Dim\n#Const", nullptr, L"'\nRem", nullptr, nullptr, L"For", L"Next",
                         L"\"", 0, 0, nullptr, nullptr, nullptr};

void RegisterTestLanguages() {
    const auto registerLanguage = EditorFunction<CMREGISTERLANGUAGE>(CM_ORDINAL_REGISTERLANGUAGE);
    ASSERT_EQ(registerLanguage(L"Braces", &kBraces), CME_SUCCESS);
    ASSERT_EQ(registerLanguage(L"Words", &kWords), CME_SUCCESS);
}

std::vector<BYTE> HotKeys() {
    const auto get = EditorFunction<CMGETHOTKEYS>(CM_ORDINAL_GETHOTKEYS);
    std::vector<BYTE> bytes(get(nullptr, 0));
    EXPECT_EQ(get(bytes.data(), static_cast<DWORD>(bytes.size())), bytes.size());
    return bytes;
}

// Anchor and caret of the selection, each as line * 100 + column.
std::pair<int, int> Selection(const EditorWindow& editor) {
    CM_RANGE range{-1, -1, -1, -1};
    editor.Send(CMM_GETSEL, 0, Lp(&range));
    return {range.startLine * 100 + range.startColumn, range.endLine * 100 + range.endColumn};
}

TEST(CodeMaxControl, TextRoundTrip) {
    const struct { const wchar_t *in, *out; int lines; } rows[] = {
        {L"one\ntwo\r\nthree\rfour", L"one\r\ntwo\r\nthree\r\nfour", 4}, {L"", L"", 1}, {L"tail\n", L"tail\r\n", 2},
        {L"\r\n\r\n", L"\r\n\r\n", 3}};
    EditorWindow editor;
    for (const auto& row : rows) {
        editor.Send(WM_SETTEXT, 0, Lp(row.in));
        EXPECT_EQ(editor.Text(), row.out) << row.in;
        EXPECT_EQ(editor.Send(CMM_GETTEXTLENGTH), static_cast<LRESULT>(std::wcslen(row.out))) << row.in;
        EXPECT_EQ(editor.Send(CMM_GETLINECOUNT), row.lines) << row.in;
    }

    // Short, empty and missing buffers: no more than the buffer is written.
    editor.Send(WM_SETTEXT, 0, Lp(L"abcdef"));
    wchar_t buffer[8];
    std::wmemset(buffer, L'X', 8);
    EXPECT_EQ(editor.Send(CMM_GETTEXT, 4, Lp(buffer)), 3);
    EXPECT_EQ(std::wstring(buffer, 8), std::wstring(L"abc\0XXXX", 8));
    EXPECT_EQ(editor.Send(CMM_GETTEXT, 0, Lp(buffer)), 0);
    EXPECT_EQ(buffer[0], L'a');
    EXPECT_EQ(editor.Send(CMM_GETTEXT, 8, 0), 0);

    // The selection as text scope, then replaced.
    editor.Select(0, 1, 0, 4);
    editor.Send(CMM_SETTEXTSCOPE, CM_SCOPE_SELECTION);
    EXPECT_EQ(editor.Send(CMM_GETTEXTLENGTH), 3);
    EXPECT_EQ(editor.Send(CMM_GETTEXT, 8, Lp(buffer)), 3);
    EXPECT_EQ(std::wstring(buffer), L"bcd");
    editor.Send(CMM_SETTEXTSCOPE, CM_SCOPE_ALL);
    editor.Send(CMM_REPLACESEL, 0, Lp(L"X\nY"));
    EXPECT_EQ(editor.Text(), L"aX\r\nYef");
    EXPECT_EQ(Selection(editor), std::make_pair(101, 101));
}

TEST(CodeMaxControl, EditingAndLanguages) {
    RegisterTestLanguages();
    // Language, auto-indent mode, tab expansion; the text and the caret; what is typed and what results.
    const struct { const wchar_t* language; DWORD autoIndent, tabExpand; const wchar_t* text; int line, column;
                   const wchar_t *typed, *expected; } rows[] = {
        {L"", 1, 0, L"a\r\nb", 1, 0, L"\b", L"ab"}, {L"", 1, 0, L"ab", 0, 0, L"\b", L"ab"},
        {L"Braces", 2, 0, L"\tif (x) {", 0, 9, L"\r", L"\tif (x) {\r\n\t\t"},
        {L"Braces", 1, 0, L"\tif (x) {", 0, 9, L"\r", L"\tif (x) {\r\n\t"},
        {L"Braces", 2, 0, L"\t} else {", 0, 1, L"\r", L"\t\r\n\t} else {"},
        {L"Words", 2, 0, L"  for i", 0, 7, L"\r", L"  for i\r\n  \t"}, {L"Braces", 0, 1, L"ab", 0, 2, L"\tc", L"ab      c"},
        {L"Words", 1, 0, L"", 0, 0, L"dim x", L"Dim x"}, {L"Words", 1, 0, L"", 0, 0, L"#const y\r", L"#Const y\r\n"},
        {L"Words", 1, 0, L"", 0, 0, L"' dim x", L"' dim x"}, {L"Words", 1, 0, L"", 0, 0, L"dimmer ", L"dimmer "},
        {L"Braces", 1, 0, L"", 0, 0, L"If x", L"If x"},   // a language with case keeps what was typed
    };
    for (const auto& row : rows) {
        EditorWindow editor;
        EXPECT_EQ(editor.Send(CMM_SETLANGUAGE, 0, Lp(row.language)), CME_SUCCESS);
        editor.Send(CMM_SETNORMALIZECASE, 1);
        editor.Send(CMM_SETAUTOINDENTMODE, row.autoIndent);
        editor.Send(CMM_SETTABEXPAND, row.tabExpand);
        editor.Send(WM_SETTEXT, 0, Lp(row.text));
        editor.Select(row.line, row.column, row.line, row.column);
        editor.Type(row.typed);
        EXPECT_EQ(editor.Text(), row.expected) << row.text << " + " << row.typed;
    }

    // Typing is undone as one edit; Delete removes the character after the caret.
    EditorWindow editor;
    editor.Type(L"abc");
    editor.Select(0, 1, 0, 1);
    editor.Key(VK_DELETE);
    const std::pair<WORD, const wchar_t*> steps[] = {{CMD_UNDO, L"abc"}, {CMD_UNDO, L""}, {CMD_REDO, L"abc"}, {CMD_REDO, L"ac"}};
    for (const auto& [command, text] : steps) {
        EXPECT_EQ(editor.Send(CMM_EXECUTECMD, command), CME_SUCCESS);
        EXPECT_EQ(editor.Text(), text);
    }
    EXPECT_EQ(editor.Send(CMM_EXECUTECMD, 0x1234), CME_BADARGUMENT);
    EXPECT_EQ(editor.Send(CMM_SETLANGUAGE, 0, Lp(L"NoSuchLanguage")), CME_NOTFOUND);
}

TEST(CodeMaxControl, SettingsAnswerBack) {
    const struct { UINT set, get; int selector; DWORD initial, changed; } rows[] = {
        {CMM_SETCOLORSYNTAX, CMM_GETCOLORSYNTAX, -1, 1, 0},   {CMM_SHOWSCROLLBAR, CMM_HASSCROLLBAR, 1, 1, 0},
        {CMM_SHOWSCROLLBAR, CMM_HASSCROLLBAR, 0, 1, 0},       {CMM_ENABLESPLITTER, CMM_ISSPLITTERENABLED, 1, 1, 0},
        {CMM_ENABLESPLITTER, CMM_ISSPLITTERENABLED, 0, 1, 0}, {CMM_SETWHOLEWORD, CMM_GETWHOLEWORD, -1, 0, 1},
        {CMM_SETAUTOINDENTMODE, CMM_GETAUTOINDENTMODE, -1, 1, 2}, {CMM_SETSMOOTHSCROLL, CMM_GETSMOOTHSCROLL, -1, 0, 1},
        {CMM_SETLINETOOLTIPS, CMM_GETLINETOOLTIPS, -1, 0, 1}, {CMM_SETLEFTMARGIN, CMM_GETLEFTMARGIN, -1, 1, 0},
        {CMM_SETCOLUMNSEL, CMM_GETCOLUMNSEL, -1, 0, 1},       {CMM_SETDRAGDROP, CMM_GETDRAGDROP, -1, 0, 1},
        {CMM_SETCASESENSITIVE, CMM_GETCASESENSITIVE, -1, 0, 1}, {CMM_SETPRESERVECASE, CMM_GETPRESERVECASE, -1, 0, 1},
        {CMM_SETTABEXPAND, CMM_GETTABEXPAND, -1, 0, 1},       {CMM_SETTABSIZE, CMM_GETTABSIZE, -1, 8, 3},
        {CMM_SETNORMALIZECASE, CMM_GETNORMALIZECASE, -1, 0, 1}, {CMM_SETSELBOUNDS, CMM_GETSELBOUNDS, -1, 0, 1},
    };
    EditorWindow editor;
    const auto set = [&](const auto& row, DWORD value) {
        return row.selector < 0 ? editor.Send(row.set, value) : editor.Send(row.set, row.selector, value);
    };
    const auto get = [&](const auto& row) { return editor.Send(row.get, row.selector < 0 ? 0 : row.selector); };
    // One setting changed at a time: only its own answer changes, and resetting brings back the initial one.
    for (const auto& changed : rows) {
        EXPECT_EQ(set(changed, changed.changed), CME_SUCCESS) << &changed - rows;
        for (const auto& row : rows)
            EXPECT_EQ(get(row), LRESULT(&row == &changed ? row.changed : row.initial)) << &changed - rows << ": " << &row - rows;
        editor.Send(CMM_RESETPROPS);
    }
    const auto scrollBars = [&] { return ::GetWindowLongW(editor.control(), GWL_STYLE) & (WS_HSCROLL | WS_VSCROLL); };
    EXPECT_EQ(scrollBars(), WS_HSCROLL | WS_VSCROLL);
    editor.Send(CMM_SHOWSCROLLBAR, 1, 0);
    EXPECT_EQ(scrollBars(), WS_VSCROLL);

    // Out of range values are refused and change nothing; flags answer 0 or 1.
    using Value = std::pair<UINT, WPARAM>;
    for (const auto& [message, value] : {Value{CMM_SETTABSIZE, 0}, Value{CMM_SETTABSIZE, 65}, Value{CMM_SETAUTOINDENTMODE, 3}})
        EXPECT_EQ(editor.Send(message, value), CME_BADARGUMENT) << std::hex << message << " " << value;
    EXPECT_EQ(editor.Send(CMM_GETTABSIZE), 8);
    EXPECT_EQ(editor.Send(CMM_SETWHOLEWORD, 5), CME_SUCCESS);
    EXPECT_EQ(editor.Send(CMM_GETWHOLEWORD), 1);

    // Records: what is set is answered whole; a missing record or a bad line numbering is refused and changes nothing.
    CM_COLORS colors;
    for (size_t i = 0; i < sizeof colors; ++i) reinterpret_cast<BYTE*>(&colors)[i] = static_cast<BYTE>(i * 7);
    const CM_FONTSTYLES styles{{1, 2, 4, 3, 0, 1, 2, 4, 7, 0, 1, 5}};
    const CM_LINENUMBERING numbering{TRUE, 10, 16}, badRadix{TRUE, 1, 7};
    const std::tuple<UINT, UINT, const void*, size_t, const void*> records[] = {
        {CMM_SETCOLORS, CMM_GETCOLORS, &colors, sizeof colors, nullptr},
        {CMM_SETFONTSTYLES, CMM_GETFONTSTYLES, &styles, sizeof styles, nullptr},
        {CMM_SETLINENUMBERING, CMM_GETLINENUMBERING, &numbering, sizeof numbering, &badRadix},
    };
    for (const auto& [put, read, record, size, refused] : records) {
        std::vector<BYTE> back(size, 0xCC);
        EXPECT_EQ(editor.Send(put, 0, Lp(record)), CME_SUCCESS) << std::hex << put;
        EXPECT_EQ(editor.Send(put, 0, Lp(refused)), CME_BADARGUMENT) << std::hex << put;
        EXPECT_EQ(editor.Send(read, 0, Lp(back.data())), CME_SUCCESS) << std::hex << read;
        EXPECT_EQ(std::memcmp(record, back.data(), size), 0) << std::hex << read;
    }
    // Painting with all of it: numbers in the margin, styled fonts, comments and strings.
    editor.Send(WM_SETTEXT, 0, Lp(L"if (a) { /* x\r\n y */ b = \"s\"; }\r\n\tc"));
    EXPECT_EQ(editor.Send(WM_PAINT), 0);
}

TEST(CodeMaxLibrary, KeyBindings) {
    const auto bind = EditorFunction<CMREGISTERHOTKEY>(CM_ORDINAL_REGISTERHOTKEY);
    const auto unbind = EditorFunction<CMUNREGISTERHOTKEY>(CM_ORDINAL_UNREGISTERHOTKEY);
    const auto get = EditorFunction<CMGETHOTKEYS>(CM_ORDINAL_GETHOTKEYS);
    const auto set = EditorFunction<CMSETHOTKEYS>(CM_ORDINAL_SETHOTKEYS);
    const std::vector<BYTE> original = HotKeys();

    std::vector<BYTE> shortBuffer(original.size() - 1, 0xCC), untouched = shortBuffer;   // left as it was
    EXPECT_EQ(get(shortBuffer.data(), static_cast<DWORD>(shortBuffer.size())), original.size());
    EXPECT_EQ(shortBuffer, untouched);

    const CM_HOTKEY chord{CM_MOD_CTRL, 'K', CM_MOD_CTRL, 'U'}, plain{0, 'Q', 0, 0};
    ASSERT_EQ(bind(&chord, CMD_SELECTALL), CME_SUCCESS);
    ASSERT_EQ(bind(&plain, CMD_SELECTALL), CME_SUCCESS);
    const std::vector<BYTE> bound = HotKeys();

    // The bindings act: a two-stroke key, and a plain key whose character is not typed.
    EditorWindow editor;
    editor.Send(WM_SETTEXT, 0, Lp(L"abc\r\ndef"));
    editor.Key('K', {VK_CONTROL}, 0x0B);
    editor.Key('U', {VK_CONTROL}, 0x15);
    EXPECT_EQ(Selection(editor), std::make_pair(0, 103));
    editor.Select(0, 0, 0, 0);
    editor.Key('Q', {}, L'q');
    EXPECT_EQ(Selection(editor), std::make_pair(0, 103));
    EXPECT_EQ(editor.Text(), L"abc\r\ndef");

    EXPECT_EQ(unbind(&chord), CME_SUCCESS);
    EXPECT_EQ(unbind(&chord), CME_NOTFOUND);
    EXPECT_EQ(unbind(&plain), CME_SUCCESS);
    EXPECT_EQ(HotKeys(), original);
    EXPECT_EQ(set(bound.data(), static_cast<DWORD>(bound.size())), CME_SUCCESS);
    EXPECT_EQ(HotKeys(), bound);

    // Refused records and keys change nothing.
    std::vector<BYTE> badMagic = bound, badCommand = bound, badCount = bound, cut(bound.begin(), bound.end() - 1);
    badMagic[0] = 'X';
    badCommand[8 + 4] = 0x34, badCommand[8 + 5] = 0x12;
    badCount[4] = 0xFF;
    for (const auto* record : {&badMagic, &badCommand, &badCount, &cut})
        EXPECT_EQ(set(record->data(), static_cast<DWORD>(record->size())), CME_BADARGUMENT);
    EXPECT_EQ(set(nullptr, 8), CME_BADARGUMENT);
    const CM_HOTKEY noKey{CM_MOD_CTRL, 0, 0, 0}, badModifier{0x10, 'A', 0, 0}, hugeKey{0, 0x1234, 0, 0};
    for (const CM_HOTKEY* key : {&noKey, &badModifier, &hugeKey, static_cast<const CM_HOTKEY*>(nullptr)})
        EXPECT_EQ(bind(key, CMD_COPY), CME_BADARGUMENT);
    EXPECT_EQ(bind(&plain, 0x1234), CME_BADARGUMENT);
    EXPECT_EQ(HotKeys(), bound);
    EXPECT_EQ(set(original.data(), static_cast<DWORD>(original.size())), CME_SUCCESS);
}

TEST(CodeMaxLibrary, MacrosAndLanguageRecords) {
    const auto getMacro = EditorFunction<CMGETMACRO>(CM_ORDINAL_GETMACRO);
    const auto setMacro = EditorFunction<CMSETMACRO>(CM_ORDINAL_SETMACRO);
    const BYTE macro[] = {1, 2, 3, 4, 5};
    BYTE back[6] = {9, 9, 9, 9, 9, 9};
    ASSERT_EQ(setMacro(3, macro, sizeof macro), CME_SUCCESS);
    EXPECT_EQ(getMacro(3, back, 4), 5u);
    EXPECT_EQ(back[0], 9);
    EXPECT_EQ(getMacro(3, back, 6), 5u);
    EXPECT_EQ(std::memcmp(back, macro, 5), 0);
    for (const int index : {-1, CM_MAX_MACROS}) {
        EXPECT_EQ(setMacro(index, macro, sizeof macro), CME_BADARGUMENT);
        EXPECT_EQ(getMacro(index, back, 6), 0u);
    }
    EXPECT_EQ(setMacro(3, macro, 0), CME_SUCCESS);
    EXPECT_EQ(getMacro(3, nullptr, 0), 0u);

    // Names are found without case (the record's lists are checked with the script languages); refused records
    // leave nothing registered.
    RegisterTestLanguages();
    const auto getDefinition = EditorFunction<CMGETLANGUAGEDEF>(CM_ORDINAL_GETLANGUAGEDEF);
    EXPECT_GT(getDefinition(L"braces", nullptr, 0), sizeof(CM_LANGUAGE));

    const auto registerLanguage = EditorFunction<CMREGISTERLANGUAGE>(CM_ORDINAL_REGISTERLANGUAGE);
    CM_LANGUAGE otherStyle = kBraces, unpaired = kBraces;
    otherStyle.style = 1;
    unpaired.multiLineCommentEnd = nullptr;
    for (const CM_LANGUAGE* refused : {&otherStyle, &unpaired, static_cast<CM_LANGUAGE*>(nullptr)})
        EXPECT_EQ(registerLanguage(L"Refused", refused), CME_BADARGUMENT);
    EXPECT_EQ(registerLanguage(L"", &kBraces), CME_BADARGUMENT);
    EXPECT_EQ(getDefinition(L"Refused", nullptr, 0), 0u);
    const auto unregister = EditorFunction<CMUNREGISTERLANGUAGE>(CM_ORDINAL_UNREGISTERLANGUAGE);
    EXPECT_EQ(unregister(L"Braces"), CME_SUCCESS);
    EXPECT_EQ(unregister(L"Braces"), CME_NOTFOUND);
}

// The dialog of Ctrl+H, answered from a timer that its message loop runs.
struct DialogAnswer { bool accept; const wchar_t *find, *replacement; bool wholeWord, preserveCase; } g_answer;

void CALLBACK AnswerDialog(HWND, UINT, UINT_PTR timer, DWORD) {
    const HWND dialog = ::FindWindowW(L"#32770", L"Replace");
    if (!dialog) return;
    ::KillTimer(nullptr, timer);
    ::SetDlgItemTextW(dialog, 1001, g_answer.find);
    ::SetDlgItemTextW(dialog, 1002, g_answer.replacement);
    ::CheckDlgButton(dialog, 1003, g_answer.wholeWord ? BST_CHECKED : BST_UNCHECKED);
    ::CheckDlgButton(dialog, 1005, g_answer.preserveCase ? BST_CHECKED : BST_UNCHECKED);
    ::SendMessageW(dialog, WM_COMMAND, g_answer.accept ? IDOK : IDCANCEL, 0);
}

TEST(CodeMaxControl, Notifications) {
    EditorWindow editor;
    const CM_HOTKEY findKey{CM_MOD_CTRL, 'H', 0, 0};
    ASSERT_EQ(EditorFunction<CMREGISTERHOTKEY>(CM_ORDINAL_REGISTERHOTKEY)(&findKey, CMD_FINDREPLACE), CME_SUCCESS);
    const auto ctrlH = [&] { editor.Key('H', {VK_CONTROL}, 0x08); };
    // An action, the answer to the dialog that it opens if any, then the text and the notifications.
    const struct { std::function<void()> act; DialogAnswer answer; const wchar_t* text; std::vector<UINT> codes; } rows[] = {
        {[&] { editor.Type(L"x"); }, {}, L"x", {CMN_CHANGE}},
        {[&] { editor.Send(CMM_REPLACESEL, 0, Lp(L"yz")); }, {}, L"xyz", {CMN_CHANGE}},
        {[&] { editor.Send(WM_SETTEXT, 0, Lp(L"cat Cat concat CAT")); }, {}, L"cat Cat concat CAT", {CMN_CHANGE}},
        {[&] { editor.Send(CMM_SETTABSIZE, 2); }, {}, L"cat Cat concat CAT", {}},
        {[&] { editor.Send(CMM_PROPSCHANGED); }, {}, L"cat Cat concat CAT", {CMN_PROPSCHANGE}},
        // Find and replace: accepted, it replaces and reports the changed find options; cancelled, nothing.
        {ctrlH, {false, L"cat", L"x", true, true}, L"cat Cat concat CAT", {}},
        {ctrlH, {true, L"cat", L"dog", true, true}, L"dog Dog concat DOG", {CMN_CHANGE, CMN_PROPSCHANGE}},
        {ctrlH, {true, L"dog", L"cow", true, true}, L"cow Cow concat COW", {CMN_CHANGE}},
        {ctrlH, {true, L"none", L"x", false, false}, L"cow Cow concat COW", {CMN_PROPSCHANGE}},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        editor.notifications.clear();
        g_answer = rows[i].answer;
        if (g_answer.find) ::SetTimer(nullptr, 0, 20, AnswerDialog);
        rows[i].act();
        EXPECT_EQ(editor.Text(), rows[i].text) << "row " << i;
        EXPECT_EQ(editor.notifications, rows[i].codes) << "row " << i;
    }
    EXPECT_EQ(editor.notifier, editor.control());
    EXPECT_EQ(editor.notifierId, static_cast<UINT_PTR>(test::kEditorId));
    EXPECT_EQ(editor.Send(CMM_GETWHOLEWORD), 0);
}

} // namespace
