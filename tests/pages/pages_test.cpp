// The action pages through their dialogs: what a new step stores, the value mappings, the enabling rules, the
// labels and lists, the page rules, the browse filters and the service pick list.
#include "frame/bstr.h"
#include "page_host.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <iterator>

namespace test {
namespace {

// The pages run in a COM apartment, as in their host.
class ActionPages : public ::testing::Test {
    void SetUp() override { ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }
    void TearDown() override { ::CoUninitialize(); }
};

using Names = std::vector<std::wstring>;

// A saved value as 1 (long), true (bool), "x" (text) or [2] (array of two); <none> when not saved.
std::wstring Describe(const PageStep& step, const wchar_t* name) {
    if (!step.Has(name)) return L"<none>";
    const VARIANT& value = step.Get(name);
    if (V_VT(&value) == VT_BSTR) return L"\"" + step.Text(name) + L"\"";
    if (V_VT(&value) & VT_ARRAY) return L"[" + std::to_wstring(step.Array(name).size()) + L"]";
    if (V_VT(&value) == VT_BOOL) return V_BOOL(&value) ? L"true" : L"false";
    return step.Text(name);
}

using Saved = std::pair<const wchar_t*, const wchar_t*>;   // a property and its value as Describe shows it

// A new step takes every default: what differs from an empty or zero default is stored, the rest removed.
TEST_F(ActionPages, NewStepStoresTheDefaults) {
    const struct {
        const wchar_t* page;
        Names removed;
        std::vector<Saved> written;
    } cases[] = {
        {L"WriteFileUI", {L"Filename", L"Text", L"Append", L"Encoding"}, {}},
        {L"WriteINIUI", {L"Filename", L"Section", L"ValueName", L"Delete", L"ValueData"}, {}},
        {L"WriteRegUI", {L"Computer", L"SubKey", L"ValueName", L"ValueData", L"DeleteValue"},
         {{L"RootKey", L"-2147483648"}, {L"ValueType", L"1"}}},
        {L"CopyFilesUI",
         {L"SourceDir", L"DestDir", L"Ext", L"ExclExt", L"Empty", L"Recurse", L"Flat", L"Purge", L"Move", L"MoveDirs"},
         {{L"Incremental", L"true"}}},
        {L"CopyFilesOptUI", {L"NoCopy", L"LogUpToDate", L"IgnoreSrc", L"Hidden", L"Archive", L"ClearArchive", L"ShortNames"},
         {{L"LogCopied", L"true"}, {L"Restartable", L"true"}, {L"ReadOnly", L"true"}, {L"TBD", L"true"},
          {L"Retries", L"\"10\""}, {L"Delay", L"\"15\""}}},
        {L"FileReplaceUI", {L"FileIn", L"FileOut", L"Find", L"Replace", L"Attr", L"CaseSensitive", L"Literal", L"Encoding"}, {}},
        {L"WaitUI", {L"WaitFor", L"Criteria"}, {}},
        {L"ServiceUI", {L"Computer", L"Service"}, {{L"Action", L"1"}}},
        {L"GACInstallUI", {L"Filename", L"Unregister", L"NGEN", L"Force", L"AssemblyFolder", L"ShowCmd"}, {}},
        {L"COMPlusAppUI", {L"Op", L"Computer", L"Application", L"Password"},
         {{L"Identity", L"\"Interactive User\""}, {L"Activation", L"1"}, {L"RunForever", L"1"}, {L"ShutdownAfter", L"\"3\""}}},
        {L"COMPlusCompUI", {L"Op", L"Computer", L"Application", L"Component", L"ComponentTransactionTimeout"},
         {{L"Transaction", L"1"}, {L"Synchronization", L"4"}, {L"JustInTimeActivation", L"true"}}},
        {L"COMPlusPropUI", {}, {{L"Props", L"[0]"}, {L"Values", L"[0]"}}},
        {L"ZipFilesUI", {L"Source", L"Ext", L"ExclExt", L"Dest", L"Recurse", L"NoPaths", L"PathInfo"}, {{L"Action", L"2"}}},
        {L"ZipFilesOptUI", {L"Archive", L"ClearArchive", L"ShortNames", L"SkipLocked", L"Delete", L"Grow", L"Comment"},
         {{L"Hidden", L"true"}, {L"LogDetail", L"true"}, {L"Compression", L"\"5\""}}},
        {L"UnzipFilesUI", {L"Source", L"Ext", L"Recurse", L"Dest", L"ShortNames", L"ReadOnly"},
         {{L"Action", L"2"}, {L"PathInfo", L"true"}, {L"LogDetail", L"true"}}},
    };
    for (const auto& c : cases) {
        PageHost host(c.page);
        host.Load(nullptr);
        PageStep step;
        host.page().Save(&step);
        EXPECT_EQ(step.removed, c.removed) << c.page;
        for (const auto& [name, value] : c.written) EXPECT_EQ(Describe(step, name), value) << c.page << " " << name;
    }
    EXPECT_FALSE(tol::CreatePropertyPage(L"WriteFile"));
}

// The step keeps registry root handle values and types; the controls show indexes. Unknown values and string
// overrides pass unchanged, except that any type but the first button's saves as REG_DWORD.
TEST_F(ActionPages, WriteRegistryMapsStoredValuesToIndexes) {
    const struct {
        long rootKey;
        const wchar_t* rootText; // a string override instead of the number
        long valueType;
        long shownRoot;
        int checkedType; // 0: neither button
        const wchar_t* savedRoot;
        const wchar_t* savedType;
    } cases[] = {
        {static_cast<long>(0x80000002), nullptr, 4, 2, 1058, L"-2147483646", L"4"},
        {static_cast<long>(0x80000001), nullptr, 1, 1, 1057, L"-2147483647", L"1"},
        {static_cast<long>(0x80000003), nullptr, 7, -1, 0, L"-2147483645", L"4"},
        {0, L"%ROOT%", 1, 0, 1057, L"\"%ROOT%\"", L"1"},
    };
    for (const auto& c : cases) {
        PageHost host(L"WriteRegUI");
        PageStep stored;
        stored.SetLong(L"RootKey", c.rootKey);
        stored.SetLong(L"ValueType", c.valueType);
        if (c.rootText) stored.SetText(L"RootKey", c.rootText);
        host.Load(&stored);
        EXPECT_EQ(host.Selection(1000), c.shownRoot) << c.savedRoot;
        EXPECT_EQ(host.Checked(1057), c.checkedType == 1057) << c.savedRoot;
        EXPECT_EQ(host.Checked(1058), c.checkedType == 1058) << c.savedRoot;
        PageStep step;
        host.page().Save(&step);
        EXPECT_EQ(Describe(step, L"RootKey"), c.savedRoot);
        EXPECT_EQ(Describe(step, L"ValueType"), c.savedType);
    }
}

struct Action {
    enum { Click, Select } kind;
    int id;
    int index = 0;
};

// The controls that each page's rules enable, and the Wait page's label, after a load and what the user does.
TEST_F(ActionPages, EnablingRulesAndLabelsFollowLoadsClicksAndSelections) {
    const std::vector<int> identity = {1026, 1027, 1072, 1073, 1028};
    const std::vector<int> appSettings = {1070, 1071, 1026, 1027, 1072, 1073, 1028};
    const std::vector<int> componentSettings = {1068, 1069, 1070, 1071, 1072, 1074, 1075, 1076, 1077, 1078, 1062, 1081};
    const wchar_t* const elapsed = L"Elapsed time (HH:MM:SS):";
    const struct {
        const wchar_t* page;
        std::vector<std::pair<const wchar_t*, long>> stored; // empty: a new step
        std::vector<Action> actions;
        std::vector<int> enabled, disabled;
        const wchar_t* waitLabel = nullptr;   // the Wait page's label (1031)
    } cases[] = {
        {L"WriteINIUI", {}, {}, {1002}, {}},
        {L"WriteINIUI", {}, {{Action::Click, 1031}}, {}, {1002}},
        {L"WriteRegUI", {}, {{Action::Click, 1031}}, {1008}, {1002, 1057, 1058}},
        {L"WriteRegUI", {{L"DeleteValue", 1}}, {{Action::Click, 1031}}, {1002, 1057, 1058}, {}},
        {L"CopyFilesUI", {}, {}, {}, {1043, 1044, 1051}},
        {L"CopyFilesUI", {}, {{Action::Click, 1042}, {Action::Click, 1049}}, {1043, 1044, 1051}, {}},
        {L"CopyFilesUI", {{L"Recurse", 1}}, {}, {1043, 1044}, {1051}},
        {L"CopyFilesOptUI", {{L"Archive", 1}}, {{Action::Click, 1051}}, {}, {1052}},
        {L"ZipFilesUI", {}, {}, {1085}, {1043}},
        {L"ZipFilesUI", {}, {{Action::Click, 1042}, {Action::Click, 1043}}, {1043}, {1085}},
        {L"ZipFilesUI", {}, {{Action::Click, 1042}, {Action::Click, 1043}, {Action::Click, 1042}}, {1085}, {1043}},
        {L"COMPlusAppUI", {}, {}, appSettings, {}},
        {L"COMPlusAppUI", {}, {{Action::Click, 1070}}, {1070, 1071}, identity},
        {L"COMPlusAppUI", {}, {{Action::Select, 1065, 1}}, {}, appSettings},
        {L"COMPlusAppUI", {{L"Activation", 0}}, {{Action::Select, 1065, 1}, {Action::Select, 1065, 0}}, {1070, 1071}, identity},
        {L"COMPlusCompUI", {}, {{Action::Select, 1065, 2}}, {1073, 1079, 1080, 1088}, componentSettings},
        {L"COMPlusCompUI", {{L"Op", 3}}, {{Action::Select, 1065, 1}}, componentSettings, {}},
        // The Wait label names the criteria of the checked button; with none checked, those of the first.
        {L"WaitUI", {}, {}, {}, {}, elapsed},
        {L"WaitUI", {}, {{Action::Click, 1029}}, {}, {}, L"Time or date/time (HH:MM or MM/DD/YYYY HH:MM):"},
        {L"WaitUI", {{L"WaitFor", 2}}, {}, {}, {}, L"Filename:"},
        {L"WaitUI", {{L"WaitFor", 2}}, {{Action::Click, 1028}}, {}, {}, elapsed},
        {L"WaitUI", {{L"WaitFor", 5}}, {}, {}, {}, elapsed},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        const auto& c = cases[i];
        PageHost host(c.page);
        PageStep stored;
        for (const auto& [name, value] : c.stored) stored.SetLong(name, value);
        host.Load(c.stored.empty() ? nullptr : &stored);
        for (const Action& action : c.actions) {
            if (action.kind == Action::Click) host.Click(action.id);
            else host.Select(action.id, action.index);
        }
        for (int id : c.enabled) EXPECT_TRUE(host.Enabled(id)) << "case " << i << ": " << id;
        for (int id : c.disabled) EXPECT_FALSE(host.Enabled(id)) << "case " << i << ": " << id;
        if (c.waitLabel) {
            EXPECT_EQ(host.Text(1031), c.waitLabel) << "case " << i;
        }
    }
}

TEST_F(ActionPages, ListsOfferTheirEntriesInOrder) {
    const struct {
        const wchar_t* page;
        int id;
        Names items;
    } cases[] = {
        {L"WriteRegUI", 1000, {L"HKEY_CLASSES_ROOT", L"HKEY_CURRENT_USER", L"HKEY_LOCAL_MACHINE"}},
        {L"COMPlusAppUI", 1065, {L"Create/Modify", L"Delete", L"Shutdown", L"Start"}},
        {L"COMPlusCompUI", 1065, {L"Add", L"Modify", L"Delete", L"Report"}},
        {L"ZipFilesUI", 1084, {L"Add", L"Freshen", L"Update"}},
        {L"UnzipFilesUI", 1084, {L"Extract", L"Freshen", L"Update"}},
    };
    for (const auto& c : cases) EXPECT_EQ(PageHost(c.page).ListItems(c.id), c.items) << c.page;
}

// "*" stands for every application: none can be created under it, nor can a component be added as "*".
TEST_F(ActionPages, ComPlusPagesRefuseStarNames) {
    const struct {
        const wchar_t* page;
        int operation;
        const wchar_t* application;
        const wchar_t* component; // null on the application page
        const wchar_t* message;   // null: accepted
    } cases[] = {
        {L"COMPlusAppUI", 0, L"*", nullptr, L"Velmora: Invalid application name."},
        {L"COMPlusAppUI", 1, L"*", nullptr, nullptr},
        {L"COMPlusAppUI", 0, L"Sales", nullptr, nullptr},
        {L"COMPlusCompUI", 0, L"Sales", L"*", L"Velmora: Invalid component name."},
        {L"COMPlusCompUI", 0, L"*", L"x.dll", L"Velmora: Invalid application name."},
        {L"COMPlusCompUI", 1, L"Sales", L"*", nullptr},
        {L"COMPlusCompUI", 3, L"*", L"*", nullptr},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        const auto& c = cases[i];
        PageHost host(c.page);
        host.Load(nullptr);
        host.Select(1065, c.operation);
        host.SetText(1080, c.application);
        if (c.component) host.SetText(1088, c.component);
        MessageBoxAnswerer boxes(IDOK);
        EXPECT_EQ(host.Validate(), c.message == nullptr) << "case " << i;
        EXPECT_EQ(boxes.texts, c.message ? Names{c.message} : Names{}) << "case " << i;
    }
}

// What the host's browse command offers for the focused field.
TEST_F(ActionPages, FieldsOfferTheirBrowseKindAndFilter) {
    const struct {
        const wchar_t* page;
        int id;
        long kind;
        const wchar_t* filter;
    } cases[] = {
        {L"WriteINIUI", 1020, 2, L"INI Files (*.ini)|*.ini|All Files (*.*)|*.*||"},
        {L"GACInstallUI", 1008, 2, L".NET Assemblies (*.dll)|*.dll||"},
        {L"COMPlusCompUI", 1088, 2, L"COM+ components (*.dll, *.ocx)|*.dll;*.ocx|All Files (*.*)|*.*||"},
        {L"ZipFilesUI", 1009, 2, L"ZIP files (*.zip)|*.zip|All Files (*.*)|*.*||"},
        {L"UnzipFilesUI", 1047, 2, L"ZIP files (*.zip)|*.zip|All Files (*.*)|*.*||"},
        {L"CopyFilesUI", 1047, 1, L""},
    };
    for (const auto& c : cases) {
        PageHost host(c.page);
        host.Load(nullptr);
        ::SetFocus(host.Item(c.id));
        PageHost::Pump();
        tol::com_ptr<IActionField> field = host.page().ActiveField();
        ASSERT_TRUE(field) << c.page << " " << c.id;
        long kind = -1;
        tol::bstr filter;
        ASSERT_EQ(field->GetBrowseKind(&kind), S_OK);
        ASSERT_EQ(field->GetBrowseFilter(filter.receive()), S_OK);
        EXPECT_EQ(std::to_wstring(kind) + L" " + filter.str(), std::to_wstring(c.kind) + L" " + c.filter)
            << c.page << " " << c.id;
    }
}

// The service list names the prefix's services by display name; leaving the computer field refills it and keeps a
// typed service.
TEST_F(ActionPages, ServiceListFollowsTheComputerField) {
    PageHost host(L"ServiceUI");
    host.Load(nullptr);
    auto listed = [&](const wchar_t* name) {
        const Names items = host.ListItems(1035);
        return std::find(items.begin(), items.end(), name) != items.end();
    };
    EXPECT_TRUE(listed(L"Plug and Play Service"));
    ::SendMessageW(host.Item(1035), CB_RESETCONTENT, 0, 0);
    host.SetText(1035, L"My Service");
    host.SetText(1034, L"localhost");
    ::SendMessageW(host.window(), WM_COMMAND, MAKEWPARAM(1034, CBN_KILLFOCUS), reinterpret_cast<LPARAM>(host.Item(1034)));
    EXPECT_TRUE(listed(L"Plug and Play Service"));
    EXPECT_EQ(host.Text(1035), L"My Service");
}

} // namespace
} // namespace test
