// The script editor control as the pages use it: setup, stored settings, the script languages, keys and text.
#include "pages/editor_control.h"
#include "standins/cmax/editor_window.h"
#include "frame/errors.h"
#include "frame/registry.h"
#include <gtest/gtest.h>
#include <cstring>
#include <functional>
#include <optional>

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

std::vector<std::wstring> Items(const wchar_t* list) {
    std::vector<std::wstring> items;
    for (const wchar_t* at = list; at && *at;) {
        const wchar_t* end = std::wcschr(at, L'\n');
        items.emplace_back(at, end ? end : at + std::wcslen(at));
        at = end ? end + 1 : at + std::wcslen(at);
    }
    return items;
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
    static void Store(const wchar_t* name, DWORD type, const void* data, DWORD size) {
        const tol::unique_hkey key = tol::CreateKey(HKEY_CURRENT_USER, tol::kEditorSettingsKey);
        ASSERT_EQ(::RegSetValueExW(key.get(), name, 0, type, static_cast<const BYTE*>(data), size), ERROR_SUCCESS);
    }
    static std::optional<std::vector<BYTE>> Stored(const wchar_t* name, DWORD expectedType) {
        DWORD type = 0, size = 0;
        if (::RegGetValueW(HKEY_CURRENT_USER, tol::kEditorSettingsKey, name, RRF_RT_ANY, &type, nullptr, &size) != ERROR_SUCCESS)
            return std::nullopt;
        std::vector<BYTE> data(size);
        ::RegGetValueW(HKEY_CURRENT_USER, tol::kEditorSettingsKey, name, RRF_RT_ANY, &type, data.data(), &size);
        EXPECT_EQ(type, expectedType) << name;
        return data;
    }

private:
    std::vector<BYTE> bindings_;
};

TEST_F(ScriptEditor, SetupWithoutSettingsKey) {
    EditorWindow editor;
    const tol::unique_gdi_object font = tol::SetUpEditorControl(editor.control());
    EXPECT_EQ(reinterpret_cast<HGDIOBJ>(editor.Send(WM_GETFONT)), font.get());
    const HDC screen = ::GetDC(nullptr);
    const int pixelsPerInch = ::GetDeviceCaps(screen, LOGPIXELSY);
    ::ReleaseDC(nullptr, screen);
    const LOGFONTW description = FontOf(editor.control());
    EXPECT_STREQ(description.lfFaceName, L"Courier New");
    EXPECT_EQ(description.lfHeight, -(90 * pixelsPerInch / 720));

    // The setup's own values, and the control's initial ones where the stored defaults would differ.
    const struct {
        UINT message;
        WPARAM w;
        LRESULT expected;
    } rows[] = {
        {CMM_GETCOLORSYNTAX, 0, 1}, {CMM_ISSPLITTERENABLED, 1, 0}, {CMM_ISSPLITTERENABLED, 0, 0}, {CMM_GETLEFTMARGIN, 0, 0},
        {CMM_GETSELBOUNDS, 0, 1},   {CMM_GETNORMALIZECASE, 0, 1},  {CMM_GETTABSIZE, 0, 8},        {CMM_GETAUTOINDENTMODE, 0, 1},
        {CMM_GETLINETOOLTIPS, 0, 0}, {CMM_GETDRAGDROP, 0, 0},
    };
    for (const auto& row : rows) EXPECT_EQ(editor.Send(row.message, row.w), row.expected) << std::hex << row.message << " " << row.w;
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
    tol::unique_gdi_object firstFont = tol::SetUpEditorControl(first.control());
    first.onNotify = [](EditorWindow& window, UINT code) {
        if (code != CMN_PROPSCHANGE) return;
        try {
            tol::SaveEditorSettings(window.control());
        } catch (const std::exception& e) {
            ADD_FAILURE() << "save failed: " << e.what();
        }
    };
    first.Send(CMM_SETTABSIZE, 3);
    first.Send(CMM_SETTABEXPAND, 1);
    first.Send(CMM_SHOWSCROLLBAR, 1, 0);
    CM_COLORS colors;
    first.Send(CMM_GETCOLORS, 0, reinterpret_cast<LPARAM>(&colors));
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

    first.Send(CMM_PROPSCHANGED);
    const struct {
        const wchar_t* name;
        DWORD type, size;
    } values[] = {
        {L"ColorSyntax", REG_DWORD, 4}, {L"HScrollBar", REG_DWORD, 4},     {L"VSplitter", REG_DWORD, 4},
        {L"AutoIndentMode", REG_DWORD, 4}, {L"SelBounds", REG_DWORD, 4},   {L"TabSize", REG_DWORD, 4},
        {L"Colors", REG_BINARY, 124},   {L"FontStyles", REG_BINARY, 12},   {L"LineNumbering", REG_BINARY, 12},
        {L"Font", REG_BINARY, 92},      {L"Macro2", REG_BINARY, 3},        {L"Hotkeys", REG_BINARY, static_cast<DWORD>(bindings.size())},
    };
    for (const auto& value : values) {
        const auto data = Stored(value.name, value.type);
        ASSERT_TRUE(data) << value.name;
        EXPECT_EQ(data->size(), value.size) << value.name;
    }
    EXPECT_FALSE(Stored(L"Macro0", REG_BINARY));
    EXPECT_EQ(*Stored(L"TabSize", REG_DWORD), (std::vector<BYTE>{3, 0, 0, 0}));

    // The library forgets the macro and the binding; the next setup brings them back with everything else.
    EditorFunction<CMSETMACRO>(CM_ORDINAL_SETMACRO)(2, nullptr, 0);
    EditorFunction<CMUNREGISTERHOTKEY>(CM_ORDINAL_UNREGISTERHOTKEY)(&key);
    EditorWindow second;
    const tol::unique_gdi_object secondFont = tol::SetUpEditorControl(second.control());
    EXPECT_EQ(reinterpret_cast<HGDIOBJ>(second.Send(WM_GETFONT)), secondFont.get());
    EXPECT_STREQ(FontOf(second.control()).lfFaceName, L"Arial");
    EXPECT_EQ(FontOf(second.control()).lfWeight, FW_BOLD);
    const std::pair<UINT, LRESULT> answers[] = {{CMM_GETTABSIZE, 3}, {CMM_GETTABEXPAND, 1}, {CMM_GETAUTOINDENTMODE, 1}};
    for (const auto& [message, expected] : answers) EXPECT_EQ(second.Send(message), expected) << std::hex << message;
    EXPECT_EQ(second.Send(CMM_HASSCROLLBAR, 1), 0);
    CM_COLORS colorsBack{};
    CM_LINENUMBERING numberingBack{};
    second.Send(CMM_GETCOLORS, 0, reinterpret_cast<LPARAM>(&colorsBack));
    second.Send(CMM_GETLINENUMBERING, 0, reinterpret_cast<LPARAM>(&numberingBack));
    EXPECT_EQ(std::memcmp(&colors, &colorsBack, sizeof colors), 0);
    EXPECT_EQ(std::memcmp(&numbering, &numberingBack, sizeof numbering), 0);
    BYTE macroBack[3] = {};
    EXPECT_EQ(EditorFunction<CMGETMACRO>(CM_ORDINAL_GETMACRO)(2, macroBack, sizeof macroBack), 3u);
    EXPECT_EQ(std::memcmp(macro, macroBack, sizeof macro), 0);
    EXPECT_EQ(HotKeys(), bindings);
}

TEST_F(ScriptEditor, StoredValuesOfWrongSizeOrType) {
    const std::wstring text = L"4";
    const BYTE bytes[100] = {0x11};
    const DWORD five = 5;
    const struct {
        const wchar_t* name;
        DWORD type;
        const void* data;
        DWORD size;
        HRESULT failure;   // S_OK: the setup succeeds
        UINT message;      // then answers this
        LRESULT expected;
    } rows[] = {
        {L"TabSize", REG_SZ, text.c_str(), 4, static_cast<HRESULT>(0x8007070C), 0, 0},
        {L"ColorSyntax", REG_BINARY, &five, 4, static_cast<HRESULT>(0x8007070C), 0, 0},
        {L"TabSize", REG_DWORD, &five, 4, S_OK, CMM_GETTABSIZE, 5},
        {L"TabSize", REG_DWORD, &five, 4, S_OK, CMM_GETAUTOINDENTMODE, 2},   // absent: the stored default
        {L"Colors", REG_BINARY, bytes, 100, S_OK, CMM_GETAUTOINDENTMODE, 2},
        {L"Font", REG_BINARY, bytes, 91, S_OK, CMM_GETTABSIZE, 4},
    };
    EditorWindow plain;
    CM_COLORS initialColors;
    plain.Send(CMM_GETCOLORS, 0, reinterpret_cast<LPARAM>(&initialColors));
    for (const auto& row : rows) {
        (void)tol::DeleteKeyTree(HKEY_CURRENT_USER, tol::kEditorSettingsKey);
        Store(row.name, row.type, row.data, row.size);
        EditorWindow editor;
        HRESULT failure = S_OK;
        tol::unique_gdi_object font;
        try {
            font = tol::SetUpEditorControl(editor.control());
        } catch (const comet::com_error& e) {
            failure = e.hr();
        }
        EXPECT_EQ(failure, row.failure) << row.name;
        if (FAILED(failure)) {
            EXPECT_EQ(editor.Send(WM_GETFONT), 0) << row.name;   // no deleted font left in the control
            continue;
        }
        EXPECT_EQ(editor.Send(row.message), row.expected) << row.name;
        EXPECT_STREQ(FontOf(editor.control()).lfFaceName, L"Courier New") << row.name;
        CM_COLORS colors;
        editor.Send(CMM_GETCOLORS, 0, reinterpret_cast<LPARAM>(&colors));
        EXPECT_EQ(std::memcmp(&colors, &initialColors, sizeof colors), 0) << row.name;
    }
}

TEST_F(ScriptEditor, ScriptLanguagesRegistered) {
    const struct {
        const wchar_t* name;
        BOOL caseSensitive;
        size_t keywords, operators;
        const wchar_t *firstKeyword, *lastKeyword, *lineComments, *commentStart, *scopeOpen, *scopeClose, *strings;
        WCHAR escape, terminator;
        const wchar_t* words2;
    } rows[] = {
        {L"JScript", TRUE, 222, 42, L"@cc_on", L"writeln", L"//", L"/*", L"{", L"}", L"\"\n'", L'\\', L';', L"<%\n%>"},
        {L"VBScript", FALSE, 74, 22, L"#Const", L"Write", L"'\nRem", nullptr, L"Begin\nWhile\nFor\nDo\nWith\nFunction",
         L"End\nWend\nNext\nLoop\nEnd With\nEnd Function", L"\"", 0, 0, nullptr},
    };
    const auto getDefinition = EditorFunction<CMGETLANGUAGEDEF>(CM_ORDINAL_GETLANGUAGEDEF);
    for (const auto& row : rows) {
        std::vector<BYTE> block(getDefinition(row.name, nullptr, 0));
        ASSERT_EQ(getDefinition(row.name, block.data(), static_cast<DWORD>(block.size())), block.size()) << row.name;
        const auto& record = *reinterpret_cast<const CM_LANGUAGE*>(block.data());
        const std::vector<std::wstring> keywords = Items(record.keywords);
        EXPECT_EQ(record.caseSensitive, row.caseSensitive) << row.name;
        ASSERT_EQ(keywords.size(), row.keywords) << row.name;
        EXPECT_EQ(keywords.front(), row.firstKeyword);
        EXPECT_EQ(keywords.back(), row.lastKeyword);
        EXPECT_EQ(Items(record.operators).size(), row.operators) << row.name;
        const std::pair<const wchar_t*, const wchar_t*> lists[] = {
            {record.singleLineComments, row.lineComments}, {record.multiLineCommentStart, row.commentStart},
            {record.scopeKeywordsOpen, row.scopeOpen},     {record.scopeKeywordsClose, row.scopeClose},
            {record.stringDelimiters, row.strings},        {record.words2, row.words2},
            {record.words1, nullptr},                      {record.words3, nullptr},
        };
        for (const auto& [got, expected] : lists) EXPECT_EQ(Items(got), Items(expected)) << row.name;
        EXPECT_EQ(record.escapeChar, row.escape) << row.name;
        EXPECT_EQ(record.terminatorChar, row.terminator) << row.name;
    }
    // The keyword list keeps its spellings exactly.
    std::vector<BYTE> block(getDefinition(L"JScript", nullptr, 0));
    getDefinition(L"JScript", block.data(), static_cast<DWORD>(block.size()));
    const std::vector<std::wstring> keywords = Items(reinterpret_cast<const CM_LANGUAGE*>(block.data())->keywords);
    EXPECT_EQ(keywords[27], L"Compileconcat");
    EXPECT_EQ(keywords[199], L"undefinited");

    // In a control, VBScript keywords take their listed case as they are typed.
    EditorWindow editor;
    const tol::unique_gdi_object font = tol::SetUpEditorControl(editor.control());
    editor.Send(CMM_SETLANGUAGE, 0, reinterpret_cast<LPARAM>(L"VBScript"));
    editor.Type(L"dim x ' dim\r");
    EXPECT_EQ(editor.Text().substr(0, 11), L"Dim x ' dim");
}

// Keys and text need the page's structure: a top-level window, the page inside it, the control inside the page.
TEST_F(ScriptEditor, KeysAndText) {
    EditorWindow top;
    const HWND page = ::CreateWindowExW(0, L"Static", L"", WS_CHILD | WS_VISIBLE, 0, 0, 400, 300, top.parent(), nullptr,
                                        nullptr, nullptr);
    const HWND control = ::CreateWindowExW(0, CODEMAX_CLASS, L"", WS_CHILD | WS_VISIBLE, 0, 0, 300, 200, page, nullptr,
                                           nullptr, nullptr);
    const auto posted = [](HWND window, UINT message) -> std::optional<MSG> {
        MSG m;
        if (::PeekMessageW(&m, window, message, message, PM_REMOVE)) return m;
        return std::nullopt;
    };
    const struct {
        UINT key;
        bool ctrl, consumed;
        HWND target;
        UINT message;
        WPARAM w;
    } rows[] = {
        {VK_NEXT, true, true, page, WM_NEXTDLGCTL, 0},    {VK_PRIOR, true, true, page, WM_NEXTDLGCTL, 1},
        {VK_ESCAPE, false, true, top.parent(), WM_COMMAND, IDCANCEL}, {VK_NEXT, false, false, nullptr, 0, 0},
        {'M', true, false, nullptr, 0, 0},
    };
    for (const auto& row : rows) {
        BYTE keys[256] = {};
        keys[VK_CONTROL] = row.ctrl ? 0x80 : 0;
        ::SetKeyboardState(keys);
        EXPECT_EQ(tol::HandleEditorKey(control, row.key), row.consumed) << row.key;
        std::optional<MSG> message;
        for (HWND window : {page, top.parent(), control})
            if (auto m = posted(window, row.target ? row.message : WM_NEXTDLGCTL)) message = m;
        ASSERT_EQ(message.has_value(), row.target != nullptr) << row.key;
        if (!message) continue;
        EXPECT_EQ(message->hwnd, row.target) << row.key;
        EXPECT_EQ(message->wParam, row.w) << row.key;
        EXPECT_EQ(message->lParam, 0) << row.key;
    }

    const tol::unique_gdi_object font = tol::SetUpEditorControl(control);
    EXPECT_EQ(tol::GetEditorText(control), L"");
    ::SetWindowTextW(control, L"first line\nsecond");
    EXPECT_EQ(tol::GetEditorText(control), L"first line\r\nsecond");
    const CM_RANGE word{0, 6, 0, 10};
    ::SendMessageW(control, CMM_SETSEL, 0, reinterpret_cast<LPARAM>(&word));
    ::SendMessageW(control, CMM_SETTEXTSCOPE, CM_SCOPE_SELECTION, 0);   // GetEditorText reads the whole text all the same
    tol::InsertEditorText(control, L"row");
    EXPECT_EQ(tol::GetEditorText(control), L"first row\r\nsecond");
    const auto focus = posted(page, WM_NEXTDLGCTL);
    ASSERT_TRUE(focus);
    EXPECT_EQ(focus->wParam, reinterpret_cast<WPARAM>(control));
    EXPECT_EQ(focus->lParam, TRUE);
}

} // namespace
