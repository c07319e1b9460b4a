// A Windows service for the Service action's tests: it starts, stops, fails or lingers as its command line says.
#include "behaviour.h"
#include "frame/handles.h"
#include <windows.h>
#include <winsvc.h>

namespace {

using testservice::Behaviour;
using testservice::Kind;

constexpr DWORD kCheckpointInterval = 250;

Behaviour g_behaviour;
SERVICE_STATUS_HANDLE g_statusHandle = nullptr;
SERVICE_STATUS g_status{SERVICE_WIN32_OWN_PROCESS};
tol::unique_event g_stopRequested;
tol::unique_event g_release;

void Report(DWORD state, DWORD checkpoint = 0, DWORD waitHint = 0) {
    g_status.dwCurrentState = state;
    g_status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
    g_status.dwCheckPoint = checkpoint;
    g_status.dwWaitHint = waitHint;
    ::SetServiceStatus(g_statusHandle, &g_status);
}

// Reports the pending state with an advancing checkpoint until the time has passed.
void ReportProgress(DWORD pendingState, DWORD milliseconds) {
    DWORD checkpoint = 1;
    for (DWORD spent = 0; spent < milliseconds; spent += kCheckpointInterval) {
        Report(pendingState, checkpoint++, 2 * kCheckpointInterval);
        ::Sleep(kCheckpointInterval);
    }
}

DWORD WINAPI Control(DWORD control, DWORD, void*, void*) {
    if (control == SERVICE_CONTROL_INTERROGATE) return NO_ERROR;
    if (control != SERVICE_CONTROL_STOP) return ERROR_CALL_NOT_IMPLEMENTED;
    if (g_behaviour.kind == Kind::HangStop) Report(SERVICE_STOP_PENDING, 1, 1000);
    else if (g_behaviour.kind == Kind::SlowStop) Report(SERVICE_STOP_PENDING, 1, 2 * kCheckpointInterval);
    else Report(SERVICE_STOPPED);
    ::SetEvent(g_stopRequested.get());
    return NO_ERROR;
}

void StopAsTold() {
    if (g_behaviour.kind == Kind::SlowStop) ReportProgress(SERVICE_STOP_PENDING, g_behaviour.milliseconds);
    if (g_behaviour.kind == Kind::HangStop) ::WaitForSingleObject(g_release.get(), 60000);
    if (g_status.dwCurrentState != SERVICE_STOPPED) Report(SERVICE_STOPPED);
}

void WINAPI ServiceMain(DWORD argc, LPWSTR* argv) {
    const std::wstring name = argc > 0 ? argv[0] : L"";
    g_statusHandle = ::RegisterServiceCtrlHandlerExW(name.c_str(), Control, nullptr);
    if (!g_statusHandle) return;
    g_release.reset(::CreateEventW(nullptr, TRUE, FALSE, testservice::ReleaseEventName(name).c_str()));
    if (g_behaviour.kind == Kind::FailStart) {
        Report(SERVICE_START_PENDING, 1, 200);
        ::Sleep(300);
        g_status.dwWin32ExitCode = ERROR_SERVICE_SPECIFIC_ERROR;
        g_status.dwServiceSpecificExitCode = 42;
        Report(SERVICE_STOPPED);
        return;
    }
    if (g_behaviour.kind == Kind::SlowStart) ReportProgress(SERVICE_START_PENDING, g_behaviour.milliseconds);
    Report(SERVICE_RUNNING);
    ::WaitForSingleObject(g_stopRequested.get(), INFINITE);
    StopAsTold();
}

} // namespace

int main() {
    g_behaviour = testservice::ReadBehaviour();
    g_stopRequested.reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    wchar_t anyName[] = L"";
    const SERVICE_TABLE_ENTRYW table[] = {{anyName, ServiceMain}, {nullptr, nullptr}};
    return ::StartServiceCtrlDispatcherW(table) ? 0 : static_cast<int>(::GetLastError());
}
