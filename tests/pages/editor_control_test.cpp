// The script editor control as the pages use it: setup, stored settings, the script languages, keys and text.
#include "pages/editor_control.h"
#include "standins/cmax/editor_window.h"
#include "frame/errors.h"
#include "frame/registry.h"
#include <gtest/gtest.h>
#include <cstring>
#include <optional>
#include <sstream>
#include <tuple>

namespace {

using test::EditorFunction;
using test::EditorWindow;

std::vector<BYTE> HotKeys() {
    const auto get = EditorFunction<CMGETHOTKEYS>(CM_ORDINAL_GETHOTKEYS);
    std::vector<BYTE> bytes(get(nullptr, 0));
    get(bytes.data(), static_cast<DWORD>(bytes.size()));
    return bytes;
}

LOGFONTW FontOf(HWND control) {
    LOGFONTW font{};
    ::GetObjectW(reinterpret_cast<HFONT>(::SendMessageW(control, WM_GETFONT, 0, 0)), sizeof font, &font);
    return font;
}

template <class Record>
Record Get(const EditorWindow& editor, UINT message) {
    Record record{};
    editor.Send(message, 0, reinterpret_cast<LPARAM>(&record));
    return record;
}

template <class Record>
bool SameBytes(const Record& a, const Record& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// The items of a list of a language record: a null or empty list has none.
std::vector<std::wstring> Items(const wchar_t* list) {
    std::vector<std::wstring> items;
    std::wistringstream in(list ? list : L"");
    for (std::wstring item; std::getline(in, item, L'\n');) items.push_back(item);
    return items;
}

// The window, wParam and lParam of a message of this kind posted to the thread, taken from the queue.
using Posting = std::tuple<HWND, WPARAM, LPARAM>;
std::optional<Posting> Posted(UINT message) {
    MSG m;
    if (!::PeekMessageW(&m, nullptr, message, message, PM_REMOVE)) return std::nullopt;
    return Posting{m.hwnd, m.wParam, m.lParam};
}

// Each test starts and ends without the editor key; the process's key bindings are put back.
class ScriptEditor : public ::testing::Test {
protected:
    void SetUp() override {
        (void)tol::DeleteKeyTree(HKEY_CURRENT_USER, tol::kEditorSettingsKey);
        tol::RegisterScriptLanguages();   // loads the library
        bindings_ = HotKeys();
    }
    void TearDown() override {
        (void)tol::DeleteKeyTree(HKEY_CURRENT_USER, tol::kEditorSettingsKey);
        EditorFunction<CMSETHOTKEYS>(CM_ORDINAL_SETHOTKEYS)(bindings_.data(), static_cast<DWORD>(bindings_.size()));
    }
    std::vector<BYTE> bindings_;
};

TEST_F(ScriptEditor, SetupWithoutSettingsKey) {
    EditorWindow editor;
    const tol::unique_gdi_object font = tol::SetUpEditorControl(editor.control());
    EXPECT_EQ(reinterpret_cast<HGDIOBJ>(editor.Send(WM_GETFONT)), font.get());
    const HDC screen = ::GetDC(nullptr);
    const int pixelsPerInch = ::GetDeviceCaps(screen, LOGPIXELSY);
    ::ReleaseDC(nullptr, screen);
    EXPECT_STREQ(FontOf(editor.control()).lfFaceName, L"Courier New");
    EXPECT_EQ(FontOf(editor.control()).lfHeight, -(90 * pixelsPerInch / 720));

    // The setup's own values, and the control's initial ones where the stored defaults would differ.
    const std::tuple<UINT, WPARAM, LRESULT> rows[] = {
        {CMM_ISSPLITTERENABLED, 1, 0}, {CMM_ISSPLITTERENABLED, 0, 0}, {CMM_GETLEFTMARGIN, 0, 0}, {CMM_GETSELBOUNDS, 0, 1},
        {CMM_GETNORMALIZECASE, 0, 1},  {CMM_GETTABSIZE, 0, 8},        {CMM_GETAUTOINDENTMODE, 0, 1}, {CMM_GETDRAGDROP, 0, 0},
    };
    for (const auto& [message, w, expected] : rows) EXPECT_EQ(editor.Send(message, w), expected) << std::hex << message << w;
    tol::unique_hkey key;
    EXPECT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, tol::kEditorSettingsKey, 0, KEY_READ, key.put()), ERROR_FILE_NOT_FOUND);

    // Ctrl+A is bound to select all.
    editor.Send(WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"one\r\ntwo"));
    editor.Key('A', {VK_CONTROL}, 0x01);
    editor.Send(CMM_SETTEXTSCOPE, CM_SCOPE_SELECTION);
    EXPECT_EQ(editor.Send(CMM_GETTEXTLENGTH), 8);
}

TEST_F(ScriptEditor, SettingsSavedOnPropertiesChangeAndReadBack) {
    EditorWindow first;
    const tol::unique_gdi_object firstFont = tol::SetUpEditorControl(first.control());
    first.onNotify = [](EditorWindow& window, UINT code) {
        if (code != CMN_PROPSCHANGE) return;
        EXPECT_NO_THROW(tol::SaveEditorSettings(window.control()));
    };
    first.Send(CMM_SETTABSIZE, 3);
    first.Send(CMM_SETTABEXPAND, 1);
    first.Send(CMM_SHOWSCROLLBAR, 1, 0);
    CM_COLORS colors = Get<CM_COLORS>(first, CMM_GETCOLORS);
    colors.window = RGB(1, 2, 3);
    colors.text[CMT_KEYWORD] = RGB(4, 5, 6);
    first.Send(CMM_SETCOLORS, 0, reinterpret_cast<LPARAM>(&colors));
    const CM_LINENUMBERING numbering{TRUE, 5, 8};
    first.Send(CMM_SETLINENUMBERING, 0, reinterpret_cast<LPARAM>(&numbering));
    const tol::unique_gdi_object arial(::CreateFontW(-17, 0, 0, 0, FW_BOLD, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"Arial"));
    first.Send(WM_SETFONT, reinterpret_cast<WPARAM>(arial.get()), FALSE);
    const BYTE macro[] = {7, 8, 9};
    EditorFunction<CMSETMACRO>(CM_ORDINAL_SETMACRO)(2, macro, sizeof macro);
    const CM_HOTKEY key{CM_MOD_CTRL | CM_MOD_SHIFT, 'L', 0, 0};
    EditorFunction<CMREGISTERHOTKEY>(CM_ORDINAL_REGISTERHOTKEY)(&key, CMD_COPY);
    const std::vector<BYTE> bindings = HotKeys();

    // Each setting under its name and type; empty macros are left out.
    first.Send(CMM_PROPSCHANGED);
    const auto stored = [](const wchar_t* name, DWORD types) {
        return ::RegGetValueW(HKEY_CURRENT_USER, tol::kEditorSettingsKey, name, types, nullptr, nullptr, nullptr);
    };
    for (const wchar_t* name : {L"ColorSyntax", L"HScrollBar", L"VSplitter", L"AutoIndentMode", L"SelBounds", L"TabSize"})
        EXPECT_EQ(stored(name, RRF_RT_REG_DWORD), ERROR_SUCCESS) << name;
    for (const wchar_t* name : {L"Colors", L"FontStyles", L"LineNumbering", L"Font", L"Macro2", L"Hotkeys"})
        EXPECT_EQ(stored(name, RRF_RT_REG_BINARY), ERROR_SUCCESS) << name;
    EXPECT_EQ(stored(L"Macro0", RRF_RT_ANY), ERROR_FILE_NOT_FOUND);

    // The library forgets the macro and the binding; the next setup brings them back with everything else.
    EditorFunction<CMSETMACRO>(CM_ORDINAL_SETMACRO)(2, nullptr, 0);
    EditorFunction<CMUNREGISTERHOTKEY>(CM_ORDINAL_UNREGISTERHOTKEY)(&key);
    EditorWindow second;
    const tol::unique_gdi_object secondFont = tol::SetUpEditorControl(second.control());
    EXPECT_EQ(reinterpret_cast<HGDIOBJ>(second.Send(WM_GETFONT)), secondFont.get());
    EXPECT_STREQ(FontOf(second.control()).lfFaceName, L"Arial");
    const std::tuple<UINT, WPARAM, LRESULT> answers[] = {
        {CMM_GETTABSIZE, 0, 3}, {CMM_GETTABEXPAND, 0, 1}, {CMM_GETAUTOINDENTMODE, 0, 1}, {CMM_HASSCROLLBAR, 1, 0}};
    for (const auto& [message, w, expected] : answers) EXPECT_EQ(second.Send(message, w), expected) << std::hex << message;
    EXPECT_TRUE(SameBytes(Get<CM_COLORS>(second, CMM_GETCOLORS), colors));
    EXPECT_TRUE(SameBytes(Get<CM_LINENUMBERING>(second, CMM_GETLINENUMBERING), numbering));
    BYTE macroBack[3] = {};
    EXPECT_EQ(EditorFunction<CMGETMACRO>(CM_ORDINAL_GETMACRO)(2, macroBack, sizeof macroBack), 3u);
    EXPECT_EQ(std::memcmp(macro, macroBack, sizeof macro), 0);
    EXPECT_EQ(HotKeys(), bindings);
}

TEST_F(ScriptEditor, StoredValuesOfWrongSizeOrType) {
    const auto store = [](const wchar_t* name, DWORD type, const void* data, DWORD size) {
        (void)tol::DeleteKeyTree(HKEY_CURRENT_USER, tol::kEditorSettingsKey);
        const tol::unique_hkey key = tol::CreateKey(HKEY_CURRENT_USER, tol::kEditorSettingsKey);
        ASSERT_EQ(::RegSetValueExW(key.get(), name, 0, type, static_cast<const BYTE*>(data), size), ERROR_SUCCESS);
    };
    // A DWORD setting of another type fails the setup; the font dies with the failure, so the control must not keep it.
    store(L"TabSize", REG_SZ, L"4", 4);
    EditorWindow failing;
    HRESULT failure = S_OK;
    try {
        tol::SetUpEditorControl(failing.control());
    } catch (const comet::com_error& e) {
        failure = e.hr();
    }
    EXPECT_EQ(failure, static_cast<HRESULT>(0x8007070C));
    EXPECT_EQ(failing.Send(WM_GETFONT), 0);

    // Records of another size are left out, and the absent settings take their stored defaults.
    const BYTE bytes[100] = {0x11};
    const struct { const wchar_t* name; DWORD size; UINT message; LRESULT answer; } rows[] = {
        {L"Colors", 100, CMM_GETAUTOINDENTMODE, 2}, {L"Font", 91, CMM_GETTABSIZE, 4}};
    const CM_COLORS initialColors = Get<CM_COLORS>(EditorWindow(), CMM_GETCOLORS);
    for (const auto& row : rows) {
        store(row.name, REG_BINARY, bytes, row.size);
        EditorWindow editor;
        const tol::unique_gdi_object font = tol::SetUpEditorControl(editor.control());
        EXPECT_EQ(editor.Send(row.message), row.answer) << row.name;
        EXPECT_STREQ(FontOf(editor.control()).lfFaceName, L"Courier New") << row.name;
        EXPECT_TRUE(SameBytes(Get<CM_COLORS>(editor, CMM_GETCOLORS), initialColors)) << row.name;
    }
}

TEST_F(ScriptEditor, ScriptLanguagesRegistered) {
    // The numbers of keywords and operators, then the other lists in the record's order: single-line comments,
    // comment start and end, scope openings and closings, string delimiters, words 1 to 3.
    const struct {
        const wchar_t* name; BOOL caseSensitive; size_t keywords, operators; const wchar_t* lists[9]; WCHAR escape, terminator;
    } rows[] = {
        {L"JScript", TRUE, 222, 42, {L"//", L"/*", L"*/", L"{", L"}", L"\"\n'", nullptr, L"<%\n%>", nullptr}, L'\\', L';'},
        {L"VBScript", FALSE, 74, 22, {L"'\nRem", nullptr, nullptr, L"Begin\nWhile\nFor\nDo\nWith\nFunction",
          L"End\nWend\nNext\nLoop\nEnd With\nEnd Function", L"\"", nullptr, nullptr, nullptr}, 0, 0},
    };
    const auto getDefinition = EditorFunction<CMGETLANGUAGEDEF>(CM_ORDINAL_GETLANGUAGEDEF);
    for (const auto& row : rows) {
        std::vector<BYTE> block(getDefinition(row.name, nullptr, 0));
        ASSERT_EQ(getDefinition(row.name, block.data(), static_cast<DWORD>(block.size())), block.size()) << row.name;
        const auto& r = *reinterpret_cast<const CM_LANGUAGE*>(block.data());
        EXPECT_EQ(std::make_tuple(r.caseSensitive, Items(r.keywords).size(), Items(r.operators).size(), r.escapeChar,
                                  r.terminatorChar),
                  std::make_tuple(row.caseSensitive, row.keywords, row.operators, row.escape, row.terminator)) << row.name;
        const wchar_t* const lists[] = {r.singleLineComments, r.multiLineCommentStart, r.multiLineCommentEnd, r.scopeKeywordsOpen,
                                        r.scopeKeywordsClose, r.stringDelimiters, r.words1, r.words2, r.words3};
        for (size_t i = 0; i < std::size(lists); ++i) EXPECT_EQ(Items(lists[i]), Items(row.lists[i])) << row.name << " " << i;
    }
}

// Keys and text need the page's structure: a top-level window, the page inside it, the control inside the page.
TEST_F(ScriptEditor, KeysAndText) {
    EditorWindow top;
    const HWND page = ::CreateWindowExW(0, L"Static", L"", WS_CHILD, 0, 0, 400, 300, top.parent(), nullptr, nullptr, nullptr);
    const HWND control = ::CreateWindowExW(0, CODEMAX_CLASS, L"", WS_CHILD, 0, 0, 300, 200, page, nullptr, nullptr, nullptr);
    // A consumed key posts one message; the others post nothing.
    const struct { UINT key; bool ctrl; UINT message; HWND target; WPARAM w; } rows[] = {
        {VK_NEXT, true, WM_NEXTDLGCTL, page, 0}, {VK_PRIOR, true, WM_NEXTDLGCTL, page, 1},
        {VK_ESCAPE, false, WM_COMMAND, top.parent(), IDCANCEL}, {VK_NEXT, false, 0, nullptr, 0}, {'M', true, 0, nullptr, 0},
    };
    for (const auto& row : rows) {
        BYTE keys[256] = {};
        keys[VK_CONTROL] = row.ctrl ? 0x80 : 0;
        ::SetKeyboardState(keys);
        EXPECT_EQ(tol::HandleEditorKey(control, row.key), row.message != 0) << row.key;
        for (const UINT message : {WM_NEXTDLGCTL, WM_COMMAND}) {
            const auto expected = message == row.message ? std::make_optional(Posting{row.target, row.w, 0}) : std::nullopt;
            EXPECT_EQ(Posted(message), expected) << row.key << " " << message;
        }
    }

    // The whole text, whatever the text scope; inserted text replaces the selection and brings the focus back.
    EXPECT_EQ(tol::GetEditorText(control), L"");
    ::SetWindowTextW(control, L"first line\nsecond");
    EXPECT_EQ(tol::GetEditorText(control), L"first line\r\nsecond");
    const CM_RANGE word{0, 6, 0, 10};
    ::SendMessageW(control, CMM_SETSEL, 0, reinterpret_cast<LPARAM>(&word));
    ::SendMessageW(control, CMM_SETTEXTSCOPE, CM_SCOPE_SELECTION, 0);
    tol::InsertEditorText(control, L"row");
    EXPECT_EQ(tol::GetEditorText(control), L"first row\r\nsecond");
    EXPECT_EQ(Posted(WM_NEXTDLGCTL), Posting(page, reinterpret_cast<WPARAM>(control), TRUE));
}

} // namespace
