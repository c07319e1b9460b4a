// Write File: writes the step's text into a file in a code page, replacing the file or appending to it.
#include "actions/actions.h"
#include "fileutil/textfile.h"
#include "frame/bstr.h"
#include "frame/errors.h"
#include "frame/step.h"
#include "frame/variant.h"

namespace tol {
namespace {

// An Encoding that the step does not hold is never read as a number: the file is then in the ANSI code page.
UINT ReadCodePage(IBuildRun* build, IBuildStep* step) {
    if (GetStepStored(step, L"Encoding").empty()) return CP_ACP;
    return static_cast<UINT>(GetStepLong(step, build, L"Encoding"));
}

// The evaluated value as the host gives it; the caller converts it when it needs it.
variant ReadEvaluated(IBuildRun* build, IBuildStep* step, const wchar_t* name, VARTYPE wanted) {
    bstr property(name);
    if (!step) throw comet::com_error(E_POINTER);
    variant value;
    THROW_IF_HOST_FAILED(step, IBuildStep, step->GetEvaluatedProperty(build, property.get(), wanted, value.receive()));
    return value;
}

} // namespace

// The writer creates (or truncates) the file before the text is read, and a failure after that point leaves the
// file as far as it got: the host sees the error, and the step's file shows how far the write went.
long RunWriteFile(IBuildRun* build, IBuildStep* step) {
    const UINT codePage = ReadCodePage(build, step);
    const variant append = ReadEvaluated(build, step, L"Append", VT_BOOL);
    const std::wstring filename = GetStepText(step, build, L"Filename");
    TextFileWriter writer(filename, codePage, VariantToBool(append.get()));
    const std::wstring text = GetStepText(step, build, L"Text");
    writer.WriteText(text.c_str());
    return StepSucceeded;
}

} // namespace tol
