// The command line of velmora-run.
#pragma once
#include "names.h"
#include "frame/errors.h"
#include <string>
#include <vector>

namespace host {

struct Options {
    bool help = false;
    bool list = false;
    long timeoutSeconds = 0; // 0: no limit
    VariableMap variables;   // --var NAME=VALUE; a later value of a name replaces an earlier one
    std::wstring script;

    // --edit SCRIPT N | --edit SCRIPT new ACTION [--screenshot PREFIX]
    bool edit = false;
    size_t editStep = 0;          // from 1; 0: a new step of newAction
    std::wstring newAction;
    std::wstring screenshotPrefix; // not empty: take a picture of each page and close without saving
    bool scriptPage = false;       // --script-page: a further tab edits the step's "Text" in the script editor
};

class UsageError : public tol::truntime_error {
public:
    using truntime_error::truntime_error;
};

// The arguments after the program name; a bad command line throws UsageError.
Options ParseOptions(const std::vector<std::wstring>& args);

std::wstring UsageText();

} // namespace host
