#include "installed.h"
#include "behaviour.h"

namespace testservice {
namespace {

// The service program lies beside the test program.
std::wstring ServiceProgram() {
    std::wstring path(260, L'\0');
    DWORD length = 0;
    while ((length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()))) == path.size())
        path.resize(path.size() * 2);
    path.resize(length);
    return path.substr(0, path.find_last_of(L"\\/") + 1) + L"velmora-testservice.exe";
}

std::wstring UniqueSuffix() {
    static int counter = 0;
    return std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++counter);
}

} // namespace

InstalledService::InstalledService(const std::wstring& behaviour)
    : manager_(::OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)) {
    const std::wstring suffix = UniqueSuffix();
    keyName_ = L"VelmoraTestSvc-" + suffix;
    displayName_ = L"Velmora Test Service " + suffix;
    const std::wstring commandLine = L"\"" + ServiceProgram() + L"\" " + behaviour;
    if (!manager_) return;
    service_.reset(::CreateServiceW(manager_.get(), keyName_.c_str(), displayName_.c_str(), SERVICE_ALL_ACCESS,
                                    SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, SERVICE_ERROR_IGNORE,
                                    commandLine.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr));
}

InstalledService::~InstalledService() { Remove(); }

DWORD InstalledService::State() const {
    SERVICE_STATUS status{};
    return ::QueryServiceStatus(service_.get(), &status) ? status.dwCurrentState : 0;
}

bool InstalledService::WaitForState(DWORD state, DWORD milliseconds) const {
    const ULONGLONG deadline = ::GetTickCount64() + milliseconds;
    while (State() != state) {
        if (::GetTickCount64() > deadline) return false;
        ::Sleep(50);
    }
    return true;
}

bool InstalledService::Start() const {
    return ::StartServiceW(service_.get(), 0, nullptr) && WaitForState(SERVICE_RUNNING, 10000);
}

bool InstalledService::Deleted() const {
    if (::ChangeServiceConfigW(service_.get(), SERVICE_NO_CHANGE, SERVICE_NO_CHANGE, SERVICE_NO_CHANGE, nullptr, nullptr,
                               nullptr, nullptr, nullptr, nullptr, nullptr))
        return false;
    return ::GetLastError() == ERROR_SERVICE_MARKED_FOR_DELETE;
}

void InstalledService::Release() const {
    tol::unique_event release(::OpenEventW(EVENT_MODIFY_STATE, FALSE, ReleaseEventName(keyName_).c_str()));
    if (release) ::SetEvent(release.get());
}

// Whatever state a test left the service in: let a start finish, stop it, delete it.
void InstalledService::Remove() noexcept {
    if (!service_) return;
    Release();
    const ULONGLONG deadline = ::GetTickCount64() + 10000;
    while ((State() == SERVICE_START_PENDING || State() == SERVICE_STOP_PENDING) && ::GetTickCount64() < deadline)
        ::Sleep(50);
    SERVICE_STATUS status{};
    if (State() != SERVICE_STOPPED && ::ControlService(service_.get(), SERVICE_CONTROL_STOP, &status))
        WaitForState(SERVICE_STOPPED, 10000);
    ::DeleteService(service_.get());
    service_.reset();
}

} // namespace testservice
