#include "host_command.h"
#include "frame/bstr.h"
#include "frame/errors.h"
#include "frame/step.h"
#include "frame/variant.h"

namespace tol {
namespace {

// What the host is asked for besides the command line: no start folder and no account, the output logged,
// no time limit, wait for the end, and exit code 0 as the only success.
constexpr long kLogOutput = 1;
constexpr long kNoTimeout = 0;
constexpr long kReserved = 0;
constexpr wchar_t kSuccessCodes[] = L"0";

} // namespace

long RunHostCommand(IBuildRun* build, const std::wstring& commandLine) {
    const bstr command(commandLine);
    const bstr startFolder(L"");
    const bstr account(L"");
    const bstr successCodes(kSuccessCodes);
    if (!build) throw comet::com_error(E_POINTER);
    variant exitCode; // the host's business: cleared unread
    long status = StepFailed;
    THROW_IF_HOST_FAILED(build, IBuildRun,
                         build->RunCommandLine(command.get(), startFolder.get(), exitCode.receive(), kLogOutput,
                                               account.get(), kNoTimeout, kReserved, VARIANT_TRUE, successCodes.get(),
                                               &status));
    return status;
}

} // namespace tol
