// Write File: writes the step's text into a file in a code page, replacing the file or appending to it.
#include "actions/actions.h"
#include "fileutil/textfile.h"
#include "frame/step.h"
#include "frame/variant.h"

namespace tol {

// The writer creates (or truncates) the file before the text is read, and a failure after that point leaves the
// file as far as it got: the host sees the error, and the step's file shows how far the write went.
long RunWriteFile(IBuildRun* build, IBuildStep* step) {
    const UINT codePage = GetStepCodePage(step, build);
    const variant append = GetStepValue(step, build, L"Append", VT_BOOL);
    const std::wstring filename = GetStepText(step, build, L"Filename");
    TextFileWriter writer(filename, codePage, VariantToBool(append.get()));
    const std::wstring text = GetStepText(step, build, L"Text");
    writer.WriteText(text.c_str());
    return StepSucceeded;
}

} // namespace tol
