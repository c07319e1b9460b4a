// The page engine driven through real dialogs and their messages, on the library's own pages.
#include "page_host.h"
#include "frame/bstr.h"
#include "pages/editor_control.h"
#include <gtest/gtest.h>
#include <commctrl.h>

namespace test {
namespace {

using Texts = std::vector<std::wstring>;

// Clicks the button and answers the message box that the click shows.
Texts ClickAndAnswer(PageHost& host, int id, int answer) {
    MessageBoxAnswerer answerer(answer);
    host.Click(id);
    for (int i = 0; i < 20 && answerer.texts.empty(); ++i) PageHost::Pump(), ::Sleep(20);
    return answerer.texts;
}

// Focuses the control and gives the flags that the page reported for it.
long Focus(PageHost& host, HWND control) {
    ::SetFocus(control);
    PageHost::Pump();
    return host.site.focused.empty() ? -1 : host.site.focused.back();
}

TEST(PageSaving, NewStepRemovesEmptiedDefaultsAndTrimsQuotes) {
    PageHost host(L"WriteINIUI");
    host.Load(nullptr);
    host.SetText(1020, L"\"C:\\app\\app.ini\"");
    host.SetText(1064, L"Release");
    PageStep step;
    step.SetText(L"ValueName", L"stale");
    ASSERT_TRUE(host.Save(step));
    EXPECT_EQ(step.Text(L"Filename"), L"C:\\app\\app.ini");
    EXPECT_EQ(step.Text(L"Section"), L"Release");
    EXPECT_FALSE(step.Has(L"ValueName"));   // cleared text with an empty default: removed, not stored empty
    EXPECT_EQ(step.removed, (Texts{L"ValueName", L"Delete", L"ValueData"}));
}

TEST(PageSaving, RequiredFieldsAndTheSeveralStepsFlag) {
    PageHost host(L"WriteINIUI");
    PageStep stored;
    stored.SetText(L"Filename", L"a.ini");
    stored.SetText(L"ValueName", L"Keep");
    host.Load(&stored);
    {
        MessageBoxAnswerer answerer(IDOK);
        EXPECT_FALSE(host.Validate());   // Section is required and empty
        EXPECT_EQ(answerer.texts, Texts{L"Velmora: Field is required."});
    }
    EXPECT_EQ(::GetFocus(), host.Item(1064));

    host.Load(&stored, true);   // editing several steps: only what the user touched is written
    host.SetText(1008, L"Changed");
    PageStep target;
    target.SetText(L"Section", L"untouched");
    EXPECT_TRUE(host.Save(target));
    EXPECT_EQ(target.Text(L"ValueName"), L"Changed");
    EXPECT_EQ(target.Text(L"Section"), L"untouched");
    EXPECT_FALSE(target.Has(L"Filename"));
    EXPECT_GE(host.site.changes, 1);
}

TEST(PageSaving, ArrayRowsKeepGapsAndDropTrailingEmptyRows) {
    PageHost host(L"COMPlusPropUI");
    host.Load(nullptr);
    host.SetText(1016, L"Description");
    host.SetText(1018, L"3rd");
    PageStep step;
    ASSERT_TRUE(host.Save(step));
    EXPECT_EQ(step.Array(L"Props"), (Texts{L"Description", L"", L"3rd"}));
    EXPECT_TRUE(step.Array(L"Values").empty());

    host.SetText(1019, L"typed");
    host.Load(&step);   // a stored array shows element by element; the other rows are emptied
    EXPECT_EQ((Texts{host.Text(1016), host.Text(1017), host.Text(1018), host.Text(1019)}),
              (Texts{L"Description", L"", L"3rd", L""}));
}

TEST(StringOverrides, CheckBoxOverrideIsMarkedAndRemovedOnlyWhenConfirmed) {
    PageHost host(L"WriteINIUI");
    host.expander.variables[L"DEL"] = L"1";
    PageStep stored;
    stored.SetText(L"Filename", L"a.ini");
    stored.SetText(L"Section", L"S");
    stored.SetText(L"Delete", L"%DEL%");
    host.Load(&stored);
    EXPECT_EQ(host.Text(1031), L"&Delete the value*");
    EXPECT_TRUE(host.Checked(1031));   // the expanded override converted to the box's type

    const Texts asked = ClickAndAnswer(host, 1031, IDNO);
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_NE(asked[0].find(L"OK to remove the override value?"), std::wstring::npos);
    EXPECT_EQ(host.Text(1031), L"&Delete the value*");
    EXPECT_TRUE(host.Checked(1031));
    PageStep kept;
    ASSERT_TRUE(host.Save(kept));
    EXPECT_EQ(kept.Text(L"Delete"), L"%DEL%");

    ClickAndAnswer(host, 1031, IDYES);
    EXPECT_EQ(host.Text(1031), L"&Delete the value");
    EXPECT_FALSE(host.Checked(1031));
    ASSERT_TRUE(host.Save(stored));
    EXPECT_FALSE(stored.Has(L"Delete"));   // the box's own state now: unchecked, the zero default
}

TEST(StringOverrides, RadioGroupOverrideThroughTheOverrideEdit) {
    PageHost host(L"WaitUI");
    PageStep stored;
    stored.SetText(L"WaitFor", L"%MODE%");   // cannot be expanded: the control shows the default
    stored.SetText(L"Criteria", L"00:00:05");
    host.Load(&stored);
    EXPECT_EQ(host.Text(1053), L"Wait Until*");
    EXPECT_TRUE(host.Checked(1028));

    ::SendMessageW(host.Item(1029), WM_KEYDOWN, VK_F2, 0);   // F2 opens the override edit over the button
    const HWND edit = host.page().overrideEdit();
    ASSERT_TRUE(edit && ::IsWindowVisible(edit));
    EXPECT_FALSE(host.Enabled(1029));
    wchar_t text[64] = {};
    ::GetWindowTextW(edit, text, 64);
    EXPECT_STREQ(text, L"%MODE%");
    ::SetWindowTextW(edit, L"2");
    ASSERT_TRUE(host.Validate());   // validation closes the edit and keeps its text as the override
    EXPECT_FALSE(::IsWindowVisible(edit));
    EXPECT_TRUE(host.Enabled(1029));
    EXPECT_TRUE(host.Checked(1030));   // "2" converted to the group's index
    PageStep step;
    host.page().Save(&step);
    EXPECT_EQ(V_VT(&step.Get(L"WaitFor")), VT_BSTR);
    EXPECT_EQ(step.Text(L"WaitFor"), L"2");

    ::SendMessageW(host.Item(1028), WM_KEYDOWN, VK_F2, 0);   // emptied, the override is gone
    ::SetWindowTextW(edit, L"");
    ASSERT_TRUE(host.Validate());
    EXPECT_EQ(host.Text(1053), L"Wait Until");
}

TEST(PageLayout, ControlsFollowTheSizeChangeByTheirFlags) {
    PageHost host(L"WriteFileUI");
    auto rectOf = [&](int id) {
        RECT r{};
        ::GetWindowRect(host.Item(id), &r);
        ::MapWindowPoints(nullptr, host.window(), reinterpret_cast<POINT*>(&r), 2);
        return r;
    };
    const RECT name = rectOf(1008), text = rectOf(1027), append = rectOf(1026);
    RECT page{};
    ::GetWindowRect(host.window(), &page);
    ::SetWindowPos(host.window(), nullptr, 0, 0, page.right - page.left + 100, page.bottom - page.top + 40,
                   SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_EQ(rectOf(1008).right, name.right + 100);   // grows in width
    EXPECT_EQ(rectOf(1008).bottom, name.bottom);
    EXPECT_EQ(rectOf(1027).right, text.right + 100);   // grows both ways
    EXPECT_EQ(rectOf(1027).bottom, text.bottom + 40);
    EXPECT_EQ(rectOf(1026).top, append.top + 40);      // moves down
    EXPECT_EQ(rectOf(1026).right, append.right);
}

// The focus flags and insertion into the focused field; the browse kinds are in the action pages' tests.
TEST(ActiveField, FocusFlagsAndInsertion) {
    PageHost host(L"WriteINIUI");
    host.Load(nullptr);
    host.SetText(1020, L"old.ini");
    host.SetText(1008, L"Name");
    EXPECT_EQ(Focus(host, host.Item(1020)), 3);   // text, with a browse kind
    tol::com_ptr<IActionField> field = host.page().ActiveField();
    ASSERT_TRUE(field);
    ASSERT_EQ(field->InsertText(tol::bstr(L"new.ini").get(), VARIANT_FALSE), S_OK);   // replaces the field
    EXPECT_EQ(host.Text(1020), L"new.ini");
    PageHost::Pump();
    ::SendMessageW(host.Item(1020), EM_SETSEL, 0, 0);
    ASSERT_EQ(field->InsertText(tol::bstr(L"C:\\").get(), VARIANT_TRUE), S_OK);      // kept: at the caret
    EXPECT_EQ(host.Text(1020), L"C:\\new.ini");
    PageHost::Pump();   // the focus returns to the field that took the text

    EXPECT_EQ(Focus(host, host.Item(1008)), 1);   // text without browse: inserted at the caret
    field = host.page().ActiveField();
    ::SendMessageW(host.Item(1008), EM_SETSEL, 4, 4);
    ASSERT_EQ(field->InsertText(tol::bstr(L"%V%").get(), VARIANT_FALSE), S_OK);
    EXPECT_EQ(host.Text(1008), L"Name%V%");
    PageHost::Pump();

    EXPECT_EQ(Focus(host, host.Item(1031)), 1);   // a check box that offers overrides
    HWND edit = nullptr;
    ASSERT_EQ(host.page().ActiveField()->GetEditWindow(&edit), S_OK);
    EXPECT_EQ(edit, host.page().overrideEdit());
}

// A field's tooltip shows its text expanded where that differs; Ctrl+M copies the expanded text and types nothing.
TEST(ExpandedText, InTheTooltipAndCopiedByCtrlM) {
    PageHost host(L"WriteINIUI", true);
    host.expander.variables = {{L"DIR", L"C:\\build"}, {L"V", L"1.4"}};
    host.Load(nullptr);
    auto tipOf = [&](int id) {
        NMTTDISPINFOW info{};
        info.hdr.hwndFrom = host.page().tooltip();
        info.hdr.idFrom = reinterpret_cast<UINT_PTR>(host.Item(id));
        info.hdr.code = TTN_GETDISPINFOW;
        ::SendMessageW(host.window(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&info));
        return std::wstring(info.lpszText ? info.lpszText : L"");
    };
    ASSERT_TRUE(host.page().tooltip());
    host.SetText(1020, L"%DIR%\\app.ini");
    host.SetText(1064, L"Plain");
    EXPECT_EQ(tipOf(1020), L"C:\\build\\app.ini");
    EXPECT_EQ(tipOf(1064), L"");

    host.SetText(1002, L"Version %V%");
    BYTE keys[256] = {};
    ::GetKeyboardState(keys);
    keys[VK_CONTROL] = 0x80;
    ::SetKeyboardState(keys);
    ::SendMessageW(host.Item(1002), WM_KEYDOWN, 'M', 0);
    ::SendMessageW(host.Item(1002), WM_CHAR, L'\r', 0);
    keys[VK_CONTROL] = 0;
    ::SetKeyboardState(keys);
    EXPECT_EQ(host.Text(1002), L"Version %V%");
    ASSERT_TRUE(::OpenClipboard(nullptr));
    const HANDLE data = ::GetClipboardData(CF_UNICODETEXT);
    EXPECT_STREQ(data ? static_cast<const wchar_t*>(::GlobalLock(data)) : L"", L"Version 1.4");
    if (data) ::GlobalUnlock(data);
    ::CloseClipboard();
}

TEST(EditorField, TheScriptEditorControlAsATextField) {
    PageHost host(L"ScriptPreviewUI");
    const HWND editor = host.Item(1027);
    PageStep step;
    step.SetText(L"Text", L"var a = 1;");
    host.Load(&step);
    EXPECT_EQ(tol::GetEditorText(editor), L"var a = 1;");
    EXPECT_EQ(host.site.changes, 0);   // loading is no change
    ::SendMessageW(editor, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"var b = 2;"));
    EXPECT_EQ(host.site.changes, 1);   // the control's change notification

    EXPECT_EQ(Focus(host, editor), 3);   // text, with a browse kind
    tol::com_ptr<IActionField> field = host.page().ActiveField();
    ASSERT_TRUE(field);
    ::SendMessageW(editor, WM_KEYDOWN, VK_END, 0);
    ASSERT_EQ(field->InsertText(tol::bstr(L" // %V%").get(), VARIANT_TRUE), S_OK);
    tol::bstr text;
    ASSERT_EQ(field->GetFieldText(text.receive()), S_OK);
    EXPECT_EQ(text.str(), L"var b = 2; // %V%");

    ASSERT_TRUE(host.Save(step));
    EXPECT_EQ(step.Text(L"Text"), L"var b = 2; // %V%");
}

} // namespace
} // namespace test
