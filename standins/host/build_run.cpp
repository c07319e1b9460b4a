#include "build_run.h"
#include "command.h"
#include "host_object.h"
#include "text.h"
#include "text_expander.h"
#include "values.h"
#include "frame/step.h"
#include <algorithm>

namespace host {
namespace {

class BuildRun final : public HostObject<IBuildRun> {
public:
    BuildRun(Log& log, HANDLE stopEvent, std::shared_ptr<const Expander> expander)
        : log_(log), stop_(stopEvent), expander_(MakeTextExpander(std::move(expander))) {}

    STDMETHODIMP GetTextExpander(ITextExpander** expander) override {
        if (expander) *expander = nullptr;
        return Call<IBuildRun>([&] {
            if (!expander) throw comet::com_error(E_POINTER);
            *expander = tol::com_ptr<ITextExpander>(expander_).detach();
            return S_OK;
        });
    }

    STDMETHODIMP RunCommandLine(BSTR commandLine, BSTR startFolder, VARIANT* exitCode, long logOutput, BSTR account,
                                long timeoutSeconds, long, VARIANT_BOOL wait, BSTR successCodes, long* status) override {
        if (exitCode) ::VariantInit(exitCode);
        if (status) *status = tol::StepFailed;
        return Call<IBuildRun>([&] {
            if (!exitCode || !status) throw comet::com_error(E_POINTER);
            if (!BstrView(account).empty())
                ThrowDescribed(E_NOTIMPL, IID_IBuildRun,
                               L"velmora-run cannot run a command as another account (" + std::wstring(BstrView(account)) +
                                   L").");
            const auto codes = ParseSuccessCodes(BstrView(successCodes));
            if (!codes)
                ThrowDescribed(E_INVALIDARG, IID_IBuildRun,
                               L"The success codes \"" + std::wstring(BstrView(successCodes)) +
                                   L"\" are not integers separated by \",\" or \";\".");
            const CommandRequest request{std::wstring(BstrView(commandLine)), std::wstring(BstrView(startFolder)), timeoutSeconds,
                                         wait != VARIANT_FALSE};
            const CommandOutcome outcome = RunCommand(request, stop_, [&](const std::wstring& line) {
                if (logOutput) log_.Line(line);
            });
            *status = Report(request, outcome, *codes, exitCode);
            return S_OK;
        });
    }

    // The flag changes nothing: every message goes to stdout.
    STDMETHODIMP LogMessage(BSTR text, VARIANT_BOOL) override {
        return Call<IBuildRun>([&] {
            log_.Line(BstrView(text));
            return S_OK;
        });
    }

    STDMETHODIMP GetStopEvent(long* event) override {
        return Call<IBuildRun>([&] {
            if (!event) throw comet::com_error(E_POINTER);
            *event = ::HandleToLong(stop_);
            return S_OK;
        });
    }

private:
    long Report(const CommandRequest& request, const CommandOutcome& outcome, const std::vector<long>& codes, VARIANT* exitCode) {
        if (outcome.end == CommandEnd::NotStarted) {
            log_.Line(L"error: cannot run " + request.commandLine + L": " + SystemText(HRESULT_FROM_WIN32(outcome.startError)));
            return tol::StepFailed;
        }
        if (outcome.end == CommandEnd::NotWaited) return tol::StepSucceeded;
        V_VT(exitCode) = VT_I4;
        V_I4(exitCode) = static_cast<LONG>(outcome.exitCode);
        if (outcome.end == CommandEnd::TimedOut) {
            log_.Line(L"error: " + request.commandLine + L" did not end within its time limit of " +
                      std::to_wstring(request.timeoutSeconds) + L" s and was ended");
            return tol::StepFailed;
        }
        if (outcome.end == CommandEnd::Stopped) {
            log_.Line(L"stopped: " + request.commandLine);
            return tol::StepStopped;
        }
        const bool success = std::find(codes.begin(), codes.end(), V_I4(exitCode)) != codes.end();
        return success ? tol::StepSucceeded : tol::StepFailed;
    }

    Log& log_;
    HANDLE stop_;
    tol::com_ptr<ITextExpander> expander_;
};

} // namespace

tol::com_ptr<IBuildRun> MakeBuildRun(Log& log, HANDLE stopEvent, std::shared_ptr<const Expander> expander) {
    return MakeHostObject<IBuildRun, BuildRun>(log, stopEvent, std::move(expander));
}

} // namespace host
