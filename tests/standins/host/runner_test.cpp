// The step loop with actions whose Execute does what each row says.
#include "build_run.h"
#include "host_doubles.h"
#include "host_object.h"
#include "host_test_support.h"
#include "runner.h"
#include "text.h"
#include "values.h"
#include "frame/step.h"
#include <gtest/gtest.h>
#include <functional>
#include <map>

using namespace host;

namespace {

using Body = std::function<HRESULT(IBuildRun* build, IBuildStep* step, long* status)>;

class ScriptedAction final : public test::StackObject<IBuildAction, ISupportErrorInfo> {
public:
    ScriptedAction(Body body, bool supportsErrorInfo = true) : body_(std::move(body)), supportsErrorInfo_(supportsErrorInfo) {}
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IBuildAction       ? static_cast<void*>(static_cast<IBuildAction*>(this))
                  : iid == IID_ISupportErrorInfo && supportsErrorInfo_ ? static_cast<ISupportErrorInfo*>(this)
                                                                       : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP Execute(IBuildRun* build, IBuildStep* step, long* status) override {
        ++calls;
        return body_(build, step, status);
    }
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override { return iid == IID_IBuildAction ? S_OK : S_FALSE; }
    int calls = 0;

private:
    Body body_;
    bool supportsErrorInfo_;
};

Body Answer(long status) {
    return [status](IBuildRun*, IBuildStep*, long* out) { return *out = status, S_OK; };
}

Body FailWith(HRESULT hr, const wchar_t* description) {
    return
        [=](IBuildRun*, IBuildStep*, long*) { return ::SetErrorInfo(0, MakeErrorInfo(IID_IBuildAction, description).get()), hr; };
}

struct Row {
    const wchar_t* action;
    const wchar_t* label = L"";
    bool disabled = false;
};

// Every step holds P = "%V%!".
std::vector<ScriptStep> Steps(const std::vector<Row>& rows) {
    std::vector<ScriptStep> steps;
    for (const Row& row : rows) {
        steps.push_back({row.label, row.action, row.disabled, {}});
        steps.back().properties.emplace(L"P", MakeText(L"%V%!"));
    }
    return steps;
}

class HostRunner : public testing::Test {
protected:
    int Run(const std::vector<Row>& rows) {
        const RunContext context{log, build.get(), stop.get(), expander, [this](const ScriptStep& step) {
                                     const auto found = actions.find(step.action);
                                     if (found == actions.end()) throw comet::com_error(REGDB_E_CLASSNOTREG);
                                     return tol::com_ptr<IBuildAction>(&found->second);
                                 }};
        return RunSteps(Steps(rows), context);
    }

    std::map<std::wstring, ScriptedAction> actions;
    hosttest::RecordingLog log;
    tol::unique_event stop{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    std::shared_ptr<const Expander> expander = std::make_shared<const Expander>(VariableMap{{L"V", L"value"}}, VariableMap{});
    tol::com_ptr<IBuildRun> build = MakeBuildRun(log, stop.get(), expander);
};

} // namespace

TEST_F(HostRunner, ReportsEachStepAndEndsAtTheFirstThatDoesNotSucceed) {
    for (long status : {0, 1, 2, 7}) actions.try_emplace(L"Status" + std::to_wstring(status), Answer(status));
    actions.try_emplace(L"Silent", [](IBuildRun*, IBuildStep*, long*) { return S_OK; });
    actions.try_emplace(L"Boom", FailWith(E_FAIL, L"boom\r\n"));
    actions.try_emplace(L"Denied", FailWith(E_ACCESSDENIED, L"stale"), false); // the error information is not its own
    actions.try_emplace(L"Echo", [](IBuildRun* build, IBuildStep* step, long* status) {
        tol::LogMessage(build, L"P=" + tol::GetStepText(step, build, L"P"));
        return *status = 0, S_OK;
    });
    const struct {
        std::vector<Row> steps;
        int exitCode;
        std::vector<std::wstring> lines;
    } rows[] = {
        {{{L"Status0", L"first"}, {L"Echo"}},
         0,
         {L"== Step 1: Status0 (first)", L"== Step 1 succeeded", L"== Step 2: Echo", L"P=value!", L"== Step 2 succeeded"}},
        {{{L"Status1", L"x", true}, {L"Status1"}, {L"Status0"}},
         1,
         {L"== Step 1: Status1 (x) skipped", L"== Step 2: Status1", L"== Step 2 failed"}},
        {{{L"Status2"}, {L"Status0"}}, 2, {L"== Step 1: Status2", L"== Step 1 stopped"}},
        {{{L"Status7"}},
         1,
         {L"== Step 1: Status7",
          L"error: the action answered status 7, which is none of 0 (succeeded), 1 (failed) and 2 (stopped)",
          L"== Step 1 failed"}},
        {{{L"Silent"}},
         1,
         {L"== Step 1: Silent", L"error: the action succeeded without answering a status", L"== Step 1 failed"}},
        {{{L"Boom"}}, 1, {L"== Step 1: Boom", L"error 0x80004005: boom", L"== Step 1 failed"}},
        {{{L"Denied"}}, 1, {L"== Step 1: Denied", L"error 0x80070005: " + SystemText(E_ACCESSDENIED), L"== Step 1 failed"}},
        {{{L"Missing"}},
         1,
         {L"== Step 1: Missing", L"error 0x80040154: cannot create the Missing action: " + SystemText(REGDB_E_CLASSNOTREG),
          L"== Step 1 failed"}},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        log.clear();
        EXPECT_EQ(Run(rows[i].steps), rows[i].exitCode) << "row " << i;
        EXPECT_EQ(log.lines(), rows[i].lines) << "row " << i;
    }
}

TEST_F(HostRunner, AStopBeforeAStepEndsTheRun) {
    const ScriptedAction& ok = actions.try_emplace(L"Ok", Answer(0)).first->second;
    ::SetEvent(stop.get());
    EXPECT_EQ(Run({{L"Ok", L"x", true}, {L"Ok"}}), kExitStopped);
    EXPECT_EQ(log.lines(), (std::vector<std::wstring>{L"== Step 1: Ok (x) skipped", L"== Stopped before step 2"}));
    EXPECT_EQ(ok.calls, 0);
}
