// COM+ Application through its action component against the catalog stand-in: what the log says and what a fresh
// catalog reads back afterwards.
#include "support.h"
#include "VelmoraExt.h"
#include "frame/messages.h"

namespace complus_test {
namespace {

using Seed = std::vector<std::pair<std::wstring, Properties>>;
using Expected = std::vector<std::pair<const wchar_t*, std::wstring>>; // property, its saved value

class ApplicationTest : public ComPlusTest {
protected:
    // Seeds the catalog afresh, then runs the operation on the application.
    Outcome Run(IBuildRun* build, const Seed& seed, const std::wstring& application, long op) {
        ClearStore();
        SeedApplications(seed);
        step.SetText(L"Computer", L"");
        step.SetText(L"Application", application);
        SetLong(step, L"Op", op);
        return Execute(CLSID_COMPlusAppAction, build, step);
    }
    test::TestStep step;
};

struct ModifyCase {
    const char* name;
    Seed seed;
    std::wstring application;
    long activation;
    std::wstring identity, password;
    HRESULT hr;
    Expected saved; // of "Billing"
};

TEST_F(ApplicationTest, CreateAndModifyApplyTheIdentityRules) {
    const Seed account = {{L"Billing", {{L"Identity", std::wstring(L"ci\\builder")}, {L"Password", std::wstring(L"old")}}}};
    // The stand-in refuses a server application's account without its password: that it accepts one shows the
    // password was written.
    // clang-format off
    const ModifyCase cases[] = {
        {"new server application", {}, L"Billing", 1, L"Interactive User", L"", S_OK,
         {{L"Activation", L"long 1"}, {L"Identity", L"text Interactive User"}, {L"RunForever", L"bool true"},
          {L"ShutdownAfter", L"long 10"}}},
        {"new library application keeps the server defaults", {}, L"Billing", 0, L"ci\\builder", L"pw", S_OK,
         {{L"Activation", L"long 0"}, {L"Identity", L"text Interactive User"}, {L"RunForever", L"bool false"},
          {L"ShutdownAfter", L"long 3"}}},
        {"existing application found without regard to case", {{L"Billing", {}}}, L"BILLING", 1, L"Interactive User", L"",
         S_OK, {{L"Name", L"text Billing"}, {L"ShutdownAfter", L"long 10"}}},
        {"library application keeps the account set before", account, L"Billing", 0, L"ci\\other", L"new", S_OK,
         {{L"Identity", L"text ci\\builder"}}},
        {"server application runs as an account with its password", {}, L"Billing", 1, L"ci\\builder", L"s3cret", S_OK,
         {{L"Identity", L"text ci\\builder"}}},
        {"an account without its password is refused and nothing is saved", {}, L"Billing", 1, L"ci\\builder", L"",
         COMADMIN_E_OBJECTERRORS, {{L"Name", L"<none>"}}},
    };
    // clang-format on
    for (const ModifyCase& c : cases) {
        SCOPED_TRACE(c.name);
        test::TestBuild build;
        SetLong(step, L"Activation", c.activation);
        step.SetText(L"Identity", c.identity);
        step.SetText(L"Password", c.password);
        SetLong(step, L"RunForever", 0); // 0: run forever
        SetLong(step, L"ShutdownAfter", 10);

        const Outcome outcome = Run(&build, c.seed, c.application, 0);
        EXPECT_EQ(outcome.hr, c.hr) << std::hex << outcome.hr;
        EXPECT_EQ(outcome.status, c.hr == S_OK ? 0 : kGarbage);
        EXPECT_EQ(build.log.back(), L"Setting properties on application '" + c.application + L"'...");
        EXPECT_EQ(build.log.size(), c.seed.empty() ? 2u : 1u) << "a new application is logged as created";
        for (const auto& [property, value] : c.saved) EXPECT_EQ(SavedValue(L"Billing", property), value) << property;
        if (!c.password.empty()) {
            EXPECT_FALSE(LogMentions(build.log, c.password)) << "the password was logged";
            EXPECT_EQ(outcome.error.find(c.password), std::wstring::npos) << "the password is in the error";
        }
    }
}

struct TypingCase {
    std::initializer_list<const wchar_t*> props, values;
    HRESULT hr;
    Expected saved; // of the library application "Typed"
};

// A text property shows the type the action chose: the catalog turns a boolean into "True" and an integer into
// its digits. A boolean or integer property refuses a text that is not one.
TEST_F(ApplicationTest, AdditionalValuesAreTypedByTheirText) {
    // clang-format off
    const TypingCase cases[] = {
        {{L"Description"}, {L"S|0042"}, S_OK, {{L"Description", L"text 0042"}}},
        {{L"Description"}, {L"I|0042"}, S_OK, {{L"Description", L"text 42"}}},
        {{L"Description"}, {L"B|1"}, S_OK, {{L"Description", L"text True"}}},
        {{L"Description"}, {L"b|1"}, S_OK, {{L"Description", L"text 1"}}},
        {{L"Description"}, {L"x|"}, S_OK, {{L"Description", L"text x|"}}},
        {{L"QueuingEnabled", L"Description"}, {L"TRUE", L"FaLsE"}, S_OK,
         {{L"QueuingEnabled", L"bool true"}, {L"Description", L"text False"}}},
        {{L"Description", L"ShutdownAfter"}, {L"0042", L"-5"}, S_OK,
         {{L"Description", L"text 42"}, {L"ShutdownAfter", L"long -5"}}},
        {{L"Description", L"Identity"}, {L"5a", L"ab"}, S_OK, {{L"Description", L"text 5a"}, {L"Identity", L"text ab"}}},
        {{L"", L"Description", L"AccessChecksLevel"}, {L"S|lost", L"kept"}, S_OK,
         {{L"Description", L"text kept"}, {L"AccessChecksLevel", L"long 1"}}},
        {{L"Description"}, {L"1-2"}, DISP_E_TYPEMISMATCH, {{L"Description", L"<none>"}}},
    };
    // clang-format on
    for (const TypingCase& c : cases) {
        SCOPED_TRACE(testing::PrintToString(*c.values.begin()));
        test::TestBuild build;
        SetLong(step, L"Activation", 0);
        SetTexts(step, L"Props", c.props);
        SetTexts(step, L"Values", c.values);

        EXPECT_EQ(Run(&build, {}, L"Typed", 0).hr, c.hr);
        for (const auto& [property, value] : c.saved) EXPECT_EQ(SavedValue(L"Typed", property), value) << property;
    }
}

struct DeleteCase {
    std::wstring application;
    HRESULT hr;
    Lines log, remaining;
};

TEST_F(ApplicationTest, DeleteRemovesOnlyDeletableApplicationsThatMatch) {
    const Properties kept = {{L"Deleteable", false}};
    const Seed seed = {{L"A", {}}, {L"B", {}}, {L"Kept1", kept}, {L"C", {}}, {L"Kept2", kept}};
    const Lines all = {L"A", L"B", L"Kept1", L"C", L"Kept2"};
    // clang-format off
    const DeleteCase cases[] = {
        {L"*", S_OK, {L"Deleting application 'A'...", L"Deleting application 'B'...", L"Deleting application 'C'...",
                      L"3 application(s) deleted"}, {L"Kept1", L"Kept2"}},
        {L"b", S_OK, {L"Deleting application 'b'..."}, {L"A", L"Kept1", L"C", L"Kept2"}},
        {L"Ghost", S_OK, {L"Deleting application 'Ghost'..."}, all},
        {L"Kept1", COMADMIN_E_OBJECTERRORS, {L"Deleting application 'Kept1'..."}, all},
    };
    // clang-format on
    for (const DeleteCase& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.application));
        test::TestBuild build;
        EXPECT_EQ(Run(&build, seed, c.application, 1).hr, c.hr);
        EXPECT_EQ(build.log, c.log);
        EXPECT_EQ(SavedApplications(), c.remaining);
    }
}

struct ControlCase {
    long op;
    std::wstring application;
    Lines log;
    std::vector<long> counts; // per seeded application: Lib1, Srv1, Lib2, Srv2
};

TEST_F(ApplicationTest, ShutdownAndStartReachOnlyServerApplications) {
    const Seed seed = {{L"Lib1", {{L"Activation", 0L}}}, {L"Srv1", {}}, {L"Lib2", {{L"Activation", 0L}}}, {L"Srv2", {}}};
    // clang-format off
    const ControlCase cases[] = {
        {2, L"*", {L"Shutting down application 'Srv1'...", L"Shutting down application 'Srv2'...",
                         L"2 application(s) shutdown"}, {-1, 1, -1, 1}},
        {3, L"*", {L"Starting application 'Srv1'...", L"Starting application 'Srv2'...", L"2 application(s) started"},
         {-1, 1, -1, 1}},
        {2, L"SRV2", {L"Shutting down application 'SRV2'..."}, {-1, -1, -1, 1}},
    };
    // clang-format on
    const Lines seeded = {L"Lib1", L"Srv1", L"Lib2", L"Srv2"};
    for (const ControlCase& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.application));
        test::TestBuild build;
        EXPECT_EQ(Run(&build, seed, c.application, c.op).hr, S_OK);
        EXPECT_EQ(build.log, c.log);
        const wchar_t* counter = c.op == 2 ? L"Shutdowns" : L"Starts";
        for (size_t i = 0; i < seeded.size(); ++i) EXPECT_EQ(ServerState(seeded[i], counter), c.counts[i]) << i;
    }
}

TEST_F(ApplicationTest, StopDuringEveryApplicationSavesTheRemovalsSoFar) {
    StoppingBuild build(L"Deleting application", 2);
    const Outcome outcome = Run(&build, {{L"A", {}}, {L"B", {}}, {L"C", {}}}, L"*", 1);
    EXPECT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(build.log, (Lines{L"Deleting application 'A'...", L"Deleting application 'B'...", L"2 application(s) deleted"}));
    EXPECT_EQ(SavedApplications(), Lines{L"C"});
}

TEST_F(ApplicationTest, AnotherComputerIsRefusedBeforeAnythingChanges) {
    test::TestBuild build;
    step.SetText(L"Computer", L"FARAWAY");
    step.SetText(L"Application", L"*");
    SetLong(step, L"Op", 1);
    const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
    EXPECT_EQ(outcome.hr, HRESULT_FROM_WIN32(ERROR_BAD_NETPATH));
    EXPECT_EQ(outcome.status, kGarbage);
    EXPECT_EQ(outcome.error, tol::SystemErrorText(HRESULT_FROM_WIN32(ERROR_BAD_NETPATH)));
    EXPECT_TRUE(build.log.empty());
}

} // namespace
} // namespace complus_test
