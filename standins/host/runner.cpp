#include "runner.h"
#include "build_step.h"
#include "text.h"
#include "values.h"
#include "frame/bstr.h"
#include "frame/step.h"
#include <climits>

namespace host {
namespace {

std::wstring Heading(size_t number, const ScriptStep& step) {
    std::wstring heading = L"== Step " + std::to_wstring(number) + L": " + step.action;
    if (!step.name.empty()) heading += L" (" + step.name + L")";
    return heading;
}

// The description the action left as error information, else the system's text for the code.
std::wstring DescribeFailure(HRESULT hr, IBuildAction* action) {
    const tol::com_ptr<ISupportErrorInfo> support = tol::com_ptr<IBuildAction>(action).query<ISupportErrorInfo>();
    tol::com_ptr<IErrorInfo> info;
    if (support && support->InterfaceSupportsErrorInfo(IID_IBuildAction) == S_OK && ::GetErrorInfo(0, info.put()) == S_OK &&
        info) {
        tol::bstr description;
        if (SUCCEEDED(info->GetDescription(description.receive())) && !description.view().empty())
            return TrimLineEnd(description.str());
    }
    return SystemText(hr);
}

long Execute(const ScriptStep& step, IBuildAction* action, const RunContext& context) {
    const tol::com_ptr<IBuildStep> buildStep = MakeBuildStep(CopyProperties(step.properties), context.expander);
    ::SetErrorInfo(0, nullptr); // what is found afterwards comes from this call
    constexpr long kNotAnswered = LONG_MIN;
    long status = kNotAnswered;
    const HRESULT hr = action->Execute(context.build, buildStep.get(), &status);
    if (FAILED(hr)) {
        context.log.Line(L"error " + HexCode(hr) + L": " + DescribeFailure(hr, action));
        return tol::StepFailed;
    }
    if (status == tol::StepSucceeded || status == tol::StepFailed || status == tol::StepStopped) return status;
    if (status == kNotAnswered) {
        context.log.Line(L"error: the action succeeded without answering a status");
        return tol::StepFailed;
    }
    context.log.Line(L"error: the action answered status " + std::to_wstring(status) +
                     L", which is none of 0 (succeeded), 1 (failed) and 2 (stopped)");
    return tol::StepFailed;
}

long RunStep(const ScriptStep& step, const RunContext& context) {
    tol::com_ptr<IBuildAction> action;
    try {
        action = context.createAction(step);
    } catch (const comet::com_error& e) {
        context.log.Line(L"error " + HexCode(e.hr()) + L": cannot create the " + step.action + L" action: " +
                         TrimLineEnd(e.message()));
        return tol::StepFailed;
    }
    return Execute(step, action.get(), context);
}

const wchar_t* Outcome(long status) {
    return status == tol::StepSucceeded ? L"succeeded" : status == tol::StepStopped ? L"stopped" : L"failed";
}

} // namespace

int RunSteps(const std::vector<ScriptStep>& steps, const RunContext& context) {
    for (size_t i = 0; i < steps.size(); ++i) {
        const size_t number = i + 1;
        if (steps[i].disabled) {
            context.log.Line(Heading(number, steps[i]) + L" skipped");
            continue;
        }
        if (::WaitForSingleObject(context.stopEvent, 0) == WAIT_OBJECT_0) {
            context.log.Line(L"== Stopped before step " + std::to_wstring(number));
            return kExitStopped;
        }
        context.log.Line(Heading(number, steps[i]));
        const long status = RunStep(steps[i], context);
        context.log.Line(L"== Step " + std::to_wstring(number) + L" " + Outcome(status));
        if (status != tol::StepSucceeded) return status == tol::StepStopped ? kExitStopped : kExitFailed;
    }
    return kExitSucceeded;
}

void CheckActions(const Script& script, const std::vector<CatalogEntry>& catalog) {
    for (size_t i = 0; i < script.steps.size(); ++i) {
        const ScriptStep& step = script.steps[i];
        if (step.disabled || FindAction(catalog, step.action)) continue;
        const std::wstring known = catalog.empty() ? L"no actions are registered under " + CatalogLocation()
                                                   : L"the known actions are: " + ActionNames(catalog);
        throw ScriptError(StepTitle(i + 1, step) + L": unknown action \"" + step.action + L"\"; " + known);
    }
}

} // namespace host
