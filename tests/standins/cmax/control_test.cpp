// The editor control through its window messages and the library's ordinals.
#include "editor_window.h"
#include <gtest/gtest.h>
#include <cstring>
#include <functional>

namespace {

using test::EditorFunction;
using test::EditorWindow;

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

TEST(CodeMaxControl, TextRoundTrip) {
    const struct {
        const wchar_t* in;
        const wchar_t* out;
        int lines;
    } rows[] = {
        {L"one\ntwo\r\nthree\rfour", L"one\r\ntwo\r\nthree\r\nfour", 4},
        {L"", L"", 1},
        {L"tail\n", L"tail\r\n", 2},
        {L"\r\n\r\n", L"\r\n\r\n", 3},
    };
    EditorWindow editor;
    for (const auto& row : rows) {
        editor.Send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(row.in));
        EXPECT_EQ(editor.Text(), row.out) << row.in;
        EXPECT_EQ(editor.Send(CMM_GETTEXTLENGTH), static_cast<LRESULT>(std::wcslen(row.out))) << row.in;
        EXPECT_EQ(editor.Send(CMM_GETLINECOUNT), row.lines) << row.in;
    }

    // Short, empty and missing buffers: no more than the buffer is written.
    editor.Send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"abcdef"));
    wchar_t buffer[8];
    std::wmemset(buffer, L'X', 8);
    EXPECT_EQ(editor.Send(CMM_GETTEXT, 4, reinterpret_cast<LPARAM>(buffer)), 3);
    EXPECT_EQ(std::wstring(buffer, 8), std::wstring(L"abc\0XXXX", 8));
    EXPECT_EQ(editor.Send(CMM_GETTEXT, 0, reinterpret_cast<LPARAM>(buffer)), 0);
    EXPECT_EQ(buffer[0], L'a');
    EXPECT_EQ(editor.Send(CMM_GETTEXT, 8, 0), 0);

    // The selection as text scope, then replaced.
    editor.Select(0, 1, 0, 4);
    editor.Send(CMM_SETTEXTSCOPE, CM_SCOPE_SELECTION);
    EXPECT_EQ(editor.Send(CMM_GETTEXTLENGTH), 3);
    EXPECT_EQ(editor.Send(CMM_GETTEXT, 8, reinterpret_cast<LPARAM>(buffer)), 3);
    EXPECT_EQ(std::wstring(buffer), L"bcd");
    editor.Send(CMM_SETTEXTSCOPE, CM_SCOPE_ALL);
    editor.Send(CMM_REPLACESEL, 0, reinterpret_cast<LPARAM>(L"X\nY"));
    EXPECT_EQ(editor.Text(), L"aX\r\nYef");
    CM_RANGE caret{-1, -1, -1, -1};
    editor.Send(CMM_GETSEL, 0, reinterpret_cast<LPARAM>(&caret));
    EXPECT_EQ(caret.startLine * 100 + caret.startColumn, 101);
    EXPECT_EQ(caret.endLine * 100 + caret.endColumn, 101);
}

TEST(CodeMaxControl, EditingAndLanguages) {
    RegisterTestLanguages();
    const struct {
        const wchar_t* language;
        DWORD autoIndent, tabExpand;
        const wchar_t* text;
        int line, column;
        const wchar_t* typed;
        const wchar_t* expected;
    } rows[] = {
        {L"", 1, 0, L"a\r\nb", 1, 0, L"\b", L"ab"},
        {L"", 1, 0, L"ab", 0, 0, L"\b", L"ab"},
        {L"Braces", 2, 0, L"\tif (x) {", 0, 9, L"\r", L"\tif (x) {\r\n\t\t"},
        {L"Braces", 1, 0, L"\tif (x) {", 0, 9, L"\r", L"\tif (x) {\r\n\t"},
        {L"Braces", 2, 0, L"\t} else {", 0, 1, L"\r", L"\t\r\n\t} else {"},
        {L"Words", 2, 0, L"  for i", 0, 7, L"\r", L"  for i\r\n  \t"},
        {L"Braces", 0, 1, L"ab", 0, 2, L"\tc", L"ab      c"},
        {L"Words", 1, 0, L"", 0, 0, L"dim x", L"Dim x"},
        {L"Words", 1, 0, L"", 0, 0, L"#const y\r", L"#Const y\r\n"},
        {L"Words", 1, 0, L"", 0, 0, L"' dim x", L"' dim x"},
        {L"Words", 1, 0, L"", 0, 0, L"dimmer ", L"dimmer "},
        {L"Braces", 1, 0, L"", 0, 0, L"If x", L"If x"},   // a language with case keeps what was typed
    };
    for (const auto& row : rows) {
        EditorWindow editor;
        EXPECT_EQ(editor.Send(CMM_SETLANGUAGE, 0, reinterpret_cast<LPARAM>(row.language)), CME_SUCCESS);
        editor.Send(CMM_SETNORMALIZECASE, 1);
        editor.Send(CMM_SETAUTOINDENTMODE, row.autoIndent);
        editor.Send(CMM_SETTABEXPAND, row.tabExpand);
        editor.Send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(row.text));
        editor.Select(row.line, row.column, row.line, row.column);
        editor.Type(row.typed);
        EXPECT_EQ(editor.Text(), row.expected) << row.text << " + " << row.typed;
    }

    // Typing is undone as one edit; Delete removes the character after the caret.
    EditorWindow editor;
    editor.Type(L"abc");
    editor.Select(0, 1, 0, 1);
    editor.Key(VK_DELETE);
    EXPECT_EQ(editor.Text(), L"ac");
    const std::pair<WORD, const wchar_t*> steps[] = {{CMD_UNDO, L"abc"}, {CMD_UNDO, L""}, {CMD_REDO, L"abc"}, {CMD_REDO, L"ac"}};
    for (const auto& [command, text] : steps) {
        EXPECT_EQ(editor.Send(CMM_EXECUTECMD, command), CME_SUCCESS);
        EXPECT_EQ(editor.Text(), text);
    }
    EXPECT_EQ(editor.Send(CMM_EXECUTECMD, 0x1234), CME_BADARGUMENT);
    EXPECT_EQ(editor.Send(CMM_SETLANGUAGE, 0, reinterpret_cast<LPARAM>(L"NoSuchLanguage")), CME_NOTFOUND);
}

TEST(CodeMaxControl, SettingsAnswerBack) {
    const struct {
        UINT set, get;
        int selector;
        DWORD initial, changed;
    } rows[] = {
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
        EXPECT_EQ(set(changed, changed.changed), CME_SUCCESS) << std::hex << changed.set << " " << changed.selector;
        for (const auto& row : rows) {
            const DWORD expected = &row == &changed ? row.changed : row.initial;
            EXPECT_EQ(get(row), static_cast<LRESULT>(expected)) << std::hex << changed.set << " " << changed.selector
                                                                << ": " << row.get << " " << row.selector;
        }
        editor.Send(CMM_RESETPROPS);
    }
    editor.Send(CMM_SHOWSCROLLBAR, 0, 0);
    editor.Send(CMM_SHOWSCROLLBAR, 1, 0);
    EXPECT_EQ(::GetWindowLongW(editor.control(), GWL_STYLE) & (WS_HSCROLL | WS_VSCROLL), 0);
    editor.Send(CMM_RESETPROPS);
    EXPECT_EQ(::GetWindowLongW(editor.control(), GWL_STYLE) & (WS_HSCROLL | WS_VSCROLL), WS_HSCROLL | WS_VSCROLL);

    // Out of range values are refused; flags answer 0 or 1.
    EXPECT_EQ(editor.Send(CMM_SETTABSIZE, 0), CME_BADARGUMENT);
    EXPECT_EQ(editor.Send(CMM_SETTABSIZE, 65), CME_BADARGUMENT);
    EXPECT_EQ(editor.Send(CMM_SETAUTOINDENTMODE, 3), CME_BADARGUMENT);
    EXPECT_EQ(editor.Send(CMM_GETTABSIZE), 8);
    EXPECT_EQ(editor.Send(CMM_SETWHOLEWORD, 5), CME_SUCCESS);
    EXPECT_EQ(editor.Send(CMM_GETWHOLEWORD), 1);

    // Records: what is set is answered whole; a bad line numbering or a missing record is refused.
    CM_COLORS colors, back;
    for (size_t i = 0; i < sizeof colors; ++i) reinterpret_cast<BYTE*>(&colors)[i] = static_cast<BYTE>(i * 7);
    std::memset(&back, 0xCC, sizeof back);
    EXPECT_EQ(editor.Send(CMM_SETCOLORS, 0, reinterpret_cast<LPARAM>(&colors)), CME_SUCCESS);
    EXPECT_EQ(editor.Send(CMM_GETCOLORS, 0, reinterpret_cast<LPARAM>(&back)), CME_SUCCESS);
    EXPECT_EQ(std::memcmp(&colors, &back, sizeof colors), 0);
    const CM_FONTSTYLES styles{{1, 2, 4, 3, 0, 1, 2, 4, 7, 0, 1, 5}};
    CM_FONTSTYLES stylesBack{};
    editor.Send(CMM_SETFONTSTYLES, 0, reinterpret_cast<LPARAM>(&styles));
    editor.Send(CMM_GETFONTSTYLES, 0, reinterpret_cast<LPARAM>(&stylesBack));
    EXPECT_EQ(std::memcmp(&styles, &stylesBack, sizeof styles), 0);
    const CM_LINENUMBERING good{TRUE, 10, 16}, bad{TRUE, 1, 7};
    CM_LINENUMBERING numbering{};
    EXPECT_EQ(editor.Send(CMM_SETLINENUMBERING, 0, reinterpret_cast<LPARAM>(&good)), CME_SUCCESS);
    EXPECT_EQ(editor.Send(CMM_SETLINENUMBERING, 0, reinterpret_cast<LPARAM>(&bad)), CME_BADARGUMENT);
    editor.Send(CMM_GETLINENUMBERING, 0, reinterpret_cast<LPARAM>(&numbering));
    EXPECT_EQ(numbering.startAt * 100 + numbering.radix, 1016u);
    EXPECT_EQ(editor.Send(CMM_GETCOLORS, 0, 0), CME_BADARGUMENT);
    // Painting with all of it: numbers in the margin, styled fonts, a language.
    editor.Send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"if (a) { /* x\r\n y */ b = \"s\"; }\r\n\tc"));
    ::InvalidateRect(editor.control(), nullptr, TRUE);
    EXPECT_TRUE(::UpdateWindow(editor.control()));
}

TEST(CodeMaxLibrary, KeyBindings) {
    const auto bind = EditorFunction<CMREGISTERHOTKEY>(CM_ORDINAL_REGISTERHOTKEY);
    const auto unbind = EditorFunction<CMUNREGISTERHOTKEY>(CM_ORDINAL_UNREGISTERHOTKEY);
    const auto get = EditorFunction<CMGETHOTKEYS>(CM_ORDINAL_GETHOTKEYS);
    const auto set = EditorFunction<CMSETHOTKEYS>(CM_ORDINAL_SETHOTKEYS);
    const std::vector<BYTE> original = HotKeys();
    ASSERT_GE(original.size(), 8u);

    // A buffer one byte short is left as it was.
    std::vector<BYTE> shortBuffer(original.size() - 1, 0xCC);
    EXPECT_EQ(get(shortBuffer.data(), static_cast<DWORD>(shortBuffer.size())), original.size());
    EXPECT_EQ(shortBuffer, std::vector<BYTE>(original.size() - 1, 0xCC));

    const CM_HOTKEY chord{CM_MOD_CTRL, 'K', CM_MOD_CTRL, 'U'}, plain{0, 'Q', 0, 0};
    ASSERT_EQ(bind(&chord, CMD_SELECTALL), CME_SUCCESS);
    ASSERT_EQ(bind(&plain, CMD_SELECTALL), CME_SUCCESS);
    const std::vector<BYTE> bound = HotKeys();
    EXPECT_EQ(bound.size(), original.size() + 16);

    // The bindings act: a two-stroke key, and a plain key whose character is not typed.
    for (const bool useChord : {true, false}) {
        EditorWindow editor;
        editor.Send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"abc\r\ndef"));
        if (useChord) {
            editor.Key('K', {VK_CONTROL}, 0x0B);
            editor.Key('U', {VK_CONTROL}, 0x15);
        } else {
            editor.Key('Q', {}, L'q');
        }
        CM_RANGE range{};
        editor.Send(CMM_GETSEL, 0, reinterpret_cast<LPARAM>(&range));
        EXPECT_EQ(range.endLine * 100 + range.endColumn, 103) << useChord;
        EXPECT_EQ(editor.Text(), L"abc\r\ndef") << useChord;
    }

    EXPECT_EQ(unbind(&chord), CME_SUCCESS);
    EXPECT_EQ(unbind(&chord), CME_NOTFOUND);
    EXPECT_EQ(unbind(&plain), CME_SUCCESS);
    EXPECT_EQ(HotKeys(), original);
    EXPECT_EQ(set(bound.data(), static_cast<DWORD>(bound.size())), CME_SUCCESS);
    EXPECT_EQ(HotKeys(), bound);

    // Refused records and keys change nothing.
    std::vector<BYTE> badMagic = bound, badCommand = bound, badCount = bound;
    badMagic[0] = 'X';
    badCommand[8 + 4] = 0x34;
    badCommand[8 + 5] = 0x12;
    badCount[4] = 0xFF;
    const std::vector<BYTE>* records[] = {&badMagic, &badCommand, &badCount};
    for (const auto* record : records) EXPECT_EQ(set(record->data(), static_cast<DWORD>(record->size())), CME_BADARGUMENT);
    EXPECT_EQ(set(bound.data(), static_cast<DWORD>(bound.size() - 1)), CME_BADARGUMENT);
    EXPECT_EQ(set(nullptr, 8), CME_BADARGUMENT);
    const CM_HOTKEY noKey{CM_MOD_CTRL, 0, 0, 0}, badModifier{0x10, 'A', 0, 0}, hugeKey{0, 0x1234, 0, 0};
    for (const CM_HOTKEY* key : {&noKey, &badModifier, &hugeKey}) EXPECT_EQ(bind(key, CMD_COPY), CME_BADARGUMENT);
    EXPECT_EQ(bind(&plain, 0x1234), CME_BADARGUMENT);
    EXPECT_EQ(bind(nullptr, CMD_COPY), CME_BADARGUMENT);
    EXPECT_EQ(HotKeys(), bound);
    EXPECT_EQ(set(original.data(), static_cast<DWORD>(original.size())), CME_SUCCESS);
}

TEST(CodeMaxLibrary, MacrosAndLanguageRecords) {
    const auto getMacro = EditorFunction<CMGETMACRO>(CM_ORDINAL_GETMACRO);
    const auto setMacro = EditorFunction<CMSETMACRO>(CM_ORDINAL_SETMACRO);
    const BYTE macro[] = {1, 2, 3, 4, 5};
    BYTE back[6] = {9, 9, 9, 9, 9, 9};
    ASSERT_EQ(setMacro(3, macro, sizeof macro), CME_SUCCESS);
    EXPECT_EQ(getMacro(3, nullptr, 0), 5u);
    EXPECT_EQ(getMacro(3, back, 4), 5u);
    EXPECT_EQ(back[0], 9);
    EXPECT_EQ(getMacro(3, back, 6), 5u);
    EXPECT_EQ(std::memcmp(back, macro, 5), 0);
    EXPECT_EQ(getMacro(4, back, 6), 0u);
    for (const int index : {-1, CM_MAX_MACROS}) {
        EXPECT_EQ(setMacro(index, macro, sizeof macro), CME_BADARGUMENT);
        EXPECT_EQ(getMacro(index, back, 6), 0u);
    }
    EXPECT_EQ(setMacro(3, macro, 0), CME_SUCCESS);
    EXPECT_EQ(getMacro(3, nullptr, 0), 0u);

    // A registered record comes back with every list; refused records leave nothing registered.
    RegisterTestLanguages();
    const auto getDefinition = EditorFunction<CMGETLANGUAGEDEF>(CM_ORDINAL_GETLANGUAGEDEF);
    std::vector<BYTE> block(getDefinition(L"braces", nullptr, 0));
    ASSERT_GT(block.size(), sizeof(CM_LANGUAGE));
    ASSERT_EQ(getDefinition(L"braces", block.data(), static_cast<DWORD>(block.size())), block.size());
    const auto& record = *reinterpret_cast<const CM_LANGUAGE*>(block.data());
    EXPECT_TRUE(record.caseSensitive);
    EXPECT_STREQ(record.keywords, L"if\nfunction");
    EXPECT_STREQ(record.multiLineCommentEnd, L"*/");
    EXPECT_STREQ(record.words2, L"<%\n%>");
    EXPECT_EQ(record.words1, nullptr);
    EXPECT_EQ(record.escapeChar, L'\\');

    const auto registerLanguage = EditorFunction<CMREGISTERLANGUAGE>(CM_ORDINAL_REGISTERLANGUAGE);
    CM_LANGUAGE otherStyle = kBraces, unpaired = kBraces;
    const CM_LANGUAGE* const refusedRecords[] = {&otherStyle, &unpaired, nullptr};
    otherStyle.style = 1;
    unpaired.multiLineCommentEnd = nullptr;
    for (const CM_LANGUAGE* refused : refusedRecords)
        EXPECT_EQ(registerLanguage(L"Refused", refused), CME_BADARGUMENT);
    EXPECT_EQ(registerLanguage(L"", &kBraces), CME_BADARGUMENT);
    EXPECT_EQ(getDefinition(L"Refused", nullptr, 0), 0u);
    const auto unregister = EditorFunction<CMUNREGISTERLANGUAGE>(CM_ORDINAL_UNREGISTERLANGUAGE);
    EXPECT_EQ(unregister(L"Braces"), CME_SUCCESS);
    EXPECT_EQ(unregister(L"Braces"), CME_NOTFOUND);
}

// The dialog of Ctrl+H, answered from a timer that its message loop runs.
struct DialogAnswer {
    bool accept;
    const wchar_t* find;
    const wchar_t* replacement;
    bool wholeWord, preserveCase;
} g_answer;

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
    const std::pair<std::function<void()>, std::vector<UINT>> rows[] = {
        {[&] { editor.Type(L"x"); }, {CMN_CHANGE}},
        {[&] { editor.Send(CMM_REPLACESEL, 0, reinterpret_cast<LPARAM>(L"yz")); }, {CMN_CHANGE}},
        {[&] { editor.Send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"cat Cat concat CAT")); }, {CMN_CHANGE}},
        {[&] { editor.Send(CMM_SETTABSIZE, 2); }, {}},
        {[&] { editor.Send(CMM_PROPSCHANGED); }, {CMN_PROPSCHANGE}},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        editor.notifications.clear();
        rows[i].first();
        EXPECT_EQ(editor.notifications, rows[i].second) << "row " << i;
    }
    EXPECT_EQ(editor.notifier, editor.control());
    EXPECT_EQ(editor.notifierId, static_cast<UINT_PTR>(test::kEditorId));

    // Find and replace: accepted, it replaces and reports the changed find options; cancelled, nothing.
    const CM_HOTKEY ctrlH{CM_MOD_CTRL, 'H', 0, 0};
    ASSERT_EQ(EditorFunction<CMREGISTERHOTKEY>(CM_ORDINAL_REGISTERHOTKEY)(&ctrlH, CMD_FINDREPLACE), CME_SUCCESS);
    const struct {
        DialogAnswer answer;
        const wchar_t* text;
        std::vector<UINT> notified;
    } dialogRows[] = {
        {{false, L"cat", L"x", true, true}, L"cat Cat concat CAT", {}},
        {{true, L"cat", L"dog", true, true}, L"dog Dog concat DOG", {CMN_CHANGE, CMN_PROPSCHANGE}},
        {{true, L"dog", L"cow", true, true}, L"cow Cow concat COW", {CMN_CHANGE}},
        {{true, L"none", L"x", false, false}, L"cow Cow concat COW", {CMN_PROPSCHANGE}},
    };
    for (const auto& row : dialogRows) {
        editor.notifications.clear();
        g_answer = row.answer;
        ::SetTimer(nullptr, 0, 20, AnswerDialog);
        editor.Key('H', {VK_CONTROL}, 0x08);
        EXPECT_EQ(editor.Text(), row.text) << row.answer.find;
        EXPECT_EQ(editor.notifications, row.notified) << row.answer.find;
    }
    EXPECT_EQ(editor.Send(CMM_GETWHOLEWORD), 0);
}

} // namespace
