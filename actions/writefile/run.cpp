// Write File: writes the step's text into a file in a code page, replacing the file or appending to it.
#include "actions/actions.h"
#include "fileutil/textfile.h"
#include "frame/step.h"
#include "frame/variant.h"

namespace tol {
namespace {

// An Encoding that the step does not hold is never read as a number: the file is then in the ANSI code page.
UINT ReadCodePage(IBuildRun* build, IBuildStep* step) {
    if (GetStepStored(step, L"Encoding").empty()) return CP_ACP;
    return static_cast<UINT>(GetStepLong(step, build, L"Encoding"));
}

} // namespace

// The writer creates (or truncates) the file before the text is read, and a failure after that point leaves the
// file as far as it got: the host sees the error, and the step's file shows how far the write went.
long RunWriteFile(IBuildRun* build, IBuildStep* step) {
    const UINT codePage = ReadCodePage(build, step);
    const variant append = GetStepValue(step, build, L"Append", VT_BOOL);
    const std::wstring filename = GetStepText(step, build, L"Filename");
    TextFileWriter writer(filename, codePage, VariantToBool(append.get()));
    const std::wstring text = GetStepText(step, build, L"Text");
    writer.WriteText(text.c_str());
    return StepSucceeded;
}

} // namespace tol
