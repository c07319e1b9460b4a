// The step loop with actions that answer what each row says; the exit codes and messages of real actions are in
// run_test.cpp.
#include "host_doubles.h"
#include "host_object.h"
#include "host_test_support.h"
#include "runner.h"
#include "text.h"
#include "frame/step.h"
#include <gtest/gtest.h>

using namespace host;

namespace {

constexpr long kNoStatus = -99;

// Fails with hr and leaves description as error information, or else answers status (kNoStatus: none).
class ScriptedAction final : public test::StackObject<IBuildAction, ISupportErrorInfo> {
public:
    ScriptedAction(long status, HRESULT hr = S_OK, const wchar_t* description = L"", bool supportsErrorInfo = true)
        : status_(status), hr_(hr), description_(description), supportsErrorInfo_(supportsErrorInfo) {}
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IBuildAction       ? static_cast<void*>(static_cast<IBuildAction*>(this))
                  : iid == IID_ISupportErrorInfo && supportsErrorInfo_ ? static_cast<ISupportErrorInfo*>(this)
                                                                       : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP Execute(IBuildRun*, IBuildStep*, long* status) override {
        if (FAILED(hr_)) ::SetErrorInfo(0, MakeErrorInfo(IID_IBuildAction, description_).get());
        if (SUCCEEDED(hr_) && status_ != kNoStatus) *status = status_;
        return hr_;
    }
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override { return iid == IID_IBuildAction ? S_OK : S_FALSE; }

private:
    long status_;
    HRESULT hr_;
    const wchar_t* description_;
    bool supportsErrorInfo_;
};

} // namespace

// Each row runs a disabled step, then two of its action (the first labelled); "Missing" cannot be created.
TEST(HostRunner, ReportsEachStepAndEndsAtTheFirstThatDoesNotSucceed) {
    const std::wstring failed = L"\n== Step 2 failed\n";
    struct {
        const wchar_t* name;
        ScriptedAction action;
        bool stopFirst;
        int exitCode;
        std::wstring log; // the lines, each ended by "\n", after "== Step 2: NAME (first)\n"
    } rows[] = {
        {L"Ok", {tol::StepSucceeded}, false, 0, L"== Step 2 succeeded\n== Step 3: Ok\n== Step 3 succeeded\n"},
        {L"Ok", {tol::StepSucceeded}, true, 2, L""},
        {L"Seven", {7}, false, 1,
         L"error: the action answered status 7, which is none of 0 (succeeded), 1 (failed) and 2 (stopped)" + failed},
        {L"Silent", {kNoStatus}, false, 1, L"error: the action succeeded without answering a status" + failed},
        {L"Boom", {0, E_FAIL, L"boom\r\n"}, false, 1, L"error 0x80004005: boom" + failed},
        {L"Denied", {0, E_ACCESSDENIED, L"stale", false}, false, 1, L"error 0x80070005: " + SystemText(E_ACCESSDENIED) + failed},
        {L"Missing", {0}, false, 1,
         L"error 0x80040154: cannot create the Missing action: " + SystemText(REGDB_E_CLASSNOTREG) + failed},
    };
    for (auto& row : rows) {
        hosttest::RecordingLog log;
        const tol::unique_event stop(::CreateEventW(nullptr, TRUE, row.stopFirst, nullptr));
        const auto expander = std::make_shared<const Expander>();
        std::vector<ScriptStep> steps;
        steps.push_back({L"x", L"Off", true, {}});
        steps.push_back({L"first", row.name, false, {}});
        steps.push_back({L"", row.name, false, {}});
        const RunContext context{log, nullptr, stop.get(), expander, [&](const ScriptStep& step) {
                                     if (step.action == L"Missing") throw comet::com_error(REGDB_E_CLASSNOTREG);
                                     return tol::com_ptr<IBuildAction>(&row.action);
                                 }};
        EXPECT_EQ(RunSteps(steps, context), row.exitCode) << row.name;
        std::wstring lines;
        for (const std::wstring& line : log.lines()) lines += line + L"\n";
        const std::wstring heading =
            row.stopFirst ? L"== Stopped before step 2\n" : L"== Step 2: " + steps[1].action + L" (first)\n";
        EXPECT_EQ(lines, L"== Step 1: Off (x) skipped\n" + heading + row.log) << row.name;
    }
}
