// COM+ Component: installs components into an application, changes their settings, deletes them, or reports the
// catalog's settings, for one application or every application, and one component, one DLL or every component.
#include "actions/actions.h"
#include "component.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include "lookup.h"

namespace tol {
namespace {

enum ComponentOp : long { OpAdd = 0, OpModify = 1, OpDelete = 2, OpReport = 3 };

constexpr const wchar_t* kPastTense[] = {L"", L"modified", L"deleted", L"found"};
constexpr unsigned kNotFound = 52; // "Item '%1' not found in %2 collection."
constexpr unsigned kSummary = 218; // "%1!d! component(s) %2"

// Only the four operations the page stores: any other value changes nothing and reaches the host as E_INVALIDARG.
ComponentOp ReadOp(IBuildRun* build, IBuildStep* step) {
    const long op = GetStepLong(step, build, L"Op");
    if (op < OpAdd || op > OpReport) throw comet::com_error(E_INVALIDARG);
    return static_cast<ComponentOp>(op);
}

CatalogItem FindApplication(const CatalogCollection& applications, const std::wstring& name) {
    std::optional<CatalogItem> found = FindObjectByName(applications, name);
    if (!found) throw truntime_error(FormatResourceMessage(kNotFound, {name, applications.name()}));
    return *found;
}

long Perform(const ComponentRun& run, ComponentOp op, const std::wstring& component) {
    switch (op) {
    case OpModify:
        return ModifyComponents(run, component);
    case OpDelete:
        return DeleteComponents(run, component);
    default:
        return ReportComponents(run, component);
    }
}

} // namespace

CatalogCollection ComponentsOf(const ComponentRun& run, const CatalogItem& application) {
    return run.applications.Related(L"Components", application.Key().get());
}

long RunComPlusComponent(IBuildRun* build, IBuildStep* step) {
    StopSignal stop(build);
    const Catalog catalog(GetStepText(step, build, L"Computer"));
    const std::wstring application = GetStepText(step, build, L"Application");
    const std::wstring component = GetStepText(step, build, L"Component");
    const CatalogCollection applications = catalog.Collection(L"Applications");
    ComponentRun run{build, step, stop, catalog, applications, application, std::nullopt};
    if (application != L"*") run.named = FindApplication(applications, application);

    const ComponentOp op = ReadOp(build, step);
    if (op == OpAdd) {
        if (!AddComponents(run, component)) return StepFailed;
    } else {
        const long counted = Perform(run, op, component);
        LogMessage(build, FormatResourceMessage(kSummary, {counted, kPastTense[op]}));
    }
    return stop.IsStopped() ? StepStopped : StepSucceeded;
}

} // namespace tol
