// COM+ Component through its action component against the catalog stand-in, with VelmoraExt.dll (27 classes in
// its type library) as the component DLL.
#include "support.h"
#include "VelmoraExt.h"
#include "frame/messages.h"

namespace complus_test {
namespace {

constexpr size_t kClasses = 27;
constexpr wchar_t kIni[] = L"VelmoraExt.WriteINIAction";
constexpr wchar_t kReg[] = L"VelmoraExt.WriteRegAction";

class ComponentTest : public ComPlusTest {
protected:
    // "Tools" (a server application with an account, with the DLL's classes when asked) and "Other" (a library
    // application); then the operation with settings that change nothing unless the test set them before.
    Outcome Run(bool installed, const std::wstring& application, const std::wstring& component, long op) {
        SeedApplications({{L"Tools", {{L"Identity", std::wstring(L"ci\\builder")}, {L"Password", std::wstring(L"s3cret")}}},
                          {L"Other", {{L"Activation", 0L}}}});
        if (installed) SeedComponents(L"Tools", ExtensionDll());
        step.SetText(L"Computer", L"");
        step.SetText(L"Application", application);
        step.SetText(L"Component", component);
        SetLong(step, L"Op", op);
        step.Set(L"JustInTimeActivation", tol::BoolVariant(true).release());
        return Execute(CLSID_COMPlusCompAction, &build, step);
    }
    void Settings(long transaction, const std::wstring& timeout) {
        SetLong(step, L"Transaction", transaction);
        SetLong(step, L"Synchronization", 5);
        step.SetText(L"ComponentTransactionTimeout", timeout);
    }
    test::TestStep step;
    test::TestBuild build;
};

// With a type library the whole Component text is the pattern of the settings, and it matches no component.
TEST_F(ComponentTest, AddInstallsEveryClassAndAppliesTheSettingsToTheMatches) {
    const std::wstring installing = L"Installing component '" + ExtensionDll() + L"'...";
    const std::wstring tlb = test::BinFolder() + L"\\..\\idl\\VelmoraExt.tlb";
    const std::pair<std::wstring, const wchar_t*> cases[] = {{ExtensionDll(), L"long 3"},
                                                             {ExtensionDll() + L";;" + tlb, L"long 1"}};
    for (const auto& [component, transaction] : cases) {
        SCOPED_TRACE(testing::PrintToString(component));
        build.log.clear();
        Settings(3, L"  90 seconds");
        const Outcome outcome = Run(false, L"Tools", component, 0);
        EXPECT_EQ(outcome.hr, S_OK) << std::hex << outcome.hr;
        EXPECT_EQ(outcome.status, 0);
        const Lines installed = SavedComponents(L"Tools");
        ASSERT_EQ(installed.size(), kClasses);
        const bool settings = transaction == std::wstring(L"long 3");
        EXPECT_EQ(build.log.size(), settings ? 1 + kClasses : 1) << "no summary line for Add";
        EXPECT_EQ(build.log[0], installing);
        if (settings) {
            EXPECT_EQ(build.log[1], L"Setting properties on component '" + installed[0] + L"'...");
            EXPECT_EQ(SavedValue(L"Tools", L"Synchronization", kReg), L"long 1");
            EXPECT_EQ(SavedValue(L"Tools", L"ComponentTransactionTimeout", kReg), L"long 90");
            EXPECT_EQ(SavedValue(L"Tools", L"JustInTimeActivation", kReg), L"bool true");
        }
        EXPECT_EQ(SavedValue(L"Tools", L"Transaction", kReg), transaction);
        EXPECT_TRUE(SavedComponents(L"Other").empty());
    }
}

// A failed installation logs one line per ErrorInfo entry and fails the step; a missing application or DLL fails
// the run with the message users see, before anything is logged.
TEST_F(ComponentTest, FailuresChangeNothingAndSayWhy) {
    const std::wstring missing = test::BinFolder() + L"\\no-such.dll";
    const std::wstring notFound = tol::SystemErrorText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    const std::wstring installing = L"Installing component '" + missing + L"'...";
    const struct {
        std::wstring application, component;
        long op;
        HRESULT hr;
        Lines log;
        std::wstring error;
    } cases[] = {
        {L"Tools", missing + L";" + missing + L".tlb", 0, S_OK, {installing, notFound, notFound}, L""},
        {L"Tools", L";;", 0, E_FAIL, {}, L"Invalid component name."},
        {L"Nowhere", ExtensionDll(), 2, E_FAIL, {}, L"Item 'Nowhere' not found in Applications collection."},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.error));
        build.log.clear();
        Settings(5, L"");
        const Outcome outcome = Run(false, c.application, c.component, c.op);
        EXPECT_EQ(outcome.hr, c.hr);
        EXPECT_EQ(outcome.status, c.hr == S_OK ? 1 : kGarbage);
        EXPECT_EQ(outcome.error, c.error);
        EXPECT_EQ(build.log, c.log);
        EXPECT_TRUE(SavedComponents(L"Tools").empty());
    }
}

TEST_F(ComponentTest, ModifyMatchesByNameOrByDllWithoutRegardToCase) {
    std::wstring upperDll = ExtensionDll();
    for (wchar_t& c : upperDll) c = static_cast<wchar_t>(::towupper(c));
    const struct {
        std::wstring pattern;
        long transaction;
        std::wstring timeout;
        size_t modified;
        std::wstring iniTransaction, iniTimeout; // afterwards; an empty timeout leaves it disabled
    } cases[] = {
        {L"velmoraext.writeiniaction", 0, L" -7x", 1, L"long 0", L"long -7"},
        {kIni, 5, L"", 1, L"long 1", L"long 60"},
        {upperDll, 2, L"soon", kClasses, L"long 2", L"long 0"},
        {L"VelmoraExt.Nothing", 2, L"", 0, L"long 1", L"long 60"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.pattern));
        build.log.clear();
        Settings(c.transaction, c.timeout);
        EXPECT_EQ(Run(true, L"Tools", c.pattern, 1).hr, S_OK);
        EXPECT_EQ(build.log.size(), c.modified + 1);
        EXPECT_EQ(build.log.back(), std::to_wstring(c.modified) + L" component(s) modified");
        EXPECT_EQ(SavedValue(L"Tools", L"Transaction", kIni), c.iniTransaction);
        const std::wstring enabled = c.timeout.empty() ? L"bool false" : L"bool true";
        EXPECT_EQ(SavedValue(L"Tools", L"ComponentTransactionTimeoutEnabled", kIni), enabled);
        EXPECT_EQ(SavedValue(L"Tools", L"ComponentTransactionTimeout", kIni), c.iniTimeout);
        EXPECT_EQ(SavedValue(L"Tools", L"Transaction", kReg), c.modified == kClasses ? L"long 2" : L"long 1");
    }
}

// Removing a component moves the next one into its index: every one of 27 adjacent matches must go.
TEST_F(ComponentTest, DeleteRemovesAdjacentMatchesAndShutsDownTheApplicationsThatLostSome) {
    const struct {
        std::wstring application, pattern;
        size_t deleted;
        long shutdowns; // of Tools; Other never has one
    } cases[] = {
        {L"Tools", ExtensionDll(), kClasses, 1},
        {L"Tools", kReg, 1, 1},
        {L"*", L"*", kClasses, 1},
        {L"Tools", L"nothing", 0, -1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.pattern));
        build.log.clear();
        EXPECT_EQ(Run(true, c.application, c.pattern, 2).hr, S_OK);
        ASSERT_EQ(build.log.size(), c.deleted + 1);
        EXPECT_EQ(build.log.back(), std::to_wstring(c.deleted) + L" component(s) deleted");
        EXPECT_EQ(SavedComponents(L"Tools").size(), kClasses - c.deleted);
        EXPECT_EQ(ServerState(L"Tools", L"Shutdowns"), c.shutdowns);
        EXPECT_EQ(ServerState(L"Other", L"Shutdowns"), -1);
    }
}

// Each displayed object: its label, "name = value" lines at the label's indent, then an empty line; no Password.
TEST_F(ComponentTest, ReportIndentsEachLevelAndNeverShowsThePassword) {
    ASSERT_EQ(Run(true, L"Tools", kIni, 3).hr, S_OK);
    Lines labels;
    size_t indent = 0;
    for (const std::wstring& line : build.log) {
        if (line.find(L" = ") == std::wstring::npos) {
            labels.push_back(line);
            indent = line.find_first_not_of(L' ');
            continue;
        }
        EXPECT_EQ(line.find_first_not_of(L' '), indent) << testing::PrintToString(line);
    }
    EXPECT_EQ(labels, (Lines{L"COMPUTER", L"", L"    APPLICATION", L"", L"        COMPONENT", L"", L"1 component(s) found"}));
    const Lines shown = {L"    Name = Tools", L"    Identity = ci\\builder", L"        DLL = " + ExtensionDll()};
    for (const std::wstring& line : shown) EXPECT_TRUE(LogMentions(build.log, line)) << testing::PrintToString(line);
    EXPECT_FALSE(LogMentions(build.log, L"Password"));
    EXPECT_FALSE(LogMentions(build.log, L"s3cret"));
}

} // namespace
} // namespace complus_test
