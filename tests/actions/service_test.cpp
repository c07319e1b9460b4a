// Service through its action component, against test services installed with the real service manager.
#include "frame/com_ptr.h"
#include "frame/component.h"
#include "frame/messages.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "testservice/installed.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using testservice::InstalledService;

std::string Narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

long long Since(Clock::time_point start) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start).count();
}

std::wstring SystemText(DWORD code) { return tol::SystemErrorText(static_cast<HRESULT>(0x80070000u | code)); }

struct Outcome {
    HRESULT hr = E_UNEXPECTED;
    long status = 0x5A5A; // garbage: a status that is not written stays so
    std::vector<std::wstring> log;
    long long milliseconds = 0;
};

// Runs one step through the Service component on this thread; with stopAfter, another thread sets the build's
// stop event that many milliseconds after the start.
Outcome RunService(const std::wstring& computer, const std::wstring& service, long action, long long stopAfter = -1) {
    test::TestBuild build;
    test::TestStep step;
    step.SetText(L"Computer", computer);
    step.SetText(L"Service", service);
    VARIANT value;
    V_VT(&value) = VT_I4;
    V_I4(&value) = action;
    step.Set(L"Action", value);

    Outcome outcome;
    std::thread stopper;
    if (stopAfter >= 0) {
        stopper = std::thread([&build, stopAfter] {
            std::this_thread::sleep_for(std::chrono::milliseconds(stopAfter));
            ::SetEvent(build.stopEvent());
        });
    }
    const Clock::time_point start = Clock::now();
    tol::com_ptr<IBuildAction> component;
    outcome.hr = tol::CreateComponent(*tol::FindClass(CLSID_ServiceAction), IID_IBuildAction, component.put_void());
    if (SUCCEEDED(outcome.hr)) outcome.hr = component->Execute(&build, &step, &outcome.status);
    outcome.milliseconds = Since(start);
    if (stopper.joinable()) stopper.join();
    outcome.log = build.log;
    return outcome;
}

std::wstring Starting(const InstalledService& s) { return L"Starting service '" + s.displayName() + L"'..."; }
std::wstring Stopping(const InstalledService& s) { return L"Stopping service '" + s.displayName() + L"'..."; }
std::wstring Deleting(const InstalledService& s) { return L"Deleting service '" + s.displayName() + L"'..."; }

bool RunningUnderWine() { return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr; }

} // namespace

// One service taken through every command in turn, including the platform's own refusals.
TEST(ServiceAction, CommandsInTurnOnOneService) {
    InstalledService service(L"normal");
    ASSERT_TRUE(service.installed());
    const std::wstring alreadyRunning = L"Error starting service: " + SystemText(ERROR_SERVICE_ALREADY_RUNNING);
    const std::wstring notActive = L"Error stopping service: " + SystemText(ERROR_SERVICE_NOT_ACTIVE);
    const struct {
        const char* name;
        long action;
        long status;
        std::vector<std::wstring> log;
        DWORD stateAfter;
        bool deletedAfter;
    } rows[] = {
        {"start", 0, tol::StepSucceeded, {Starting(service)}, SERVICE_RUNNING, false},
        {"start a running service", 0, tol::StepFailed, {Starting(service), alreadyRunning}, SERVICE_RUNNING, false},
        {"stop", 1, tol::StepSucceeded, {Stopping(service)}, SERVICE_STOPPED, false},
        {"stop a stopped service", 1, tol::StepFailed, {Stopping(service), notActive}, SERVICE_STOPPED, false},
        {"delete a stopped service", 2, tol::StepFailed, {Deleting(service), notActive}, SERVICE_STOPPED, false},
        {"start again", 0, tol::StepSucceeded, {Starting(service)}, SERVICE_RUNNING, false},
        {"stop and delete", 2, tol::StepSucceeded, {Deleting(service)}, SERVICE_STOPPED, true},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunService(L"", service.displayName(), row.action);
        EXPECT_EQ(outcome.hr, S_OK) << row.name;
        EXPECT_EQ(outcome.status, row.status) << row.name;
        EXPECT_EQ(outcome.log, row.log) << row.name;
        EXPECT_LT(outcome.milliseconds, 5000) << row.name;
        EXPECT_EQ(service.State(), row.stateAfter) << row.name;
        EXPECT_EQ(service.Deleted(), row.deletedAfter) << row.name;
    }
}

TEST(ServiceAction, OnlyTheDisplayNameFindsTheService) {
    InstalledService service(L"normal");
    ASSERT_TRUE(service.installed());
    const std::wstring notFound = L"Error getting service key name: " + SystemText(ERROR_SERVICE_DOES_NOT_EXIST);
    const struct {
        const char* name;
        std::wstring given;
    } rows[] = {
        {"key name", service.keyName()},
        {"unknown display name", L"Velmora No Such Service"},
        {"display name with a trailing blank", service.displayName() + L" "},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunService(L"", row.given, 0);
        EXPECT_EQ(outcome.hr, S_OK) << row.name;
        EXPECT_EQ(outcome.status, tol::StepFailed) << row.name;
        EXPECT_EQ(outcome.log, std::vector<std::wstring>{notFound}) << row.name;
        EXPECT_EQ(service.State(), static_cast<DWORD>(SERVICE_STOPPED)) << row.name;
    }
}

// Names of this computer reach its manager. Wine opens the local manager whatever the name, so an unreachable
// computer can only be shown failing (string 22) elsewhere.
TEST(ServiceAction, ComputerNames) {
    InstalledService service(L"normal");
    ASSERT_TRUE(service.installed());
    std::wstring computer(MAX_COMPUTERNAME_LENGTH + 1, L'\0');
    DWORD size = static_cast<DWORD>(computer.size());
    ASSERT_TRUE(::GetComputerNameW(computer.data(), &size));
    computer.resize(size);
    const bool anyNameIsLocal = RunningUnderWine();
    const struct {
        std::wstring name;
        bool reachesManager;
    } rows[] = {{computer, true}, {L"\\\\" + computer, true}, {L"\\\\velmora-no-such-host.invalid", anyNameIsLocal}};
    for (const auto& row : rows) {
        for (long action : {0L, 1L}) {
            const Outcome outcome = RunService(row.name, service.displayName(), action);
            EXPECT_EQ(outcome.hr, S_OK) << Narrow(row.name);
            if (row.reachesManager) {
                EXPECT_EQ(outcome.status, tol::StepSucceeded) << Narrow(row.name) << " action " << action;
                EXPECT_EQ(outcome.log, std::vector<std::wstring>{action ? Stopping(service) : Starting(service)})
                    << Narrow(row.name) << " action " << action;
            } else {
                EXPECT_EQ(outcome.status, tol::StepFailed) << Narrow(row.name);
                ASSERT_EQ(outcome.log.size(), 1u) << Narrow(row.name);
                EXPECT_EQ(outcome.log[0].rfind(L"Error opening service manager: ", 0), 0u) << Narrow(outcome.log[0]);
            }
        }
    }
}

TEST(ServiceAction, ActionOutsideTheThreeCommandsTouchesNoService) {
    InstalledService service(L"normal");
    ASSERT_TRUE(service.installed());
    ASSERT_TRUE(service.Start());
    for (long action : {3L, -1L, 0x7FFFFFFFL}) {
        const Outcome outcome = RunService(L"", service.displayName(), action);
        EXPECT_EQ(outcome.hr, E_INVALIDARG) << action;
        EXPECT_EQ(outcome.status, 0x5A5A) << action;
        EXPECT_TRUE(outcome.log.empty()) << action;
        EXPECT_EQ(service.State(), static_cast<DWORD>(SERVICE_RUNNING)) << action;
    }
}

// Slow starts and stops report progress and complete; the wait follows the service's wait hints.
TEST(ServiceAction, SlowStartAndSlowStopComplete) {
    InstalledService slowStart(L"slowstart 1500");
    InstalledService slowStop(L"slowstop 1500");
    ASSERT_TRUE(slowStart.installed() && slowStop.installed());
    ASSERT_TRUE(slowStop.Start());
    const struct {
        const char* name;
        const InstalledService& service;
        long action;
        std::wstring line;
        DWORD stateAfter;
    } rows[] = {
        {"slow start", slowStart, 0, Starting(slowStart), SERVICE_RUNNING},
        {"slow stop", slowStop, 1, Stopping(slowStop), SERVICE_STOPPED},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunService(L"", row.service.displayName(), row.action);
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        EXPECT_EQ(outcome.log, std::vector<std::wstring>{row.line}) << row.name;
        EXPECT_GE(outcome.milliseconds, 1400) << row.name;
        EXPECT_LT(outcome.milliseconds, 4000) << row.name;
        EXPECT_EQ(row.service.State(), row.stateAfter) << row.name;
    }
}

// A stop request ends every wait for a state at once, logs no error, and leaves the service as it is.
TEST(ServiceAction, StopRequestEndsTheWaitAtOnce) {
    InstalledService failing(L"failstart");
    InstalledService starting(L"slowstart 2500");
    InstalledService hanging(L"hangstop");
    ASSERT_TRUE(failing.installed() && starting.installed() && hanging.installed());
    ASSERT_TRUE(hanging.Start());
    const struct {
        const char* name;
        const InstalledService& service;
        long action;
        std::wstring line;
        long long stopAfter;
        DWORD stateAfter;
    } rows[] = {
        // The service falls back to stopped: the step keeps waiting for the running state until stopped.
        {"failed start", failing, 0, Starting(failing), 1500, SERVICE_STOPPED},
        {"still starting", starting, 0, Starting(starting), 500, SERVICE_START_PENDING},
        {"still stopping", hanging, 2, Deleting(hanging), 500, SERVICE_STOP_PENDING},
    };
    for (const auto& row : rows) {
        const Outcome outcome = RunService(L"", row.service.displayName(), row.action, row.stopAfter);
        EXPECT_EQ(outcome.hr, S_OK) << row.name;
        EXPECT_EQ(outcome.status, tol::StepStopped) << row.name;
        EXPECT_EQ(outcome.log, std::vector<std::wstring>{row.line}) << row.name;
        EXPECT_GE(outcome.milliseconds, row.stopAfter) << row.name;
        EXPECT_LT(outcome.milliseconds, row.stopAfter + 400) << row.name;
        EXPECT_EQ(row.service.State(), row.stateAfter) << row.name;
        EXPECT_FALSE(row.service.Deleted()) << row.name;
    }
}

// A stop whose checkpoint stops advancing is reported as hung, not waited on for ever.
TEST(ServiceAction, StopWithoutProgressIsReportedHung) {
    InstalledService hanging(L"hangstop");
    ASSERT_TRUE(hanging.installed());
    ASSERT_TRUE(hanging.Start());
    const Outcome outcome = RunService(L"", hanging.displayName(), 2);
    EXPECT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(outcome.status, tol::StepFailed);
    EXPECT_EQ(outcome.log, (std::vector<std::wstring>{Deleting(hanging), L"Service hung while stopping"}));
    EXPECT_GE(outcome.milliseconds, 10000);
    EXPECT_LT(outcome.milliseconds, 13000);
    EXPECT_EQ(hanging.State(), static_cast<DWORD>(SERVICE_STOP_PENDING));
    EXPECT_FALSE(hanging.Deleted());
}
