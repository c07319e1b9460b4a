// GAC Install: installs an assembly in the Global Assembly Cache, or uninstalls it, through gacutil run by the
// host, then records or forgets the assembly's folder among .NET's assembly folders.
#include "actions/actions.h"
#include "assembly_folders.h"
#include "command.h"
#include "frame/step.h"
#include "host_command.h"

namespace tol {
namespace {

// Properties are read in the action's order: Unregister, NGEN or Force, Filename, ShowCmd.
struct GacCommand {
    std::wstring commandLine;
    std::wstring filename;
    bool unregister = false;
};

GacCommand BuildGacCommand(IBuildRun* build, IBuildStep* step) {
    GacCommand command;
    command.commandLine = ExpandCommandTemplate(build);
    command.unregister = GetStepBool(step, build, L"Unregister");
    command.commandLine += ReadGacSwitch(build, step, command.unregister);
    command.filename = GetStepText(step, build, L"Filename");
    command.commandLine += QuotedAssemblyPath(command.filename);
    return command;
}

} // namespace

long RunGacInstall(IBuildRun* build, IBuildStep* step) {
    const GacCommand command = BuildGacCommand(build, step);
    if (GetStepBool(step, build, L"ShowCmd")) LogMessage(build, command.commandLine);
    const long status = RunHostCommand(build, command.commandLine);
    if (status != StepSucceeded) return status; // the registry is left as it is
    const std::wstring entry = GetStepText(step, build, L"AssemblyFolder");
    if (entry.empty()) return StepSucceeded;
    if (command.unregister) {
        ForgetAssemblyFolder(entry);
    } else {
        RecordAssemblyFolder(entry, command.filename);
    }
    return StepSucceeded;
}

} // namespace tol
