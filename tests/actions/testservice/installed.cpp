#include "installed.h"
#include "behaviour.h"

namespace testservice {
namespace {

// The service program lies beside the test program.
std::wstring ServiceProgram() {
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L"\\/") + 1) + L"velmora-testservice.exe";
}

// Polls while the service is in the state, for at most ten seconds.
void WaitWhile(const InstalledService& service, DWORD state) {
    const ULONGLONG deadline = ::GetTickCount64() + 10000;
    while (service.State() == state && ::GetTickCount64() < deadline) ::Sleep(50);
}

} // namespace

InstalledService::InstalledService(const std::wstring& behaviour)
    : manager_(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)) {
    static int counter = 0;
    const std::wstring suffix = std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++counter);
    keyName_ = L"VelmoraTestSvc-" + suffix;
    displayName_ = L"Velmora Test Service " + suffix;
    const std::wstring commandLine = L"\"" + ServiceProgram() + L"\" " + behaviour;
    service_.reset(::CreateServiceW(manager_.get(), keyName_.c_str(), displayName_.c_str(), SERVICE_ALL_ACCESS,
                                    SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE,
                                    commandLine.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
}

// Whatever state a test left the service in: end a hanging stop, let a pending state pass, stop it, delete it.
InstalledService::~InstalledService() {
    tol::unique_event release(::OpenEventW(EVENT_MODIFY_STATE, FALSE, ReleaseEventName(keyName_).c_str()));
    if (release) ::SetEvent(release.get());
    WaitWhile(*this, SERVICE_START_PENDING);
    WaitWhile(*this, SERVICE_STOP_PENDING);
    SERVICE_STATUS status{};
    if (State() == SERVICE_RUNNING && ::ControlService(service_.get(), SERVICE_CONTROL_STOP, &status))
        WaitWhile(*this, SERVICE_STOP_PENDING);
    ::DeleteService(service_.get());
}

DWORD InstalledService::State() const {
    SERVICE_STATUS status{};
    return ::QueryServiceStatus(service_.get(), &status) ? status.dwCurrentState : 0;
}

bool InstalledService::Deleted() const {
    return !::ChangeServiceConfigW(service_.get(), SERVICE_NO_CHANGE, SERVICE_NO_CHANGE, SERVICE_NO_CHANGE, nullptr, nullptr,
                                   nullptr, nullptr, nullptr, nullptr, nullptr) &&
           ::GetLastError() == ERROR_SERVICE_MARKED_FOR_DELETE;
}

} // namespace testservice
