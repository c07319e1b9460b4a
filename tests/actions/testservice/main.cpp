// A Windows service for the Service action's tests: it starts, stops or lingers as its command line says.
#include "behaviour.h"
#include "frame/handles.h"
#include <cstdlib>
#include <cstring>

namespace {

enum class Kind { Normal, Slow, HangStop };

constexpr DWORD kCheckpointInterval = 250;

Kind g_kind = Kind::Normal; // an unknown word is the normal behaviour
DWORD g_milliseconds = 0;
SERVICE_STATUS_HANDLE g_statusHandle = nullptr;
SERVICE_STATUS g_status{SERVICE_WIN32_OWN_PROCESS};
tol::unique_event g_stopRequested;

void Report(DWORD state, DWORD checkpoint = 0, DWORD waitHint = 0) {
    g_status.dwCurrentState = state;
    g_status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP : 0;
    g_status.dwCheckPoint = checkpoint;
    g_status.dwWaitHint = waitHint;
    ::SetServiceStatus(g_statusHandle, &g_status);
}

// The slow behaviour: reports the pending state with an advancing checkpoint until the time has passed.
void ReportProgress(DWORD pendingState) {
    if (g_kind != Kind::Slow) return;
    DWORD checkpoint = 1;
    for (DWORD spent = 0; spent < g_milliseconds; spent += kCheckpointInterval) {
        Report(pendingState, checkpoint++, 2 * kCheckpointInterval);
        ::Sleep(kCheckpointInterval);
    }
}

DWORD WINAPI Control(DWORD control, DWORD, void*, void*) {
    if (control != SERVICE_CONTROL_STOP) return control == SERVICE_CONTROL_INTERROGATE ? NO_ERROR : ERROR_CALL_NOT_IMPLEMENTED;
    if (g_kind == Kind::Normal) Report(SERVICE_STOPPED);
    else Report(SERVICE_STOP_PENDING, 1, g_kind == Kind::HangStop ? 1000 : 2 * kCheckpointInterval);
    ::SetEvent(g_stopRequested.get());
    return NO_ERROR;
}

void WINAPI ServiceMain(DWORD argc, LPWSTR* argv) {
    const std::wstring name = argc > 0 ? argv[0] : L"";
    g_statusHandle = ::RegisterServiceCtrlHandlerExW(name.c_str(), Control, nullptr);
    if (!g_statusHandle) return;
    tol::unique_event release(::CreateEventW(nullptr, TRUE, FALSE, testservice::ReleaseEventName(name).c_str()));
    ReportProgress(SERVICE_START_PENDING);
    Report(SERVICE_RUNNING);
    ::WaitForSingleObject(g_stopRequested.get(), INFINITE);
    ReportProgress(SERVICE_STOP_PENDING);
    if (g_kind == Kind::HangStop) ::WaitForSingleObject(release.get(), 60000);
    if (g_status.dwCurrentState != SERVICE_STOPPED) Report(SERVICE_STOPPED);
}

} // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::strcmp(argv[1], "slow") == 0) g_kind = Kind::Slow;
    if (argc > 1 && std::strcmp(argv[1], "hangstop") == 0) g_kind = Kind::HangStop;
    if (argc > 2) g_milliseconds = std::strtoul(argv[2], nullptr, 10);
    g_stopRequested.reset(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    wchar_t anyName[] = L"";
    const SERVICE_TABLE_ENTRYW table[] = {{anyName, ServiceMain}, {nullptr, nullptr}};
    return ::StartServiceCtrlDispatcherW(table) ? 0 : static_cast<int>(::GetLastError());
}
