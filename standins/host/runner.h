// The step loop: each enabled step's action is created and executed in turn until one does not succeed.
#pragma once
#include "catalog.h"
#include "expander.h"
#include "log.h"
#include "script.h"
#include <functional>
#include <memory>

namespace host {

enum ExitCode : int { kExitSucceeded = 0, kExitFailed = 1, kExitStopped = 2, kExitUsage = 64 };

// Creates the action of a step; failures throw comet::com_error.
using ActionFactory = std::function<tol::com_ptr<IBuildAction>(const ScriptStep& step)>;

struct RunContext {
    Log& log;
    IBuildRun* build;
    HANDLE stopEvent;
    std::shared_ptr<const Expander> expander;
    ActionFactory createAction;
};

// Runs the steps and answers the exit code: succeeded, failed or stopped.
int RunSteps(const std::vector<ScriptStep>& steps, const RunContext& context);

// Every enabled step must name an action of the catalog; a ScriptError names the first that does not and lists
// the known actions. Disabled steps may name actions that this machine lacks.
void CheckActions(const Script& script, const std::vector<CatalogEntry>& catalog);

} // namespace host
