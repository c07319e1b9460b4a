// The property pages' dialog templates, read from this module's resources. The page tests create every page.
#include "frame/handles.h"
#include <gtest/gtest.h>
#include <cstring>
#include <set>
#include <stdexcept>
#include <tuple>
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

// Reads a DLGTEMPLATEEX: fixed fields, then strings or ordinals ("#n"), items aligned to 32 bits.
struct TemplateReader {
    const BYTE* data;
    size_t size, pos;
    template <class T>
    T Get() {
        if (pos + sizeof(T) > size) throw std::runtime_error("template ends early");
        T value;
        std::memcpy(&value, data + pos, sizeof value);
        pos += sizeof value;
        return value;
    }
    std::wstring NameOrOrdinal() {
        const WORD first = Get<WORD>();
        if (first == 0xFFFF) return L"#" + std::to_wstring(Get<WORD>());
        std::wstring text;
        for (WORD c = first; c != 0; c = Get<WORD>()) text += static_cast<wchar_t>(c);
        return text;
    }
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
    TemplateReader in{static_cast<const BYTE*>(::LockResource(::LoadResource(module, found))), ::SizeofResource(module, found),
                      0};
    if (in.Get<WORD>() != 1 || in.Get<WORD>() != 0xFFFF) throw std::runtime_error("not an extended template");
    Template t{};
    t.helpId = in.Get<DWORD>(), t.exStyle = in.Get<DWORD>(), t.style = in.Get<DWORD>();
    const WORD count = in.Get<WORD>();
    t.x = in.Get<short>(), t.y = in.Get<short>(), t.cx = in.Get<short>(), t.cy = in.Get<short>();
    t.menu = in.NameOrOrdinal(), t.windowClass = in.NameOrOrdinal(), t.caption = in.NameOrOrdinal();
    if (t.style & DS_SETFONT) {
        t.points = in.Get<WORD>();
        in.pos += 4;  // weight, italic, character set
        t.font = in.NameOrOrdinal();
    }
    for (WORD i = 0; i < count; ++i) {
        in.pos = (in.pos + 3) & ~size_t{3};
        Item item{};
        item.helpId = in.Get<DWORD>(), item.exStyle = in.Get<DWORD>(), item.style = in.Get<DWORD>();
        item.x = in.Get<short>(), item.y = in.Get<short>(), item.cx = in.Get<short>(), item.cy = in.Get<short>();
        item.id = static_cast<int>(in.Get<DWORD>());
        item.kind = KindOf(in.NameOrOrdinal());
        item.text = in.NameOrOrdinal();
        in.pos += in.Get<WORD>();
        t.items.push_back(item);
    }
    return t;
}

BOOL CALLBACK CollectLanguage(HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR out) {
    reinterpret_cast<std::vector<WORD>*>(out)->push_back(language);
    return TRUE;
}

}  // namespace

TEST(PageTemplates, HeaderFontLanguageAndControlsInOrder) {
    for (const auto& e : kTemplates) {
        SCOPED_TRACE(testing::Message() << "dialog " << e.id);
        std::vector<WORD> languages;
        ::EnumResourceLanguagesW(::GetModuleHandleW(nullptr), RT_DIALOG, MAKEINTRESOURCEW(e.id), CollectLanguage,
                                 reinterpret_cast<LONG_PTR>(&languages));
        EXPECT_EQ(languages, std::vector<WORD>{kEnglishUs});
        const Template t = ReadTemplate(e.id);
        EXPECT_EQ(std::make_tuple(t.style, t.exStyle | t.helpId, t.x, t.y, t.cx, t.cy),
                  std::make_tuple(kDialogStyle, 0u, 0, 0, e.cx, e.cy));
        EXPECT_EQ(std::make_tuple(t.menu, t.windowClass, t.caption, t.font, t.points),
                  std::make_tuple(L"", L"", e.caption, L"MS Shell Dlg", 8));
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
            if (item.kind == 'B') {
                // The page engine knows these buttons only.
                EXPECT_TRUE(radio || type == BS_AUTOCHECKBOX || type == BS_GROUPBOX) << "button type " << type;
                EXPECT_EQ((item.style & BS_NOTIFY) != 0, type != BS_GROUPBOX && silent.count({e.id, item.id}) == 0);
            }
            if (radio) {
                EXPECT_EQ((item.style & WS_GROUP) != 0, !inRadioGroup) << "a radio group starts with the group style";
            }
            inRadioGroup = radio;
            if (item.kind == 'E') {
                EXPECT_EQ(item.style & (WS_TABSTOP | WS_BORDER), DWORD(WS_TABSTOP | WS_BORDER));
            }
            if (item.kind == 'C') {
                const DWORD combo = lists.count({e.id, item.id}) ? CBS_DROPDOWNLIST : CBS_DROPDOWN | CBS_AUTOHSCROLL | CBS_SORT;
                EXPECT_EQ(item.style & (3 | CBS_AUTOHSCROLL | CBS_SORT), combo);
            }
            const bool spare = e.id == 181 && item.id == 1038;
            EXPECT_EQ((item.style & WS_VISIBLE) != 0, !spare);
            EXPECT_EQ((item.style & WS_DISABLED) != 0, spare);
        }
    }
}

// Texts that a resource compiler can get wrong: quotes, question marks, dashes, mnemonics.
TEST(PageTemplates, TextsOfSelectedControls) {
    const std::tuple<WORD, int, const wchar_t*> rows[] = {
        {182, 1049, L"Wait for share names to be defined on a \"Network Name Not Found\" error"},
        {1029, 1015, L"Files to ZIP -- Enter one file/folder mask (*.ext, myfile*.*, filex.c?\?) per line"},
        {1025, 1031, L"&Delete the value"},
    };
    for (const auto& [dialog, control, text] : rows) {
        std::wstring found = L"<no such control>";
        for (const Item& item : ReadTemplate(dialog).items)
            if (item.id == control) found = item.text;
        EXPECT_EQ(found, text) << "dialog " << dialog << " control " << control;
    }
}
