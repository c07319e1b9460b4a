// Service through its action component, against test services installed with the real service manager.
#include "frame/component.h"
#include "frame/messages.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "testservice/installed.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <thread>

namespace {

using Log = std::vector<std::wstring>;
using testservice::InstalledService;

struct Outcome {
    HRESULT hr = E_UNEXPECTED;
    long status = 0x5A5A; // garbage: a status that is not written stays so
    Log log;
    ULONGLONG milliseconds = 0;
};

// Runs one step through the Service component on this thread, on this computer; with stopAfter, another thread
// sets the build's stop event that many milliseconds after the start.
Outcome RunService(const std::wstring& service, long action, DWORD stopAfter = INFINITE) {
    test::TestBuild build;
    test::TestStep step;
    step.SetText(L"Service", service);
    step.SetText(L"Action", std::to_wstring(action));
    // The stopper sets the stop event once stopAfter has passed, unless the event was set first, at the end of the run.
    std::thread stopper([&build, stopAfter] {
        if (::WaitForSingleObject(build.stopEvent(), stopAfter) == WAIT_TIMEOUT) ::SetEvent(build.stopEvent());
    });
    Outcome outcome;
    const ULONGLONG start = ::GetTickCount64();
    tol::com_ptr<IBuildAction> component;
    outcome.hr = tol::CreateComponent(*tol::FindClass(CLSID_ServiceAction), IID_IBuildAction, component.put_void());
    if (SUCCEEDED(outcome.hr)) outcome.hr = component->Execute(&build, &step, &outcome.status);
    outcome.milliseconds = ::GetTickCount64() - start;
    ::SetEvent(build.stopEvent());
    stopper.join();
    outcome.log = build.log;
    return outcome;
}

std::wstring SystemText(DWORD code) { return tol::SystemErrorText(HRESULT_FROM_WIN32(code)); }

// The progress line that each command logs first: "Starting", "Stopping" or "Deleting".
std::wstring Line(const wchar_t* verb, const InstalledService& s) { return verb + (L" service '" + s.displayName() + L"'..."); }

} // namespace

// One service taken through every command in turn, with the platform's refusals. Only the display name finds the
// service; an action outside the three commands reaches the host as E_INVALIDARG and touches no service; a
// delete whose stop fails deletes nothing.
TEST(ServiceAction, CommandsInTurnOnOneService) {
    InstalledService service(L"normal");
    ASSERT_TRUE(service.installed());
    const std::wstring name = service.displayName();
    const std::wstring starting = Line(L"Starting", service);
    const std::wstring notActive = L"Error stopping service: " + SystemText(ERROR_SERVICE_NOT_ACTIVE);
    const struct {
        const char* name;
        std::wstring given;
        long action;
        HRESULT hr;
        long status;
        Log log;
        DWORD stateAfter;
    } rows[] = {
        {"key name", service.keyName(), 0, S_OK, tol::StepFailed,
         {L"Error getting service key name: " + SystemText(ERROR_SERVICE_DOES_NOT_EXIST)}, SERVICE_STOPPED},
        {"start", name, 0, S_OK, tol::StepSucceeded, {starting}, SERVICE_RUNNING},
        {"start a running service", name, 0, S_OK, tol::StepFailed,
         {starting, L"Error starting service: " + SystemText(ERROR_SERVICE_ALREADY_RUNNING)}, SERVICE_RUNNING},
        {"action 3", name, 3, E_INVALIDARG, 0x5A5A, {}, SERVICE_RUNNING},
        {"action -1", name, -1, E_INVALIDARG, 0x5A5A, {}, SERVICE_RUNNING},
        {"stop", name, 1, S_OK, tol::StepSucceeded, {Line(L"Stopping", service)}, SERVICE_STOPPED},
        {"stop a stopped service", name, 1, S_OK, tol::StepFailed, {Line(L"Stopping", service), notActive}, SERVICE_STOPPED},
        {"delete a stopped service", name, 2, S_OK, tol::StepFailed, {Line(L"Deleting", service), notActive}, SERVICE_STOPPED},
        {"start again", name, 0, S_OK, tol::StepSucceeded, {starting}, SERVICE_RUNNING},
        {"stop and delete", name, 2, S_OK, tol::StepSucceeded, {Line(L"Deleting", service)}, SERVICE_STOPPED},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunService(row.given, row.action);
        EXPECT_EQ(outcome.hr, row.hr) << row.name;
        EXPECT_EQ(outcome.status, row.status) << row.name;
        EXPECT_EQ(outcome.log, row.log) << row.name;
        EXPECT_LT(outcome.milliseconds, 5000u) << row.name;
        EXPECT_EQ(service.State(), row.stateAfter) << row.name;
        EXPECT_EQ(service.Deleted(), &row == std::end(rows) - 1) << row.name; // only the last row deletes
    }
}

// Slow starts and stops are waited out, following the service's checkpoints and wait hints; a stop whose checkpoint
// stops advancing is reported as hung, not waited on for ever. A stop request (500 ms in, for the rows that expect
// it) ends any wait at once, logs no error and leaves the service as it is. None of these deletes the service.
TEST(ServiceAction, WaitsForPendingStatesUntilDoneHungOrStopped) {
    InstalledService slow(L"slow 1500");
    InstalledService hanging(L"hangstop");
    InstalledService hung(L"hangstop");
    ASSERT_TRUE(slow.installed());
    for (const auto* running : {&hanging, &hung}) ASSERT_EQ(RunService(running->displayName(), 0).status, tol::StepSucceeded);
    const struct {
        const char* name;
        const InstalledService& service;
        long action;
        long status;
        Log log;
        ULONGLONG shortest; // milliseconds
        DWORD stateAfter;
    } rows[] = {
        {"slow start", slow, 0, tol::StepSucceeded, {Line(L"Starting", slow)}, 1400, SERVICE_RUNNING},
        {"slow stop", slow, 1, tol::StepSucceeded, {Line(L"Stopping", slow)}, 1400, SERVICE_STOPPED},
        {"stopped while starting", slow, 0, tol::StepStopped, {Line(L"Starting", slow)}, 500, SERVICE_START_PENDING},
        {"stopped while stopping", hanging, 2, tol::StepStopped, {Line(L"Deleting", hanging)}, 500, SERVICE_STOP_PENDING},
        {"hung", hung, 2, tol::StepFailed, {Line(L"Deleting", hung), L"Service hung while stopping"}, 10000,
         SERVICE_STOP_PENDING},
    };
    for (const auto& row : rows) {
        const bool stopped = row.status == tol::StepStopped;
        const Outcome outcome = RunService(row.service.displayName(), row.action, stopped ? 500 : INFINITE);
        EXPECT_EQ(outcome.status, row.status) << row.name;
        EXPECT_EQ(outcome.log, row.log) << row.name;
        EXPECT_TRUE(outcome.milliseconds >= row.shortest && outcome.milliseconds < row.shortest + (stopped ? 400 : 3000))
            << row.name << ": " << outcome.milliseconds << " ms";
        EXPECT_EQ(row.service.State(), row.stateAfter) << row.name;
        EXPECT_FALSE(row.service.Deleted()) << row.name;
    }
}
