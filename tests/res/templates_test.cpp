// The property pages' dialog templates, read from this module's resources and created as dialogs.
#include "frame/handles.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace tol;

namespace {

constexpr DWORD kDialogStyle = WS_CHILD | WS_CAPTION | WS_SYSMENU | DS_CONTROL | DS_SETFONT;
constexpr LANGID kEnglishUs = MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);

// Kinds: S static, E edit, C combo box, B button; ids in tab order (-1: never addressed).
struct Expected {
    WORD id;
    const wchar_t* caption;
    short cx, cy;
    const char* kinds;
    std::vector<int> ids;
};
const Expected kTemplates[] = {
    {172, L"Registry", 250, 146, "SESSCSESEBSBBSE", {-1, 1034, -1, -1, 1000, -1, 1019, -1, 1008, 1031, -1, 1057, 1058, -1, 1002}},
    {178, L"File", 268, 126, "SESEBSE", {-1, 1008, -1, 1027, 1026, 1091, 1092}},
    {179, L"Wait", 268, 92, "BBBBSE", {1053, 1028, 1029, 1030, 1031, 1032}},
    {181, L"Service", 265, 98, "SCCSBBBBS", {-1, 1034, 1035, -1, 1056, 1036, 1037, 1038, -1}},
    {182, L"Options", 268, 173, "BBBBBBBBBBBSESE", {1041, 1038, 1039, 1042, 1040, 1048, 1051, 1052, 1053, 1050, 1049, -1, 1010, -1, 1028}},
    {183, L"Copy", 268, 180, "SESESSESEBBBBBBB", {-1, 1047, -1, 1009, 1015, -1, 1010, -1, 1011, 1042, 1043, 1044, 1041, 1050, 1049, 1051}},
    {184, L"Global Assembly Cache", 268, 110, "SEBBBBSE", {-1, 1008, 1011, 1014, 1013, 1015, -1, 1009}},
    {1024, L"Replace", 268, 175, "SESEBBBSESESE", {-1, 1061, -1, 1009, 1065, 1063, 1064, -1, 1062, -1, 1028, -1, 1092}},
    {1025, L"INI File", 250, 114, "SESESEBSE", {-1, 1020, -1, 1064, -1, 1008, 1031, -1, 1002}},
    {1026, L"Application", 268, 172, "SCSCSCBBBBSESEBBBES",
     {-1, 1065, -1, 1034, -1, 1080, -1, 1070, 1071, -1, -1, 1026, -1, 1027, -1, 1072, 1073, 1028, -1}},
    {1027, L"Component", 268, 175, "SCSCSSCSEBBBBBBBBBBBBBBSEB",
     {-1, 1065, -1, 1034, -1, -1, 1080, -1, 1088, -1, 1068, 1069, 1070, 1071, 1072, 1073, -1, 1074, 1075, 1076, 1077, 1078, 1079, -1,
      1062, 1081}},
    {1028, L"Properties", 268, 175, "SSESEEEEEEEEEEEEEEEEEEE",
     {-1, -1, 1016, -1, 1026, 1017, 1027, 1018, 1028, 1019, 1029, 1020, 1030, 1021, 1031, 1022, 1032, 1023, 1033, 1024, 1034, 1025, 1035}},
    {1029, L"ZIP", 268, 170, "SCSESSESEBBBSE", {-1, 1084, -1, 1047, 1015, -1, 1010, -1, 1011, 1042, 1043, 1085, 1090, 1009}},
    {1030, L"Options", 268, 177, "BBBBSEBBBBBSE", {-1, 1051, 1052, 1053, -1, 1012, 1031, 1087, 1054, 1055, 1048, -1, 1013}},
    {1031, L"UNZIP", 268, 162, "SCSESEBBSEBBB", {-1, 1084, -1, 1047, 1015, 1010, 1042, 1085, 1090, 1009, 1050, 1087, 1048}},
};

struct Item {
    DWORD helpId, exStyle, style;
    short x, y, cx, cy;
    int id;
    char kind;  // as in Expected::kinds; '?' for any other class
    std::wstring text;
};
struct Template {
    DWORD helpId, exStyle, style;
    short x, y, cx, cy;
    std::wstring menu, windowClass, caption, font;
    WORD points;
    std::vector<Item> items;
};

// Reads a DLGTEMPLATEEX: fixed fields, then strings or ordinals, items aligned to 32 bits.
class TemplateReader {
public:
    TemplateReader(const BYTE* data, size_t size) : data_(data), size_(size) {}
    template <class T>
    T Get() {
        if (pos_ + sizeof(T) > size_) throw std::runtime_error("template ends early");
        T value;
        std::memcpy(&value, data_ + pos_, sizeof value);
        pos_ += sizeof value;
        return value;
    }
    std::wstring NameOrOrdinal() {
        const WORD first = Get<WORD>();
        if (first == 0xFFFF) return L"#" + std::to_wstring(Get<WORD>());
        std::wstring text;
        for (WORD c = first; c != 0; c = Get<WORD>()) text += static_cast<wchar_t>(c);
        return text;
    }
    void AlignTo4() { pos_ = (pos_ + 3) & ~size_t{3}; }
    void Skip(size_t n) { pos_ += n; }

private:
    const BYTE* data_;
    size_t size_, pos_ = 0;
};

char KindOf(const std::wstring& cls) {
    const std::pair<const wchar_t*, char> names[] = {
        {L"#130", 'S'}, {L"STATIC", 'S'}, {L"#129", 'E'}, {L"EDIT", 'E'}, {L"#133", 'C'}, {L"COMBOBOX", 'C'}, {L"#128", 'B'}, {L"BUTTON", 'B'}};
    for (const auto& [name, kind] : names)
        if (::_wcsicmp(cls.c_str(), name) == 0) return kind;
    return '?';
}

Template ReadTemplate(WORD id) {
    const HMODULE module = ::GetModuleHandleW(nullptr);
    HRSRC found = ::FindResourceExW(module, RT_DIALOG, MAKEINTRESOURCEW(id), kEnglishUs);
    if (!found) throw std::runtime_error("no English (US) dialog " + std::to_string(id));
    TemplateReader in(static_cast<const BYTE*>(::LockResource(::LoadResource(module, found))), ::SizeofResource(module, found));
    if (in.Get<WORD>() != 1 || in.Get<WORD>() != 0xFFFF) throw std::runtime_error("not an extended template");
    Template t{};
    t.helpId = in.Get<DWORD>();
    t.exStyle = in.Get<DWORD>();
    t.style = in.Get<DWORD>();
    const WORD count = in.Get<WORD>();
    t.x = in.Get<short>(), t.y = in.Get<short>(), t.cx = in.Get<short>(), t.cy = in.Get<short>();
    t.menu = in.NameOrOrdinal();
    t.windowClass = in.NameOrOrdinal();
    t.caption = in.NameOrOrdinal();
    if (t.style & DS_SETFONT) {
        t.points = in.Get<WORD>();
        in.Skip(4);  // weight, italic, character set
        t.font = in.NameOrOrdinal();
    }
    for (WORD i = 0; i < count; ++i) {
        in.AlignTo4();
        Item item{};
        item.helpId = in.Get<DWORD>();
        item.exStyle = in.Get<DWORD>();
        item.style = in.Get<DWORD>();
        item.x = in.Get<short>(), item.y = in.Get<short>(), item.cx = in.Get<short>(), item.cy = in.Get<short>();
        item.id = static_cast<int>(in.Get<DWORD>());
        item.kind = KindOf(in.NameOrOrdinal());
        item.text = in.NameOrOrdinal();
        in.Skip(in.Get<WORD>());
        t.items.push_back(item);
    }
    return t;
}

BOOL CALLBACK CollectLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR out) {
    reinterpret_cast<std::vector<WORD>*>(out)->push_back(language);
    return TRUE;
}

INT_PTR CALLBACK PlainDialog(HWND, UINT, WPARAM, LPARAM) { return FALSE; }

bool Listed(const std::set<std::pair<int, int>>& set, WORD dialog, int control) { return set.count({dialog, control}) != 0; }

}  // namespace

TEST(PageTemplates, HeaderFontLanguageAndControlsInOrder) {
    for (const auto& e : kTemplates) {
        SCOPED_TRACE(testing::Message() << "dialog " << e.id);
        std::vector<WORD> languages;
        ::EnumResourceLanguagesW(::GetModuleHandleW(nullptr), RT_DIALOG, MAKEINTRESOURCEW(e.id), CollectLanguage,
                                 reinterpret_cast<LONG_PTR>(&languages));
        EXPECT_EQ(languages, std::vector<WORD>{kEnglishUs});
        const Template t = ReadTemplate(e.id);
        EXPECT_EQ(t.style, kDialogStyle);
        EXPECT_EQ(t.exStyle | t.helpId | t.x | t.y, 0u);
        EXPECT_EQ(t.cx, e.cx);
        EXPECT_EQ(t.cy, e.cy);
        EXPECT_EQ(t.menu, L"");
        EXPECT_EQ(t.windowClass, L"");
        EXPECT_EQ(t.caption, e.caption);
        EXPECT_EQ(t.font, L"MS Shell Dlg");
        EXPECT_EQ(t.points, 8);
        std::vector<int> ids;
        std::string kinds;
        for (const auto& item : t.items) {
            ids.push_back(item.id);
            kinds += item.kind;
            EXPECT_EQ(item.exStyle | item.helpId, 0u) << "control " << item.id;
            EXPECT_TRUE(item.style & WS_CHILD) << "control " << item.id;
            EXPECT_TRUE(item.x >= 0 && item.y >= 0 && item.x + item.cx <= t.cx) << "control " << item.id << " leaves the page";
        }
        EXPECT_EQ(ids, e.ids);
        EXPECT_EQ(kinds, e.kinds);
    }
}

TEST(PageTemplates, ControlStylesThatBindingReliesOn) {
    // Everything is visible but the Service page's spare radio button; the Replace page's check boxes do not notify.
    const std::set<std::pair<int, int>> silent = {{1024, 1065}, {1024, 1063}, {1024, 1064}, {181, 1038}};
    const std::set<std::pair<int, int>> lists = {{172, 1000}, {1026, 1065}, {1027, 1065}, {1029, 1084}, {1031, 1084}};
    for (const auto& e : kTemplates) {
        bool inRadioGroup = false;
        for (const auto& item : ReadTemplate(e.id).items) {
            SCOPED_TRACE(testing::Message() << "dialog " << e.id << " control " << item.id);
            const DWORD type = item.style & BS_TYPEMASK;
            const bool radio = item.kind == 'B' && type == BS_AUTORADIOBUTTON;
            if (item.kind == 'B' && (radio || type == BS_AUTOCHECKBOX)) {
                EXPECT_EQ((item.style & BS_NOTIFY) != 0, !Listed(silent, e.id, item.id));
            }
            if (radio) {
                EXPECT_EQ((item.style & WS_GROUP) != 0, !inRadioGroup) << "a radio group starts with the group style";
            }
            inRadioGroup = radio;
            if (item.kind == 'E') {
                EXPECT_EQ(item.style & (WS_TABSTOP | WS_BORDER), DWORD(WS_TABSTOP | WS_BORDER));
            }
            if (item.kind == 'C') {
                const DWORD editable = CBS_DROPDOWN | CBS_AUTOHSCROLL | CBS_SORT;
                EXPECT_EQ(item.style & (3 | CBS_AUTOHSCROLL | CBS_SORT), Listed(lists, e.id, item.id) ? DWORD{CBS_DROPDOWNLIST} : editable);
            }
            const bool spare = e.id == 181 && item.id == 1038;
            EXPECT_EQ((item.style & WS_VISIBLE) != 0, !spare);
            EXPECT_EQ((item.style & WS_DISABLED) != 0, spare);
        }
    }
}

TEST(PageTemplates, TextsAndPlacesOfSelectedControls) {
    const struct {
        WORD dialog;
        int control;
        const wchar_t* text;
        RECT box;  // x, y, width, height
    } rows[] = {
        {182, 1049, L"Wait for share names to be defined on a \"Network Name Not Found\" error", {4, 123, 260, 12}},
        {1029, 1015, L"Files to ZIP -- Enter one file/folder mask (*.ext, myfile*.*, filex.c?\?) per line", {4, 37, 260, 9}},
        {181, 1038, L"Delete", {164, 48, 59, 9}},
        {172, 1000, L"", {51, 23, 113, 44}},
        {178, 1027, L"", {4, 29, 260, 51}},
        {1027, 1079, L"Default", {136, 138, 79, 12}},
        {1028, 1035, L"", {92, 158, 172, 12}},
        {1025, 1031, L"&Delete the value", {52, 54, 194, 11}},
    };
    for (const auto& row : rows) {
        const auto items = ReadTemplate(row.dialog).items;
        const auto item = std::find_if(items.begin(), items.end(), [&](const Item& i) { return i.id == row.control; });
        ASSERT_TRUE(item != items.end()) << "dialog " << row.dialog << " control " << row.control;
        EXPECT_EQ(item->text, row.text) << "dialog " << row.dialog << " control " << row.control;
        const RECT box = {item->x, item->y, item->cx, item->cy};
        EXPECT_TRUE(std::memcmp(&box, &row.box, sizeof box) == 0) << "dialog " << row.dialog << " control " << row.control;
    }
}

TEST(PageTemplates, CreatedPagesHaveCaptionSizeAndChildOrder) {
    unique_window host(::CreateWindowExW(0, L"Static", L"host", WS_OVERLAPPEDWINDOW, 0, 0, 800, 600, nullptr, nullptr, nullptr, nullptr));
    ASSERT_TRUE(host);
    for (const auto& e : kTemplates) {
        SCOPED_TRACE(testing::Message() << "dialog " << e.id);
        unique_window page(::CreateDialogParamW(::GetModuleHandleW(nullptr), MAKEINTRESOURCEW(e.id), host.get(), PlainDialog, 0));
        ASSERT_TRUE(page) << "error " << ::GetLastError();
        wchar_t caption[64] = L"garbage";
        ::GetWindowTextW(page.get(), caption, 64);
        EXPECT_STREQ(caption, e.caption);
        RECT expected = {0, 0, e.cx, e.cy}, client{};
        ::MapDialogRect(page.get(), &expected);
        ::GetClientRect(page.get(), &client);
        EXPECT_EQ(client.right, expected.right);
        EXPECT_EQ(client.bottom, expected.bottom);
        std::vector<int> ids;
        for (HWND child = ::GetWindow(page.get(), GW_CHILD); child; child = ::GetWindow(child, GW_HWNDNEXT)) {
            ids.push_back(::GetDlgCtrlID(child));
            if (ids.size() > e.ids.size()) break;
            const DWORD style = static_cast<DWORD>(::GetWindowLongPtrW(child, GWL_STYLE));
            const char kind = e.kinds[ids.size() - 1];
            // The page engine tells radio buttons from check boxes by their dialog code.
            const bool radioCode = (::SendMessageW(child, WM_GETDLGCODE, 0, 0) & DLGC_RADIOBUTTON) != 0;
            EXPECT_EQ(radioCode, kind == 'B' && (style & BS_TYPEMASK) == BS_AUTORADIOBUTTON) << "control " << ids.back();
        }
        EXPECT_EQ(ids, e.ids);
        if (e.id == 181) {
            HWND spare = ::GetDlgItem(page.get(), 1038);
            EXPECT_FALSE(::GetWindowLongPtrW(spare, GWL_STYLE) & WS_VISIBLE);
            EXPECT_FALSE(::IsWindowEnabled(spare));
        }
    }
}
