// The action component as the host sees it: Execute's barrier, the typed reads and the stop signal.
#include "frame/barrier.h"
#include "frame/component.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <functional>
#include <stdexcept>

using namespace tol;

namespace {

using Routine = std::function<long(IBuildRun*, IBuildStep*)>;
Routine g_routine;
long RunTestRoutine(IBuildRun* build, IBuildStep* step) { return g_routine(build, step); }
const ClassEntry kTestAction{&CLSID_WaitAction, L"WaitAction", ClassKind::Action, RunTestRoutine};
constexpr long kGarbage = 0x5A5A;
constexpr HRESULT kHostError = static_cast<HRESULT>(0x80041234);

com_ptr<IBuildAction> MakeAction(Routine routine) {
    g_routine = std::move(routine);
    com_ptr<IBuildAction> action;
    EXPECT_EQ(CreateComponent(kTestAction, IID_IBuildAction, action.put_void()), S_OK);
    return action;
}

template <class Error>
Routine Throwing(Error error) {
    return [error](IBuildRun*, IBuildStep*) -> long { throw error; };
}

std::wstring ThreadErrorDescription() {
    com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"<none>";
    bstr text;
    info->GetDescription(text.receive());
    return text.str();
}

} // namespace

// The status comes back only on success; a failure reaches the host as its HRESULT with its description (or none).
TEST(Execute, BarrierTurnsEachOutcomeIntoItsHresultAndErrorInformation) {
    test::TestBuild build;
    test::TestStep step, bare; // bare offers no error information of its own
    step.SetText(L"Count", L"abc");
    step.Fail(L"Filename", kHostError, L"no such property here");
    bare.Fail(L"Filename", kHostError, L"not to be passed on");
    bare.SupportErrorInfo(false);
    const struct {
        const char* name;
        Routine routine;
        HRESULT hr;
        std::wstring description;
        long status = kGarbage;
    } rows[] = {
        {"status", [](IBuildRun*, IBuildStep*) { return long{StepStopped}; }, S_OK, L"<none>", StepStopped},
        {"truntime_error", Throwing(truntime_error(L"M went wrong")), E_FAIL, L"M went wrong"},
        {"std::exception", Throwing(std::runtime_error("narrow text")), E_FAIL, L"narrow text"},
        {"long", Throwing(static_cast<long>(E_ACCESSDENIED)), E_ACCESSDENIED, L"<none>"},
        {"com_error without info", Throwing(comet::com_error(E_INVALIDARG)), E_INVALIDARG, L"<none>"},
        {"anything else", Throwing(42.0), E_FAIL, L"<none>"},
        {"host failure", [](IBuildRun* b, IBuildStep* s) { return long(GetStepText(s, b, L"Filename").size()); }, kHostError,
         L"no such property here"},
        {"host failure without error information",
         [&](IBuildRun* b, IBuildStep*) { return long(GetStepText(&bare, b, L"Filename").size()); }, kHostError, L"<none>"},
        {"failed conversion", [](IBuildRun* b, IBuildStep* s) { return GetStepLong(s, b, L"Count"); }, DISP_E_TYPEMISMATCH,
         L"<none>"},
        {"no step", [](IBuildRun* b, IBuildStep*) { return long{GetStepBool(nullptr, b, L"Force")}; }, E_POINTER, L"<none>"},
        {"no build", [](IBuildRun*, IBuildStep*) -> long { LogMessage(nullptr, L"x"); return 0; }, E_POINTER, L"<none>"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        auto action = MakeAction(row.routine);
        ::SetErrorInfo(0, nullptr);
        long status = kGarbage;
        EXPECT_EQ(action->Execute(&build, &step, &status), row.hr);
        EXPECT_EQ(status, row.status);
        EXPECT_EQ(ThreadErrorDescription(), row.description);
    }
}

TEST(Execute, NullStatusRunsNothing) {
    test::TestBuild build;
    test::TestStep step;
    int calls = 0;
    auto action = MakeAction([&](IBuildRun*, IBuildStep*) { return long{++calls}; });
    EXPECT_EQ(action->Execute(&build, &step, nullptr), E_POINTER);
    EXPECT_EQ(calls, 0);
}

TEST(StepProperties, EveryVariantFormReadsAsText) {
    test::TestBuild build;
    test::TestStep step;
    bstr referenced(L"by reference");
    BSTR referencedSlot = referenced.get();
    VARIANT byRef{}, null{}, number{}, flag{};
    V_VT(&byRef) = VT_BSTR | VT_BYREF;
    V_BSTRREF(&byRef) = &referencedSlot;
    V_VT(&null) = VT_NULL;
    V_VT(&number) = VT_I4;
    V_I4(&number) = -17;
    V_VT(&flag) = VT_BOOL;
    V_BOOL(&flag) = VARIANT_TRUE;
    step.Set(L"Ref", byRef);
    step.Set(L"Null", null);
    step.Set(L"Number", number);
    step.Set(L"Flag", flag);
    step.SetText(L"WithNul", std::wstring(L"cut\0here", 8));
    step.SetText(L"Word", L"abc");

    EXPECT_EQ(GetStepText(&step, &build, L"Ref"), L"by reference");
    EXPECT_EQ(GetStepText(&step, &build, L"Null"), L"");
    EXPECT_EQ(GetStepText(&step, &build, L"Missing"), L"");
    EXPECT_EQ(GetStepText(&step, &build, L"Number"), L"-17");
    EXPECT_EQ(GetStepText(&step, &build, L"WithNul"), L"cut");
    EXPECT_EQ(GetStepStored(&step, L"Null"), L"");
    EXPECT_EQ(step.requested, (std::vector<VARTYPE>{VT_BSTR, VT_BSTR, VT_BSTR, VT_BSTR, VT_BSTR}));
    step.requested.clear();

    EXPECT_TRUE(GetStepBool(&step, &build, L"Flag"));
    EXPECT_TRUE(GetStepBool(&step, &build, L"Number"));
    EXPECT_FALSE(GetStepBool(&step, &build, L"Missing"));
    EXPECT_EQ(GetStepLong(&step, &build, L"Number"), -17);
    EXPECT_EQ(GetStepLong(&step, &build, L"Flag"), -1);
    EXPECT_EQ(GetStepLong(&step, &build, L"Missing"), 0);
    EXPECT_EQ(step.requested, (std::vector<VARTYPE>{VT_BOOL, VT_BOOL, VT_BOOL, VT_I4, VT_I4, VT_I4}));
    EXPECT_THROW(GetStepBool(&step, &build, L"Word"), comet::com_error);
}

TEST(StopSignal, LatchesOnceSeen) {
    test::TestBuild build;
    StopSignal signal(&build);
    EXPECT_FALSE(signal.IsStopped());
    ::SetEvent(build.stopEvent());
    EXPECT_TRUE(signal.IsStopped());
    ::ResetEvent(build.stopEvent());
    EXPECT_TRUE(signal.IsStopped());
    StopSignal fresh(&build);
    EXPECT_FALSE(fresh.IsStopped());
}

TEST(Component, SupportsErrorInfoAndRefusesOtherInterfaces) {
    com_ptr<IUnknown> unknown;
    ASSERT_EQ(CreateComponent(kTestAction, IID_IUnknown, unknown.put_void()), S_OK);
    EXPECT_EQ(unknown.query<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(IID_IDispatch), S_OK);
    void* raw = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(CreateComponent(kTestAction, IID_IDispatch, &raw), E_NOINTERFACE);
    EXPECT_EQ(raw, nullptr);
}
