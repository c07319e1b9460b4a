// COM+ Component through its action component against the catalog stand-in, with VelmoraExt.dll (27 classes in
// its type library) as the component DLL.
#include "support.h"
#include "VelmoraExt.h"

namespace complus_test {
namespace {

using Lines = std::vector<std::wstring>;
constexpr size_t kClasses = 27;
constexpr wchar_t kIni[] = L"VelmoraExt.WriteINIAction";
constexpr wchar_t kReg[] = L"VelmoraExt.WriteRegAction";

// "Tools" (a server application) and "Other" (a library application), neither with components.
void SeedTwoApplications() {
    SeedApplications({{L"Tools", {{L"Identity", std::wstring(L"ci\\builder")}, {L"Password", std::wstring(L"s3cret")}}},
                      {L"Other", {{L"Activation", 0L}}}});
}

// Settings that change nothing unless a row says otherwise.
void SetComponentStep(test::TestStep& step, const std::wstring& application, const std::wstring& component, long op) {
    step.SetText(L"Computer", L"");
    step.SetText(L"Application", application);
    step.SetText(L"Component", component);
    SetLong(step, L"Op", op);
    SetLong(step, L"Transaction", 5);
    SetLong(step, L"Synchronization", 5);
    step.SetText(L"ComponentTransactionTimeout", L"");
    SetBool(step, L"JustInTimeActivation", false);
}

Lines SettingLines(const Lines& names) {
    Lines lines;
    for (const std::wstring& name : names) lines.push_back(L"Setting properties on component '" + name + L"'...");
    return lines;
}

class ComponentTest : public ComPlusTest {};

TEST_F(ComponentTest, AddWithoutTypeLibraryInstallsEveryClassAndAppliesTheSettings) {
    SeedTwoApplications();
    const std::wstring dll = ExtensionDll();
    test::TestStep step;
    test::TestBuild build;
    SetComponentStep(step, L"Tools", dll, 0);
    SetLong(step, L"Transaction", 3);
    step.SetText(L"ComponentTransactionTimeout", L"  90 seconds");
    SetBool(step, L"JustInTimeActivation", true);

    const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
    ASSERT_EQ(outcome.hr, S_OK) << std::hex << outcome.hr;
    EXPECT_EQ(outcome.status, 0);
    const Lines components = SavedComponents(L"Tools");
    ASSERT_EQ(components.size(), kClasses);
    Lines expected = {L"Installing component '" + dll + L"'..."};
    for (const std::wstring& line : SettingLines(components)) expected.push_back(line); // no summary line for Add
    EXPECT_EQ(build.log, expected);
    EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"DLL"), L"text " + dll);
    EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"Transaction"), L"long 3");
    EXPECT_EQ(SavedComponentValue(L"Tools", kReg, L"Synchronization"), L"long 1"); // 5: left as it was
    EXPECT_EQ(SavedComponentValue(L"Tools", kReg, L"ComponentTransactionTimeoutEnabled"), L"bool true");
    EXPECT_EQ(SavedComponentValue(L"Tools", kReg, L"ComponentTransactionTimeout"), L"long 90");
    EXPECT_EQ(SavedComponentValue(L"Tools", kReg, L"JustInTimeActivation"), L"bool true");
    EXPECT_TRUE(SavedComponents(L"Other").empty());
}

TEST_F(ComponentTest, AddWithTypeLibraryInstallsButTheWholeTextMatchesNoComponent) {
    SeedTwoApplications();
    const std::wstring dll = ExtensionDll();
    test::TestStep step;
    test::TestBuild build;
    SetComponentStep(step, L"Tools", dll + L";;" + ExtensionTypeLibrary(), 0);
    SetLong(step, L"Transaction", 3);

    const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
    ASSERT_EQ(outcome.hr, S_OK) << std::hex << outcome.hr;
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(build.log, Lines{L"Installing component '" + dll + L"'..."});
    EXPECT_EQ(SavedComponents(L"Tools").size(), kClasses);
    EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"DLL"), L"text " + dll);
    EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"Transaction"), L"long 1");
}

struct FailedAddCase {
    const char* name;
    std::wstring application, component;
    HRESULT hr;
    long status;
    Lines log;
};

// A failed installation is reported from the ErrorInfo collection (one line per entry, or the result's text when
// there is none), and fails the step without a summary.
TEST_F(ComponentTest, FailedAddReportsTheCatalogErrors) {
    const std::wstring missing = BinFolder() + L"\\no-such.dll";
    const std::wstring notFound = SystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
    // clang-format off
    const FailedAddCase cases[] = {
        {"a DLL that is not there", L"Tools", missing, S_OK, 1,
         {L"Installing component '" + missing + L"'...", notFound}},
        {"a DLL and a type library that are not there", L"Tools", missing + L";" + missing + L".tlb", S_OK, 1,
         {L"Installing component '" + missing + L"'...", notFound, notFound}},
        {"every application is no application to install into", L"*", ExtensionDll(), S_OK, 1,
         {L"Installing component '" + ExtensionDll() + L"'...", SystemText(COMADMIN_E_OBJECT_DOES_NOT_EXIST)}},
        {"no DLL at all", L"Tools", L";;", E_FAIL, kGarbage, {}},
    };
    // clang-format on
    for (const FailedAddCase& c : cases) {
        SCOPED_TRACE(c.name);
        ClearStore();
        SeedTwoApplications();
        test::TestStep step;
        test::TestBuild build;
        SetComponentStep(step, c.application, c.component, 0);

        const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
        EXPECT_EQ(outcome.hr, c.hr) << std::hex << outcome.hr;
        EXPECT_EQ(outcome.status, c.status);
        EXPECT_EQ(build.log, c.log);
        if (c.hr == E_FAIL) {
            EXPECT_EQ(outcome.error, L"Invalid component name.");
        }
        EXPECT_TRUE(SavedComponents(L"Tools").empty());
    }
}

TEST_F(ComponentTest, FailedAddOfADllWithoutTypeLibraryLogsItsEntry) {
    SeedTwoApplications();
    test::TestStep step;
    test::TestBuild build;
    SetComponentStep(step, L"Tools", StandInDll(), 0);

    const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
    EXPECT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(build.log, (Lines{L"Installing component '" + StandInDll() + L"'...",
                                SystemText(HRESULT_FROM_WIN32(ERROR_RESOURCE_TYPE_NOT_FOUND))}));
    EXPECT_TRUE(SavedComponents(L"Tools").empty());
}

struct ModifyCase {
    const char* name;
    std::wstring application, pattern;
    long transaction;
    std::wstring timeout;
    Lines modified; // the components with a setting line, in order; every one for the DLL row
    std::wstring iniTransaction, iniTimeoutEnabled, iniTimeout; // WriteINIAction afterwards
};

TEST_F(ComponentTest, ModifyMatchesByNameOrByDllWithoutRegardToCase) {
    std::wstring upperDll = ExtensionDll();
    for (wchar_t& c : upperDll) c = static_cast<wchar_t>(::towupper(c));
    // clang-format off
    const ModifyCase cases[] = {
        {"one component by name", L"Tools", L"velmoraext.writeiniaction", 0, L"60", {kIni},
         L"long 0", L"bool true", L"long 60"},
        {"a transaction of 5 and an empty timeout leave them", L"Tools", kIni, 5, L"", {kIni},
         L"long 1", L"bool false", L"long 60"},
        {"a timeout is its leading number", L"Tools", kIni, 4, L" -7x", {kIni}, L"long 4", L"bool true", L"long -7"},
        {"a timeout without a number is 0", L"Tools", kIni, 2, L"soon", {kIni}, L"long 2", L"bool true", L"long 0"},
        {"every component of the DLL", L"Tools", upperDll, 2, L"", {}, L"long 2", L"bool false", L"long 60"},
        {"no match is no error", L"Tools", L"VelmoraExt.Nothing", 2, L"", {}, L"long 1", L"bool false", L"long 60"},
    };
    // clang-format on
    for (const ModifyCase& c : cases) {
        SCOPED_TRACE(c.name);
        ClearStore();
        SeedTwoApplications();
        SeedComponents(L"Tools", ExtensionDll());
        const Lines all = SavedComponents(L"Tools");
        const Lines modified = c.pattern == upperDll ? all : c.modified;
        test::TestStep step;
        test::TestBuild build;
        SetComponentStep(step, c.application, c.pattern, 1);
        SetLong(step, L"Transaction", c.transaction);
        step.SetText(L"ComponentTransactionTimeout", c.timeout);

        const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
        EXPECT_EQ(outcome.hr, S_OK) << std::hex << outcome.hr;
        Lines expected = SettingLines(modified);
        expected.push_back(std::to_wstring(modified.size()) + L" component(s) modified");
        EXPECT_EQ(build.log, expected);
        EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"Transaction"), c.iniTransaction);
        EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"ComponentTransactionTimeoutEnabled"), c.iniTimeoutEnabled);
        EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"ComponentTransactionTimeout"), c.iniTimeout);
        EXPECT_EQ(SavedComponentValue(L"Tools", kReg, L"Transaction"), c.pattern == upperDll ? L"long 2" : L"long 1");
    }
}

TEST_F(ComponentTest, ModifyWritesAdditionalPropertiesOnEachMatch) {
    SeedTwoApplications();
    SeedComponents(L"Tools", ExtensionDll());
    test::TestStep step;
    test::TestBuild build;
    SetComponentStep(step, L"Tools", kIni, 1);
    SetTexts(step, L"Props", {L"ConstructionEnabled", L"ConstructorString", L"MaxPoolSize"});
    SetTexts(step, L"Values", {L"true", L"S|dsn=build", L"12"});

    EXPECT_EQ(Execute(CLSID_COMPlusCompAction, &build, step).hr, S_OK);
    EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"ConstructionEnabled"), L"bool true");
    EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"ConstructorString"), L"text dsn=build");
    EXPECT_EQ(SavedComponentValue(L"Tools", kIni, L"MaxPoolSize"), L"long 12");
    EXPECT_EQ(SavedComponentValue(L"Tools", kReg, L"ConstructionEnabled"), L"bool false");
}

struct DeleteCase {
    const char* name;
    std::wstring application, pattern;
    size_t deleted;
    long toolsShutdowns, otherShutdowns;
};

// Removing a component moves the next one into its index: every one of 27 adjacent matches must go.
TEST_F(ComponentTest, DeleteRemovesAdjacentMatchesAndShutsDownTheApplicationsThatLostSome) {
    const DeleteCase cases[] = {
        {"every component of the DLL", L"Tools", ExtensionDll(), kClasses, 1, -1},
        {"one component by name", L"Tools", kReg, 1, 1, -1},
        {"every component of every application", L"*", L"*", kClasses, 1, -1},
        {"no match: nothing saved, no shutdown", L"Tools", L"nothing", 0, -1, -1},
    };
    for (const DeleteCase& c : cases) {
        SCOPED_TRACE(c.name);
        ClearStore();
        SeedTwoApplications();
        SeedComponents(L"Tools", ExtensionDll());
        test::TestStep step;
        test::TestBuild build;
        SetComponentStep(step, c.application, c.pattern, 2);

        const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
        EXPECT_EQ(outcome.hr, S_OK) << std::hex << outcome.hr;
        ASSERT_EQ(build.log.size(), c.deleted + 1);
        EXPECT_EQ(build.log.back(), std::to_wstring(c.deleted) + L" component(s) deleted");
        EXPECT_EQ(SavedComponents(L"Tools").size(), kClasses - c.deleted);
        EXPECT_EQ(ServerState(L"Tools", L"Shutdowns"), c.toolsShutdowns);
        EXPECT_EQ(ServerState(L"Other", L"Shutdowns"), c.otherShutdowns);
    }
}

// The lines of one displayed object: the label, then "name = value" lines at the same indent, then an empty line.
void ExpectBlock(const Lines& log, size_t& at, const std::wstring& indent, const std::wstring& label) {
    ASSERT_LT(at, log.size());
    EXPECT_EQ(log[at], indent + label);
    for (++at; at < log.size() && !log[at].empty(); ++at) {
        EXPECT_EQ(log[at].compare(0, indent.size(), indent), 0) << "line " << at;
        EXPECT_NE(log[at][indent.size()], L' ') << "line " << at << " is indented too far";
        EXPECT_NE(log[at].find(L" = "), std::wstring::npos) << "line " << at;
    }
    ASSERT_LT(at, log.size()) << "no empty line after " << label.size();
    ++at;
}

TEST_F(ComponentTest, ReportIndentsEachLevelAndNeverShowsThePassword) {
    SeedTwoApplications();
    SeedComponents(L"Tools", ExtensionDll());
    test::TestStep step;
    test::TestBuild build;
    SetComponentStep(step, L"Tools", kIni, 3);

    const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
    ASSERT_EQ(outcome.hr, S_OK) << std::hex << outcome.hr;
    size_t at = 0;
    ExpectBlock(build.log, at, L"", L"COMPUTER");
    ExpectBlock(build.log, at, L"    ", L"APPLICATION");
    ExpectBlock(build.log, at, L"        ", L"COMPONENT");
    ASSERT_EQ(at + 1, build.log.size());
    EXPECT_EQ(build.log[at], L"1 component(s) found");

    for (const wchar_t* line : {L"    Name = Tools", L"    Activation = 1", L"    Identity = ci\\builder",
                                L"        ProgID = VelmoraExt.WriteINIAction", L"        Transaction = 1"}) {
        EXPECT_TRUE(LogMentions(build.log, line)) << "missing: " << std::string(line, line + wcslen(line));
    }
    EXPECT_TRUE(LogMentions(build.log, L"        DLL = " + ExtensionDll()));
    EXPECT_FALSE(LogMentions(build.log, L"Password"));
    EXPECT_FALSE(LogMentions(build.log, L"s3cret"));
}

TEST_F(ComponentTest, ReportOfEveryApplicationShowsEachWithItsMatches) {
    SeedTwoApplications();
    SeedComponents(L"Tools", ExtensionDll());
    test::TestStep step;
    test::TestBuild build;
    SetComponentStep(step, L"*", ExtensionDll(), 3);

    EXPECT_EQ(Execute(CLSID_COMPlusCompAction, &build, step).hr, S_OK);
    Lines labels;
    for (const std::wstring& line : build.log) {
        if (!line.empty() && line.find(L" = ") == std::wstring::npos) labels.push_back(line);
    }
    Lines expected = {L"COMPUTER", L"    APPLICATION"};
    for (size_t i = 0; i < kClasses; ++i) expected.push_back(L"        COMPONENT");
    expected.push_back(L"    APPLICATION");
    expected.push_back(L"27 component(s) found");
    EXPECT_EQ(labels, expected);
}

TEST_F(ComponentTest, AMissingApplicationFailsEveryOperationWithItsMessage) {
    for (long op = 0; op <= 3; ++op) {
        SCOPED_TRACE(op);
        ClearStore();
        SeedTwoApplications();
        test::TestStep step;
        test::TestBuild build;
        SetComponentStep(step, L"Nowhere", ExtensionDll(), op);

        const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
        EXPECT_EQ(outcome.hr, E_FAIL);
        EXPECT_EQ(outcome.status, kGarbage);
        EXPECT_EQ(outcome.error, L"Item 'Nowhere' not found in Applications collection.");
        EXPECT_TRUE(build.log.empty());
        EXPECT_TRUE(SavedComponents(L"Tools").empty());
    }
}

TEST_F(ComponentTest, StopDuringEveryComponentSavesWhatWasModified) {
    SeedTwoApplications();
    SeedComponents(L"Tools", ExtensionDll());
    const Lines components = SavedComponents(L"Tools");
    test::TestStep step;
    StoppingBuild build(L"Setting properties on component", 3);
    SetComponentStep(step, L"*", L"*", 1);
    SetLong(step, L"Transaction", 4);

    const Outcome outcome = Execute(CLSID_COMPlusCompAction, &build, step);
    EXPECT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(outcome.status, 2);
    Lines expected = SettingLines({components[0], components[1], components[2]});
    expected.push_back(L"3 component(s) modified");
    EXPECT_EQ(build.log, expected);
    for (size_t i = 0; i < components.size(); ++i)
        EXPECT_EQ(SavedComponentValue(L"Tools", components[i], L"Transaction"), i < 3 ? L"long 4" : L"long 1") << i;
}

} // namespace
} // namespace complus_test
