// The page engine driven through real dialogs and their messages, on the library's own pages.
#include "page_host.h"
#include "frame/bstr.h"
#include "pages/editor_control.h"
#include <gtest/gtest.h>
#include <commctrl.h>

namespace {

using test::MessageBoxAnswerer;
using test::PageHost;
using test::PageStep;

TEST(PageSaving, NewStepWritesWhatDiffersFromEmptyDefaultsAndTrimsQuotes) {
    PageHost host(L"WriteINIUI");
    host.Load(nullptr);
    host.SetText(1020, L"\"C:\\app\\app.ini\"");
    host.SetText(1064, L"Release");
    ASSERT_TRUE(host.Validate());
    PageStep step;
    step.SetText(L"ValueName", L"stale");
    host.page().Save(&step);
    EXPECT_EQ(step.Text(L"Filename"), L"C:\\app\\app.ini");
    EXPECT_EQ(step.Text(L"Section"), L"Release");
    EXPECT_FALSE(step.Has(L"ValueName"));   // cleared text with an empty default: removed, not stored empty
    EXPECT_EQ(step.removed, (std::vector<std::wstring>{L"ValueName", L"Delete", L"ValueData"}));

    PageHost copy(L"CopyFilesOptUI");   // defaults that are not empty or zero are written for a new step
    copy.Load(nullptr);
    ASSERT_TRUE(copy.Validate());
    PageStep options;
    copy.page().Save(&options);
    EXPECT_EQ(V_VT(&options.Get(L"LogCopied")), VT_BOOL);
    EXPECT_EQ(options.Text(L"Retries"), L"10");
    EXPECT_FALSE(options.Has(L"NoCopy"));
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
        ASSERT_EQ(answerer.texts.size(), 1u);
        EXPECT_EQ(answerer.texts[0], L"Velmora: Field is required.");
    }
    EXPECT_EQ(::GetFocus(), host.Item(1064));

    host.Load(&stored, true);   // editing several steps: only what the user touched is written
    host.SetText(1008, L"Changed");
    EXPECT_TRUE(host.Validate());
    PageStep target;
    target.SetText(L"Section", L"untouched");
    host.page().Save(&target);
    EXPECT_EQ(target.Text(L"ValueName"), L"Changed");
    EXPECT_EQ(target.Text(L"Section"), L"untouched");
    EXPECT_FALSE(target.Has(L"Filename"));
    EXPECT_GE(host.site.changes, 1);
}

TEST(PageSaving, ArrayRowsKeepGapsAndDropTrailingEmptyRows) {
    PageHost host(L"COMPlusPropUI");
    PageStep stored;
    stored.SetText(L"Props", L"ignored: not an array");
    host.Load(nullptr);
    host.SetText(1016, L"Description");
    host.SetText(1018, L"3rd");
    ASSERT_TRUE(host.Validate());
    PageStep step;
    host.page().Save(&step);
    EXPECT_EQ(step.Array(L"Props"), (std::vector<std::wstring>{L"Description", L"", L"3rd"}));
    EXPECT_TRUE(step.Array(L"Values").empty());

    host.Load(&step);   // a stored array shows element by element; the other rows are emptied
    EXPECT_EQ(host.Text(1016), L"Description");
    EXPECT_EQ(host.Text(1017), L"");
    EXPECT_EQ(host.Text(1018), L"3rd");
    EXPECT_EQ(host.Text(1019), L"");
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

    {
        MessageBoxAnswerer answerer(IDNO);
        host.Click(1031);
        for (int i = 0; i < 20 && answerer.texts.empty(); ++i) PageHost::Pump(), ::Sleep(20);
        ASSERT_EQ(answerer.texts.size(), 1u);
        EXPECT_NE(answerer.texts[0].find(L"OK to remove the override value?"), std::wstring::npos);
    }
    EXPECT_EQ(host.Text(1031), L"&Delete the value*");
    EXPECT_TRUE(host.Checked(1031));
    ASSERT_TRUE(host.Validate());
    PageStep kept;
    host.page().Save(&kept);
    EXPECT_EQ(V_VT(&kept.Get(L"Delete")), VT_BSTR);
    EXPECT_EQ(kept.Text(L"Delete"), L"%DEL%");

    {
        MessageBoxAnswerer answerer(IDYES);
        host.Click(1031);
        for (int i = 0; i < 20 && answerer.texts.empty(); ++i) PageHost::Pump(), ::Sleep(20);
    }
    EXPECT_EQ(host.Text(1031), L"&Delete the value");
    EXPECT_FALSE(host.Checked(1031));
    ASSERT_TRUE(host.Validate());
    PageStep removed;
    removed.SetText(L"Delete", L"%DEL%");
    host.page().Save(&removed);
    EXPECT_FALSE(removed.Has(L"Delete"));   // the box's own state now: unchecked, the zero default
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
    EXPECT_FALSE(::IsWindowEnabled(host.Item(1029)));
    wchar_t text[64] = {};
    ::GetWindowTextW(edit, text, 64);
    EXPECT_STREQ(text, L"%MODE%");
    ::SetWindowTextW(edit, L"2");
    ASSERT_TRUE(host.Validate());   // validation closes the edit and keeps its text as the override
    EXPECT_FALSE(::IsWindowVisible(edit));
    EXPECT_TRUE(::IsWindowEnabled(host.Item(1029)));
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
    const RECT name = rectOf(1008), text = rectOf(1027), append = rectOf(1026), encoding = rectOf(1092);
    RECT page{};
    ::GetWindowRect(host.window(), &page);
    ::SetWindowPos(host.window(), nullptr, 0, 0, page.right - page.left + 100, page.bottom - page.top + 40,
                   SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_EQ(rectOf(1008).right, name.right + 100);                 // grows in width
    EXPECT_EQ(rectOf(1008).bottom, name.bottom);
    EXPECT_EQ(rectOf(1027).right, text.right + 100);                 // grows both ways
    EXPECT_EQ(rectOf(1027).bottom, text.bottom + 40);
    EXPECT_EQ(rectOf(1026).top, append.top + 40);                    // moves down
    EXPECT_EQ(rectOf(1026).right, append.right);
    EXPECT_EQ(rectOf(1092).top, encoding.top + 40);
}

TEST(ActiveField, FocusFlagsBrowseAndInsertion) {
    PageHost host(L"WriteINIUI");
    host.Load(nullptr);
    host.SetText(1020, L"old.ini");
    host.SetText(1008, L"Name");
    ::SetFocus(host.Item(1020));
    PageHost::Pump();
    ASSERT_FALSE(host.site.focused.empty());
    EXPECT_EQ(host.site.focused.back(), 3);   // text, with a browse kind
    tol::com_ptr<IActionField> field = host.page().ActiveField();
    ASSERT_TRUE(field);
    long kind = 0;
    tol::bstr filter;
    ASSERT_EQ(field->GetBrowseKind(&kind), S_OK);
    ASSERT_EQ(field->GetBrowseFilter(filter.receive()), S_OK);
    EXPECT_EQ(kind, 2);
    EXPECT_EQ(filter.str(), L"INI Files (*.ini)|*.ini|All Files (*.*)|*.*||");
    ASSERT_EQ(field->InsertText(tol::bstr(L"new.ini").get(), VARIANT_FALSE), S_OK);   // replaces the field
    EXPECT_EQ(host.Text(1020), L"new.ini");
    PageHost::Pump();
    ::SendMessageW(host.Item(1020), EM_SETSEL, 0, 0);
    ASSERT_EQ(field->InsertText(tol::bstr(L"C:\\").get(), VARIANT_TRUE), S_OK);      // kept: at the caret
    EXPECT_EQ(host.Text(1020), L"C:\\new.ini");
    PageHost::Pump();   // the focus returns to the field that took the text

    ::SetFocus(host.Item(1008));
    PageHost::Pump();
    EXPECT_EQ(host.site.focused.back(), 1);   // text without browse: inserted at the caret
    field = host.page().ActiveField();
    ::SendMessageW(host.Item(1008), EM_SETSEL, 4, 4);
    ASSERT_EQ(field->InsertText(tol::bstr(L"%V%").get(), VARIANT_FALSE), S_OK);
    EXPECT_EQ(host.Text(1008), L"Name%V%");
    PageHost::Pump();

    ::SetFocus(host.Item(1031));   // a check box that offers overrides
    PageHost::Pump();
    EXPECT_EQ(host.site.focused.back(), 1);
    HWND edit = nullptr;
    field = host.page().ActiveField();
    ASSERT_EQ(field->GetEditWindow(&edit), S_OK);
    EXPECT_EQ(edit, host.page().overrideEdit());
}

TEST(Tooltips, TipShowsTheExpansionOnlyWhenItDiffers) {
    PageHost host(L"WriteINIUI", true);
    host.expander.variables[L"DIR"] = L"C:\\build";
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
}

TEST(Clipboard, CtrlMCopiesTheExpandedTextAndTypesNothing) {
    PageHost host(L"WriteINIUI");
    host.expander.variables[L"V"] = L"1.4";
    host.Load(nullptr);
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
    const std::wstring copied = data ? static_cast<const wchar_t*>(::GlobalLock(data)) : L"";
    if (data) ::GlobalUnlock(data);
    ::CloseClipboard();
    EXPECT_EQ(copied, L"Version 1.4");
}

TEST(EditorField, TheScriptEditorControlAsATextField) {
    PageHost host(L"ScriptPreviewUI");
    const HWND editor = host.Item(1027);
    PageStep stored;
    stored.SetText(L"Text", L"var a = 1;");
    host.Load(&stored);
    EXPECT_EQ(tol::GetEditorText(editor), L"var a = 1;");
    EXPECT_EQ(host.site.changes, 0);   // loading is no change
    ::SendMessageW(editor, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"var b = 2;"));
    EXPECT_EQ(host.site.changes, 1);   // the control's change notification

    ::SetFocus(editor);
    PageHost::Pump();
    ASSERT_FALSE(host.site.focused.empty());
    EXPECT_EQ(host.site.focused.back(), 3);   // text, with a browse kind
    tol::com_ptr<IActionField> field = host.page().ActiveField();
    ASSERT_TRUE(field);
    ::SendMessageW(editor, WM_KEYDOWN, VK_END, 0);
    ASSERT_EQ(field->InsertText(tol::bstr(L" // %V%").get(), VARIANT_TRUE), S_OK);
    tol::bstr text;
    ASSERT_EQ(field->GetFieldText(text.receive()), S_OK);
    EXPECT_EQ(text.str(), L"var b = 2; // %V%");

    ASSERT_TRUE(host.Validate());
    PageStep step;
    host.page().Save(&step);
    EXPECT_EQ(step.Text(L"Text"), L"var b = 2; // %V%");
}

} // namespace
