// COM+ Application through its action component against the catalog stand-in: what the log says and what a fresh
// catalog reads back afterwards.
#include "support.h"
#include "VelmoraExt.h"
#include "frame/messages.h"

namespace complus_test {
namespace {

using Seed = std::vector<std::pair<std::wstring, Properties>>;
using Expected = std::vector<std::pair<const wchar_t*, std::wstring>>; // property, its saved value

// A build whose stop event is signalled while it logs its nth line.
class StoppingBuild final : public test::StackObject<IBuildRun> {
public:
    explicit StoppingBuild(size_t nth) : nth_(nth) {}
    Lines log;
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IBuildRun ? static_cast<IBuildRun*>(this) : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP GetTextExpander(ITextExpander**) override { return E_NOTIMPL; }
    STDMETHODIMP RunCommandLine(BSTR, BSTR, VARIANT*, long, BSTR, long, long, VARIANT_BOOL, BSTR, long*) override {
        return E_NOTIMPL;
    }
    STDMETHODIMP LogMessage(BSTR text, VARIANT_BOOL) override {
        log.emplace_back(text ? text : L"");
        if (log.size() == nth_) ::SetEvent(stop_.get());
        return S_OK;
    }
    STDMETHODIMP GetStopEvent(long* event) override {
        *event = ::HandleToLong(stop_.get());
        return S_OK;
    }

private:
    size_t nth_;
    tol::unique_event stop_{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
};

class ApplicationTest : public ComPlusTest {
protected:
    // Seeds the catalog afresh, then runs the operation on the application.
    Outcome Run(IBuildRun* build, const Seed& seed, const std::wstring& application, long op, const wchar_t* computer = L"") {
        SeedApplications(seed);
        step.SetText(L"Computer", computer);
        step.SetText(L"Application", application);
        SetLong(step, L"Op", op);
        return Execute(CLSID_COMPlusAppAction, build, step);
    }
    test::TestStep step;
};

TEST_F(ApplicationTest, CreateAndModifyApplyTheIdentityRules) {
    const Seed account = {{L"Billing", {{L"Identity", std::wstring(L"ci\\builder")}, {L"Password", std::wstring(L"old")}}}};
    // The stand-in refuses a server application's account without its password: that it accepts one shows the
    // password was written.
    const struct {
        const char* name;
        Seed seed;
        std::wstring application;
        long activation;
        std::wstring identity, password;
        HRESULT hr;
        Expected saved; // of "Billing"
    } cases[] = {
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
    for (const auto& c : cases) {
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

// A text property shows the type the action chose: the catalog turns a boolean into "True" and an integer into
// its digits. A boolean or integer property refuses a text that is not one.
TEST_F(ApplicationTest, AdditionalValuesAreTypedByTheirText) {
    const struct {
        std::initializer_list<const wchar_t*> props, values;
        HRESULT hr;
        Expected saved; // of the library application "Typed"
    } cases[] = {
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
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(*c.values.begin()));
        test::TestBuild build;
        SetLong(step, L"Activation", 0);
        SetTexts(step, L"Props", c.props);
        SetTexts(step, L"Values", c.values);

        EXPECT_EQ(Run(&build, {}, L"Typed", 0).hr, c.hr);
        for (const auto& [property, value] : c.saved) EXPECT_EQ(SavedValue(L"Typed", property), value) << property;
    }
}

// "<verb> application '<name>'..." for each name, then the summary line when there is one.
Lines Logged(const wchar_t* verb, Lines names, const wchar_t* summary = nullptr) {
    for (std::wstring& name : names) name = verb + (L" application '" + name + L"'...");
    if (summary) names.push_back(summary);
    return names;
}

// Each row: the log, the applications left, and per seeded application its shutdowns (its starts for op 3).
TEST_F(ApplicationTest, DeleteShutdownAndStartReachOnlyTheApplicationsMeant) {
    const Seed seed = {{L"Lib", {{L"Activation", 0L}}}, {L"Srv1", {}}, {L"Kept", {{L"Deleteable", false}}}, {L"Srv2", {}}};
    const Lines all = {L"Lib", L"Srv1", L"Kept", L"Srv2"};
    const std::vector<long> none = {-1, -1, -1, -1};
    const struct {
        long op; // 1 delete, 2 shut down, 3 start
        std::wstring application;
        HRESULT hr;
        Lines log, remaining;
        std::vector<long> counts;
    } cases[] = {
        {1, L"*", S_OK, Logged(L"Deleting", {L"Lib", L"Srv1", L"Srv2"}, L"3 application(s) deleted"), {L"Kept"}, none},
        {1, L"srv1", S_OK, Logged(L"Deleting", {L"srv1"}), {L"Lib", L"Kept", L"Srv2"}, none},
        {1, L"Ghost", S_OK, Logged(L"Deleting", {L"Ghost"}), all, none},
        {1, L"Kept", COMADMIN_E_OBJECTERRORS, Logged(L"Deleting", {L"Kept"}), all, none},
        {2, L"*", S_OK, Logged(L"Shutting down", {L"Srv1", L"Kept", L"Srv2"}, L"3 application(s) shutdown"), all, {-1, 1, 1, 1}},
        {3, L"*", S_OK, Logged(L"Starting", {L"Srv1", L"Kept", L"Srv2"}, L"3 application(s) started"), all, {-1, 1, 1, 1}},
        {2, L"SRV2", S_OK, Logged(L"Shutting down", {L"SRV2"}), all, {-1, -1, -1, 1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::PrintToString(c.log[0]));
        test::TestBuild build;
        EXPECT_EQ(Run(&build, seed, c.application, c.op).hr, c.hr);
        EXPECT_EQ(build.log, c.log);
        EXPECT_EQ(SavedApplications(), c.remaining);
        for (size_t i = 0; i < all.size(); ++i)
            EXPECT_EQ(ServerState(all[i], c.op == 3 ? L"Starts" : L"Shutdowns"), c.counts[i]) << testing::PrintToString(all[i]);
    }
}

TEST_F(ApplicationTest, StopDuringEveryApplicationSavesTheRemovalsSoFar) {
    StoppingBuild build(2); // while deleting B
    const Outcome outcome = Run(&build, {{L"A", {}}, {L"B", {}}, {L"C", {}}}, L"*", 1);
    EXPECT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(build.log, Logged(L"Deleting", {L"A", L"B"}, L"2 application(s) deleted"));
    EXPECT_EQ(SavedApplications(), Lines{L"C"});
}

TEST_F(ApplicationTest, AnotherComputerIsRefusedBeforeAnythingChanges) {
    test::TestBuild build;
    const Outcome outcome = Run(&build, {{L"A", {}}}, L"*", 1, L"FARAWAY");
    EXPECT_EQ(outcome.hr, HRESULT_FROM_WIN32(ERROR_BAD_NETPATH));
    EXPECT_EQ(outcome.status, kGarbage);
    EXPECT_EQ(outcome.error, tol::SystemErrorText(HRESULT_FROM_WIN32(ERROR_BAD_NETPATH)));
    EXPECT_TRUE(build.log.empty());
    EXPECT_EQ(SavedApplications(), Lines{L"A"});
}

} // namespace
} // namespace complus_test
