// velmora-run --edit: one step of a script in the step editor, written back into the script on OK.
#pragma once
#include "options.h"

namespace host {

// The exit code of an editor closed with Cancel: the script is unchanged.
constexpr int kExitCancelled = 2;

// Opens step options.editStep (or a new step of options.newAction) of options.script. Answers 0 when the step was
// saved (or the pictures written) and kExitCancelled when the editor was cancelled. A step or action that does
// not exist throws UsageError, a script that cannot be read ScriptError; other failures throw.
int EditScriptStep(const Options& options);

} // namespace host
