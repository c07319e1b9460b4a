// Service: starts, stops, or stops and deletes a service through the service control manager of this or
// another computer, and waits until the service is running or stopped.
#include "actions/actions.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include "frame/step.h"
#include "keyname.h"
#include "outcome.h"
#include "statewait.h"

namespace tol {
namespace {

enum ServiceCommand : long { CommandStart = 0, CommandStop = 1, CommandStopAndDelete = 2 };

constexpr unsigned kErrorOpeningManager = 22; // "Error opening service manager: %1"
constexpr unsigned kErrorOpeningService = 23; // "Error opening service: %1"
constexpr unsigned kErrorStarting = 24;       // "Error starting service: %1"
constexpr unsigned kErrorStopping = 25;       // "Error stopping service: %1"
constexpr unsigned kErrorDeleting = 26;       // "Error deleting service: %1"
constexpr unsigned kFirstProgressLine = 29;   // "Starting service '%1'...", then Stopping, Deleting
constexpr unsigned kErrorGettingKeyName = 152; // "Error getting service key name: %1"

constexpr DWORD kAccess[] = {
    SERVICE_START | SERVICE_QUERY_STATUS,
    SERVICE_STOP | SERVICE_QUERY_STATUS,
    DELETE | SERVICE_STOP | SERVICE_QUERY_STATUS,
};

// Only the three commands the page stores: any other value touches no service and reaches the host as
// E_INVALIDARG.
ServiceCommand ReadCommand(IBuildRun* build, IBuildStep* step) {
    const long action = GetStepLong(step, build, L"Action");
    if (action < CommandStart || action > CommandStopAndDelete) throw comet::com_error(E_INVALIDARG);
    return static_cast<ServiceCommand>(action);
}

ServiceOutcome StartAndWait(SC_HANDLE service, HANDLE stopEvent) {
    if (!::StartServiceW(service, 0, nullptr)) return LastErrorOutcome(kErrorStarting);
    SERVICE_STATUS status{};
    return WaitForServiceState(service, status, SERVICE_RUNNING, stopEvent);
}

ServiceOutcome StopAndWait(SC_HANDLE service, HANDLE stopEvent, bool deleteWhenStopped) {
    SERVICE_STATUS status{};
    if (!::ControlService(service, SERVICE_CONTROL_STOP, &status)) return LastErrorOutcome(kErrorStopping);
    ServiceOutcome outcome = WaitForServiceState(service, status, SERVICE_STOPPED, stopEvent);
    if (outcome.status != StepSucceeded || !deleteWhenStopped) return outcome;
    if (!::DeleteService(service)) return LastErrorOutcome(kErrorDeleting);
    return outcome;
}

// Opens the service named by its display name with the access the command needs, logs the progress line and
// carries the command out; both handles are closed when this returns.
ServiceOutcome CarryOut(IBuildRun* build, IBuildStep* step) {
    const std::wstring computer = GetStepText(step, build, L"Computer");
    unique_service manager(::OpenSCManagerW(computer.empty() ? nullptr : computer.c_str(), nullptr, SC_MANAGER_CONNECT));
    if (!manager) return LastErrorOutcome(kErrorOpeningManager);

    const std::wstring displayName = GetStepText(step, build, L"Service");
    std::wstring keyName;
    if (!LookUpKeyName(manager.get(), displayName, keyName)) return LastErrorOutcome(kErrorGettingKeyName);

    const ServiceCommand command = ReadCommand(build, step);
    unique_service service(::OpenServiceW(manager.get(), keyName.c_str(), kAccess[command]));
    if (!service) return LastErrorOutcome(kErrorOpeningService);

    const StopSignal stop(build);
    LogMessage(build, FormatResourceMessage(kFirstProgressLine + command, {displayName}));
    if (command == CommandStart) return StartAndWait(service.get(), stop.event());
    return StopAndWait(service.get(), stop.event(), command == CommandStopAndDelete);
}

} // namespace

long RunService(IBuildRun* build, IBuildStep* step) {
    const ServiceOutcome outcome = CarryOut(build, step);
    if (outcome.error.empty()) return outcome.status;
    LogMessage(build, outcome.error);
    return StepFailed;
}

} // namespace tol
