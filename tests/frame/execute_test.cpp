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

std::function<long(IBuildRun*, IBuildStep*)> g_routine;
long RunTestRoutine(IBuildRun* build, IBuildStep* step) { return g_routine(build, step); }
const ClassEntry kTestAction{&CLSID_WaitAction, L"WaitAction", ClassKind::Action, RunTestRoutine};

com_ptr<IBuildAction> MakeAction(std::function<long(IBuildRun*, IBuildStep*)> routine) {
    g_routine = std::move(routine);
    com_ptr<IBuildAction> action;
    EXPECT_EQ(CreateComponent(kTestAction, IID_IBuildAction, action.put_void()), S_OK);
    return action;
}

std::wstring ThreadErrorDescription() {
    com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"<none>";
    bstr text;
    info->GetDescription(text.receive());
    return text.str();
}

VARIANT Text(const wchar_t* text) {
    VARIANT v;
    V_VT(&v) = VT_BSTR;
    V_BSTR(&v) = ::SysAllocString(text);
    return v;
}

} // namespace

TEST(Execute, BarrierTurnsEachKindOfThrowIntoItsHresult) {
    test::TestBuild build;
    test::TestStep step;
    struct Row {
        const char* name;
        std::function<long(IBuildRun*, IBuildStep*)> routine;
        HRESULT expected;
        std::wstring description;
    } rows[] = {
        {"truntime_error", [](IBuildRun*, IBuildStep*) -> long { throw truntime_error(L"M went wrong"); }, E_FAIL,
         L"M went wrong"},
        {"std::exception", [](IBuildRun*, IBuildStep*) -> long { throw std::runtime_error("narrow text"); }, E_FAIL,
         L"narrow text"},
        {"long", [](IBuildRun*, IBuildStep*) -> long { throw static_cast<long>(0x80070005); },
         static_cast<HRESULT>(0x80070005), L"<none>"},
        {"com_error without info", [](IBuildRun*, IBuildStep*) -> long { throw comet::com_error(E_INVALIDARG); },
         E_INVALIDARG, L"<none>"},
        {"anything else", [](IBuildRun*, IBuildStep*) -> long { throw 42.0; }, E_FAIL, L"<none>"},
    };
    for (const Row& row : rows) {
        auto action = MakeAction(row.routine);
        ::SetErrorInfo(0, nullptr);
        long status = 0x5A5A;
        EXPECT_EQ(action->Execute(&build, &step, &status), row.expected) << row.name;
        EXPECT_EQ(status, 0x5A5A) << row.name << ": status written on failure";
        EXPECT_EQ(ThreadErrorDescription(), row.description) << row.name;
    }
}

TEST(Execute, StatusComesBackAndNullStatusRunsNothing) {
    test::TestBuild build;
    test::TestStep step;
    int calls = 0;
    auto action = MakeAction([&](IBuildRun*, IBuildStep*) {
        ++calls;
        return long{StepStopped};
    });
    long status = -1;
    EXPECT_EQ(action->Execute(&build, &step, &status), S_OK);
    EXPECT_EQ(status, StepStopped);
    EXPECT_EQ(action->Execute(&build, &step, nullptr), E_POINTER);
    EXPECT_EQ(calls, 1);
}

TEST(Execute, HostFailureCarriesTheHostsErrorInformation) {
    test::TestBuild build;
    test::TestStep step;
    step.Fail(L"Filename", static_cast<HRESULT>(0x80041234), L"no such property here");
    auto action = MakeAction([](IBuildRun* b, IBuildStep* s) {
        GetStepText(s, b, L"Filename");
        return long{StepSucceeded};
    });
    long status = 7;
    EXPECT_EQ(action->Execute(&build, &step, &status), static_cast<HRESULT>(0x80041234));
    EXPECT_EQ(ThreadErrorDescription(), L"no such property here");

    // A host object that does not offer error information: the frame describes the HRESULT itself.
    step.SupportErrorInfo(false);
    try {
        GetStepText(&step, &build, L"Filename");
        FAIL() << "no throw";
    } catch (const comet::com_error& e) {
        EXPECT_EQ(e.hr(), static_cast<HRESULT>(0x80041234));
        EXPECT_EQ(e.error_info(), nullptr);
        EXPECT_EQ(e.message(), SystemErrorText(static_cast<HRESULT>(0x80041234)));
    }
}

TEST(Execute, NullHostPointersFailWithEPointer) {
    test::TestBuild build;
    auto action = MakeAction([](IBuildRun* b, IBuildStep* s) {
        GetStepBool(s, b, L"Force");
        return long{StepSucceeded};
    });
    long status = 9;
    EXPECT_EQ(action->Execute(&build, nullptr, &status), E_POINTER);
    EXPECT_THROW(LogMessage(nullptr, L"x"), comet::com_error);
    EXPECT_EQ(status, 9);
}

TEST(StepProperties, EveryVariantFormReadsAsText) {
    test::TestBuild build;
    test::TestStep step;
    bstr referenced(L"by reference");
    BSTR referencedSlot = referenced.get();
    VARIANT byRef;
    V_VT(&byRef) = VT_BSTR | VT_BYREF;
    V_BSTRREF(&byRef) = &referencedSlot;
    VARIANT null;
    V_VT(&null) = VT_NULL;
    VARIANT number;
    V_VT(&number) = VT_I4;
    V_I4(&number) = -17;
    VARIANT flag;
    V_VT(&flag) = VT_BOOL;
    V_BOOL(&flag) = VARIANT_TRUE;
    step.Set(L"Ref", byRef);
    step.Set(L"Null", null);
    step.Set(L"Number", number);
    step.Set(L"Flag", flag);
    step.Set(L"Embedded", Text(L"abc"));
    step.SetText(L"WithNul", std::wstring(L"cut\0here", 8));

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
}

TEST(StepProperties, FailedConversionReachesTheHostAsItsHresult) {
    test::TestBuild build;
    test::TestStep step;
    step.Set(L"Count", Text(L"abc"));
    auto action = MakeAction([](IBuildRun* b, IBuildStep* s) { return GetStepLong(s, b, L"Count"); });
    ::SetErrorInfo(0, nullptr);
    long status = 0x77;
    EXPECT_EQ(action->Execute(&build, &step, &status), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(status, 0x77);
    EXPECT_THROW(GetStepBool(&step, &build, L"Count"), comet::com_error);
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

TEST(StepProperties, FailedActionLogsItsMessageWithTheSystemText) {
    test::TestBuild build;
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(LogLastErrorAndFail(&build, 47), StepFailed);
    ASSERT_EQ(build.log.size(), 1u);
    EXPECT_EQ(build.log[0], L"Error writing to INI file: " + SystemErrorText(static_cast<HRESULT>(0x80070002)));
}

TEST(Component, InterfacesReferenceCountAndClassInfo) {
    com_ptr<IUnknown> unknown;
    ASSERT_EQ(CreateComponent(kTestAction, IID_IUnknown, unknown.put_void()), S_OK);
    EXPECT_TRUE(unknown.query<IBuildAction>());
    EXPECT_TRUE(unknown.query<ISupportErrorInfo>());
    EXPECT_FALSE(unknown.query<IDispatch>());
    EXPECT_EQ(unknown.query<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(IID_IDispatch), S_OK);
    void* raw = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(CreateComponent(kTestAction, IID_IDispatch, &raw), E_NOINTERFACE);
    EXPECT_EQ(raw, nullptr);
}
