// What every run routine uses: typed step properties, the build log, step status and the stop signal.
#pragma once
#include "VelmoraSvr.h"
#include "variant.h"
#include <string>

namespace tol {

enum StepStatus : long { StepSucceeded = 0, StepFailed = 1, StepStopped = 2 };

// The property's value for this build, converted as the wanted type; a null text reads as empty.
std::wstring GetStepText(IBuildStep* step, IBuildRun* build, const wchar_t* name);
bool GetStepBool(IBuildStep* step, IBuildRun* build, const wchar_t* name);
long GetStepLong(IBuildStep* step, IBuildRun* build, const wchar_t* name);
// The evaluated value as the host gives it, unconverted (the caller converts it when it needs it).
variant GetStepValue(IBuildStep* step, IBuildRun* build, const wchar_t* name, VARTYPE wanted);
// The stored value as text: empty when the step does not hold the property.
std::wstring GetStepStored(IBuildStep* step, const wchar_t* name);

// Conversions of a returned VARIANT; a failed conversion throws comet::com_error with its HRESULT.
std::wstring VariantToText(const VARIANT& value);
bool VariantToBool(const VARIANT& value);
long VariantToLong(const VARIANT& value);

// The code page of a step's files: its Encoding property, or the ANSI code page (0) when the step does not hold
// one (an unset Encoding is never read as a number).
UINT GetStepCodePage(IBuildStep* step, IBuildRun* build);

void LogMessage(IBuildRun* build, const std::wstring& text);

// Logs the action's message with the system text of the thread's last error and fails the step.
StepStatus LogLastErrorAndFail(IBuildRun* build, unsigned messageId);

// The build's stop event with a latched flag: once seen signalled, always stopped.
class StopSignal {
public:
    explicit StopSignal(IBuildRun* build);
    bool IsStopped() noexcept;
    HANDLE event() const noexcept { return event_; }

private:
    HANDLE event_ = nullptr; // owned by the host
    bool stopped_ = false;
};

} // namespace tol
