// COM+ Application through its action component against the catalog stand-in: what the log says and what a fresh
// catalog reads back afterwards.
#include "support.h"
#include "VelmoraExt.h"

namespace complus_test {
namespace {

using Lines = std::vector<std::wstring>;
using Seed = std::vector<std::pair<std::wstring, Properties>>;
using Expected = std::vector<std::pair<const wchar_t*, std::wstring>>; // property, Describe() of its saved value

void SetApplicationStep(test::TestStep& step, const std::wstring& application, long op) {
    step.SetText(L"Computer", L"");
    step.SetText(L"Application", application);
    SetLong(step, L"Op", op);
}

class ApplicationTest : public ComPlusTest {};

struct ModifyCase {
    const char* name;
    Seed seed;
    std::wstring application;
    long activation;
    std::wstring identity, password;
    long runForever, shutdownAfter;
    HRESULT hr;
    Lines log;
    Expected saved;                // of the application named "Billing"
    const wchar_t* storedPassword; // what the catalog keeps; null: not checked
};

TEST_F(ApplicationTest, CreateAndModifyWriteActivationAndOnlyAServerApplicationsSettings) {
    const Lines created = {L"Creating application 'Billing'...", L"Setting properties on application 'Billing'..."};
    // clang-format off
    const ModifyCase cases[] = {
        {"new server application", {}, L"Billing", 1, L"Interactive User", L"", 0, 10, S_OK, created,
         {{L"Activation", L"long 1"}, {L"Identity", L"text Interactive User"}, {L"RunForever", L"bool true"},
          {L"ShutdownAfter", L"long 10"}, {L"Deleteable", L"bool true"}}, L""},
        {"new library application keeps the server defaults", {}, L"Billing", 0, L"ci\\builder", L"pw", 1, 9, S_OK, created,
         {{L"Activation", L"long 0"}, {L"Identity", L"text Interactive User"}, {L"RunForever", L"bool false"},
          {L"ShutdownAfter", L"long 3"}}, L""},
        {"existing application found without regard to case", {{L"Billing", {{L"ShutdownAfter", 5L}}}}, L"BILLING", 7,
         L"Interactive User", L"", 7, 20, S_OK, {L"Setting properties on application 'BILLING'..."},
         {{L"Name", L"text Billing"}, {L"Activation", L"long 1"}, {L"RunForever", L"bool false"},
          {L"ShutdownAfter", L"long 20"}}, nullptr},
        {"library application keeps the account set before",
         {{L"Billing", {{L"Identity", std::wstring(L"ci\\builder")}, {L"Password", std::wstring(L"old")}}}}, L"Billing", 0,
         L"ci\\other", L"new", 0, 1, S_OK, {L"Setting properties on application 'Billing'..."},
         {{L"Activation", L"long 0"}, {L"Identity", L"text ci\\builder"}, {L"RunForever", L"bool false"}}, L"old"},
        {"server application runs as an account with its password", {}, L"Billing", 1, L"ci\\builder", L"s3cret", 0, 3,
         S_OK, created, {{L"Identity", L"text ci\\builder"}, {L"Password", L"text ****************"}}, L"s3cret"},
        {"an account without its password is refused and nothing is saved", {}, L"Billing", 1, L"ci\\builder", L"", 0, 3,
         COMADMIN_E_OBJECTERRORS, created, {{L"Name", L"<no application>"}}, nullptr},
    };
    // clang-format on
    for (const ModifyCase& c : cases) {
        SCOPED_TRACE(c.name);
        ClearStore();
        SeedApplications(c.seed);
        test::TestStep step;
        test::TestBuild build;
        SetApplicationStep(step, c.application, 0);
        SetLong(step, L"Activation", c.activation);
        step.SetText(L"Identity", c.identity);
        step.SetText(L"Password", c.password);
        SetLong(step, L"RunForever", c.runForever);
        SetLong(step, L"ShutdownAfter", c.shutdownAfter);

        const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
        EXPECT_EQ(outcome.hr, c.hr) << std::hex << outcome.hr;
        EXPECT_EQ(outcome.status, c.hr == S_OK ? 0 : kGarbage);
        EXPECT_EQ(build.log, c.log);
        for (const auto& [property, value] : c.saved) EXPECT_EQ(SavedValue(L"Billing", property), value) << property;
        EXPECT_EQ(SavedApplications().size(), c.hr == S_OK ? 1u : 0u);
        if (c.storedPassword) {
            EXPECT_EQ(StoredText(L"Billing", L"Password"), c.storedPassword);
        }
        if (!c.password.empty()) {
            EXPECT_FALSE(LogMentions(build.log, c.password)) << "the password was logged";
            EXPECT_EQ(outcome.error.find(c.password), std::wstring::npos) << "the password is in the error";
        }
    }
}

struct TypingCase {
    const char* name;
    std::initializer_list<const wchar_t*> props, values;
    HRESULT hr;
    Expected saved; // of the library application "Typed"
};

// A text property shows the type the action chose: the catalog turns a boolean into "True" or "False" and an
// integer into its digits; a boolean or integer property refuses a text that is not one.
TEST_F(ApplicationTest, AdditionalValuesAreTypedByTheirText) {
    // clang-format off
    const TypingCase cases[] = {
        {"S| is a text", {L"Description"}, {L"S|x"}, S_OK, {{L"Description", L"text x"}}},
        {"I| is an integer", {L"Description"}, {L"I|0042"}, S_OK, {{L"Description", L"text 42"}}},
        {"B| is a boolean", {L"Description"}, {L"B|1"}, S_OK, {{L"Description", L"text True"}}},
        {"B|0 on a boolean", {L"ApplicationAccessChecksEnabled"}, {L"B|0"}, S_OK,
         {{L"ApplicationAccessChecksEnabled", L"bool false"}}},
        {"I| on an integer", {L"AccessChecksLevel"}, {L"I|0"}, S_OK, {{L"AccessChecksLevel", L"long 0"}}},
        {"lower-case selector keeps a text without its prefix", {L"Description"}, {L"b|1"}, S_OK, {{L"Description", L"text 1"}}},
        {"two characters are no prefix", {L"Description"}, {L"x|"}, S_OK, {{L"Description", L"text x|"}}},
        {"true is a boolean", {L"Description"}, {L"true"}, S_OK, {{L"Description", L"text True"}}},
        {"FALSE in any case is a boolean", {L"QueuingEnabled", L"Description"}, {L"TRUE", L"FaLsE"}, S_OK,
         {{L"QueuingEnabled", L"bool true"}, {L"Description", L"text False"}}},
        {"digits are an integer", {L"Description"}, {L"0042"}, S_OK, {{L"Description", L"text 42"}}},
        {"a negative number is an integer", {L"ShutdownAfter"}, {L"-5"}, S_OK, {{L"ShutdownAfter", L"long -5"}}},
        {"5a and ab are texts", {L"Description", L"Identity"}, {L"5a", L"ab"}, S_OK,
         {{L"Description", L"text 5a"}, {L"Identity", L"text ab"}}},
        {"an empty name is skipped", {L"", L"Description"}, {L"S|lost", L"kept"}, S_OK, {{L"Description", L"text kept"}}},
        {"a name without a value is skipped", {L"Description", L"AccessChecksLevel"}, {L"only"}, S_OK,
         {{L"Description", L"text only"}, {L"AccessChecksLevel", L"long 1"}}},
        {"1-2 is no integer: the step fails and nothing is saved", {L"Description"}, {L"1-2"}, DISP_E_TYPEMISMATCH,
         {{L"Description", L"<no application>"}}},
        {"a boolean property refuses a text", {L"QueuingEnabled"}, {L"S|maybe"}, DISP_E_TYPEMISMATCH,
         {{L"QueuingEnabled", L"<no application>"}}},
    };
    // clang-format on
    for (const TypingCase& c : cases) {
        SCOPED_TRACE(c.name);
        ClearStore();
        test::TestStep step;
        test::TestBuild build;
        SetApplicationStep(step, L"Typed", 0);
        SetLong(step, L"Activation", 0);
        SetTexts(step, L"Props", c.props);
        SetTexts(step, L"Values", c.values);

        const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
        EXPECT_EQ(outcome.hr, c.hr) << std::hex << outcome.hr;
        for (const auto& [property, value] : c.saved) EXPECT_EQ(SavedValue(L"Typed", property), value) << property;
    }
}

TEST_F(ApplicationTest, DeleteEveryApplicationRemovesAdjacentDeletableOnesAndKeepsTheOthers) {
    SeedApplications({{L"A", {}},
                      {L"B", {}},
                      {L"Kept1", {{L"Deleteable", false}}},
                      {L"C", {}},
                      {L"D", {}},
                      {L"Kept2", {{L"Deleteable", false}}}});
    test::TestStep step;
    test::TestBuild build;
    SetApplicationStep(step, L"*", 1);

    const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
    EXPECT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(build.log, (Lines{L"Deleting application 'A'...", L"Deleting application 'B'...", L"Deleting application 'C'...",
                                L"Deleting application 'D'...", L"4 application(s) deleted"}));
    EXPECT_EQ(SavedApplications(), (Lines{L"Kept1", L"Kept2"}));
}

struct DeleteOneCase {
    const char* name;
    std::wstring application;
    HRESULT hr;
    Lines remaining;
};

TEST_F(ApplicationTest, DeleteOneApplicationByName) {
    const DeleteOneCase cases[] = {
        {"named without regard to case", L"billing", S_OK, {L"Kept"}},
        {"a missing application is no error", L"Ghost", S_OK, {L"Billing", L"Kept"}},
        {"the catalog refuses one that is not deleteable", L"Kept", COMADMIN_E_OBJECTERRORS, {L"Billing", L"Kept"}},
    };
    for (const DeleteOneCase& c : cases) {
        SCOPED_TRACE(c.name);
        ClearStore();
        SeedApplications({{L"Billing", {}}, {L"Kept", {{L"Deleteable", false}}}});
        test::TestStep step;
        test::TestBuild build;
        SetApplicationStep(step, c.application, 1);

        const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
        EXPECT_EQ(outcome.hr, c.hr) << std::hex << outcome.hr;
        EXPECT_EQ(build.log, Lines{L"Deleting application '" + c.application + L"'..."}); // no summary for one
        EXPECT_EQ(SavedApplications(), c.remaining);
    }
}

struct ControlCase {
    const char* name;
    long op;
    std::wstring application;
    HRESULT hr;
    Lines log;
    const wchar_t* counter;   // the stand-in's count of the operation
    std::vector<long> counts; // per seeded application: Lib1, Srv1, Lib2, Srv2
};

TEST_F(ApplicationTest, ShutdownAndStartReachOnlyServerApplications) {
    // clang-format off
    const ControlCase cases[] = {
        {"shutdown of every application", 2, L"*", S_OK,
         {L"Shutting down application 'Srv1'...", L"Shutting down application 'Srv2'...", L"2 application(s) shutdown"},
         L"Shutdowns", {-1, 1, -1, 1}},
        {"start of every application", 3, L"*", S_OK,
         {L"Starting application 'Srv1'...", L"Starting application 'Srv2'...", L"2 application(s) started"},
         L"Starts", {-1, 1, -1, 1}},
        {"shutdown of one, by the name as given", 2, L"SRV2", S_OK, {L"Shutting down application 'SRV2'..."},
         L"Shutdowns", {-1, -1, -1, 1}},
        {"start of one that does not exist", 3, L"Ghost", COMADMIN_E_OBJECT_DOES_NOT_EXIST,
         {L"Starting application 'Ghost'..."}, L"Starts", {-1, -1, -1, -1}},
        {"start of a library application", 3, L"Lib1", COMADMIN_E_CAN_NOT_START_APP, {L"Starting application 'Lib1'..."},
         L"Starts", {-1, -1, -1, -1}},
    };
    // clang-format on
    const Lines seeded = {L"Lib1", L"Srv1", L"Lib2", L"Srv2"};
    for (const ControlCase& c : cases) {
        SCOPED_TRACE(c.name);
        ClearStore();
        SeedApplications({{L"Lib1", {{L"Activation", 0L}}}, {L"Srv1", {}}, {L"Lib2", {{L"Activation", 0L}}}, {L"Srv2", {}}});
        test::TestStep step;
        test::TestBuild build;
        SetApplicationStep(step, c.application, c.op);

        const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
        EXPECT_EQ(outcome.hr, c.hr) << std::hex << outcome.hr;
        EXPECT_EQ(build.log, c.log);
        for (size_t i = 0; i < seeded.size(); ++i) EXPECT_EQ(ServerState(seeded[i], c.counter), c.counts[i]) << seeded[i];
        if (c.hr != S_OK) {
            EXPECT_FALSE(outcome.error.empty()) << "the catalog's error information is lost";
        }
    }
}

TEST_F(ApplicationTest, StopDuringEveryApplicationSavesTheRemovalsSoFarAndReportsThem) {
    SeedApplications({{L"A", {}}, {L"B", {}}, {L"C", {}}, {L"D", {}}});
    test::TestStep step;
    StoppingBuild build(L"Deleting application", 2);
    SetApplicationStep(step, L"*", 1);

    const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
    EXPECT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(build.log, (Lines{L"Deleting application 'A'...", L"Deleting application 'B'...", L"2 application(s) deleted"}));
    EXPECT_EQ(SavedApplications(), (Lines{L"C", L"D"}));
}

TEST_F(ApplicationTest, StopDuringEveryShutdownEndsTheLoop) {
    SeedApplications({{L"A", {}}, {L"B", {}}, {L"C", {}}});
    test::TestStep step;
    StoppingBuild build(L"Shutting down", 1);
    SetApplicationStep(step, L"*", 2);

    const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(build.log, (Lines{L"Shutting down application 'A'...", L"1 application(s) shutdown"}));
    EXPECT_EQ(ServerState(L"B", L"Shutdowns"), -1);
}

struct RefusedCase {
    const char* name;
    std::wstring computer;
    long op;
    HRESULT hr;
    std::wstring error;
};

TEST_F(ApplicationTest, RefusedRunsChangeNothingAndLogNothing) {
    const RefusedCase cases[] = {
        {"another computer", L"FARAWAY", 0, HRESULT_FROM_WIN32(ERROR_BAD_NETPATH),
         SystemText(HRESULT_FROM_WIN32(ERROR_BAD_NETPATH))},
        {"an operation the page never stores", L"", 4, E_INVALIDARG, L""},
        {"a negative operation", L"", -1, E_INVALIDARG, L""},
    };
    for (const RefusedCase& c : cases) {
        SCOPED_TRACE(c.name);
        test::TestStep step;
        test::TestBuild build;
        SetApplicationStep(step, L"*", c.op);
        step.SetText(L"Computer", c.computer);

        const Outcome outcome = Execute(CLSID_COMPlusAppAction, &build, step);
        EXPECT_EQ(outcome.hr, c.hr) << std::hex << outcome.hr;
        EXPECT_EQ(outcome.status, kGarbage);
        if (!c.error.empty()) {
            EXPECT_EQ(outcome.error, c.error);
        }
        EXPECT_TRUE(build.log.empty());
    }
}

} // namespace
} // namespace complus_test
