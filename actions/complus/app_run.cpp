// COM+ Application: creates or modifies an application, or deletes, shuts down or starts one or every
// application of the catalog of this or another computer.
#include "actions/actions.h"
#include "application.h"
#include "frame/errors.h"
#include "frame/messages.h"

namespace tol {
namespace {

enum ApplicationOp : long { OpCreateModify = 0, OpDelete = 1, OpShutdown = 2, OpStart = 3 };

constexpr const wchar_t* kPastTense[] = {L"modified", L"deleted", L"shutdown", L"started"};
constexpr unsigned kSummary = 214; // "%1!d! application(s) %2"

// Only the four operations the page stores: any other value changes nothing and reaches the host as E_INVALIDARG.
ApplicationOp ReadOp(IBuildRun* build, IBuildStep* step) {
    const long op = GetStepLong(step, build, L"Op");
    if (op < OpCreateModify || op > OpStart) throw comet::com_error(E_INVALIDARG);
    return static_cast<ApplicationOp>(op);
}

// The number of applications handled; only the "*" operations count.
long Perform(const ApplicationRun& run, ApplicationOp op, const std::wstring& name, bool every) {
    const ServerCommand command = op == OpShutdown ? ServerCommand::Shutdown : ServerCommand::Start;
    switch (op) {
    case OpCreateModify:
        CreateOrModifyApplication(run, name);
        return 0;
    case OpDelete:
        if (every) return DeleteEveryApplication(run);
        DeleteOneApplication(run, name);
        return 0;
    default:
        if (every) return ControlEveryApplication(run, command);
        ControlOneApplication(run, command, name);
        return 0;
    }
}

} // namespace

long RunComPlusApplication(IBuildRun* build, IBuildStep* step) {
    StopSignal stop(build);
    const Catalog catalog(GetStepText(step, build, L"Computer"));
    const CatalogCollection applications = catalog.Collection(L"Applications");
    const std::wstring name = GetStepText(step, build, L"Application");
    const bool every = name == L"*";
    const ApplicationOp op = ReadOp(build, step);

    const long handled = Perform(ApplicationRun{build, step, stop, catalog, applications}, op, name, every);
    if (every && op != OpCreateModify) LogMessage(build, FormatResourceMessage(kSummary, {handled, kPastTense[op]}));
    return stop.IsStopped() ? StepStopped : StepSucceeded;
}

} // namespace tol
