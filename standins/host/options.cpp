#include "options.h"
#include <algorithm>
#include <cwctype>

namespace host {
namespace {

long ParseTimeout(const std::wstring& text) {
    const bool digits = !text.empty() && text.size() <= 10 &&
                        std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
    const long long value = digits ? std::stoll(text) : 0;
    if (value < 1 || value > 0x7FFFFFFF)
        throw UsageError(L"--timeout needs a whole number of seconds from 1 to 2147483647, not \"" + text + L"\"");
    return static_cast<long>(value);
}

void AddVariable(Options& options, const std::wstring& assignment) {
    const size_t equals = assignment.find(L'=');
    if (equals == 0 || equals == std::wstring::npos) throw UsageError(L"--var needs NAME=VALUE, not \"" + assignment + L"\"");
    const std::wstring name = assignment.substr(0, equals);
    if (name.find(L'%') != std::wstring::npos) throw UsageError(L"a variable name cannot hold \"%\": \"" + name + L"\"");
    options.variables.insert_or_assign(name, assignment.substr(equals + 1));
}

const std::wstring& ValueOf(const std::vector<std::wstring>& args, size_t& i) {
    if (i + 1 >= args.size()) throw UsageError(args[i] + L" needs a value");
    return args[++i];
}

size_t ParseStepNumber(const std::wstring& text) {
    const bool digits = !text.empty() && text.size() <= 9 &&
                        std::all_of(text.begin(), text.end(), [](wchar_t c) { return c >= L'0' && c <= L'9'; });
    const long long value = digits ? std::stoll(text) : 0;
    if (value < 1) throw UsageError(L"--edit needs a step number from 1, or \"new\" and an action, not \"" + text + L"\"");
    return static_cast<size_t>(value);
}

// --edit SCRIPT N or --edit SCRIPT new ACTION
void ParseEdit(Options& options, const std::vector<std::wstring>& args, size_t& i) {
    if (i + 2 >= args.size()) throw UsageError(L"--edit needs a script and a step number (or \"new\" and an action)");
    if (!options.script.empty())
        throw UsageError(L"one script at a time: \"" + options.script + L"\" and \"" + args[i + 1] + L"\"");
    options.edit = true;
    options.script = args[++i];
    if (args[++i] != L"new") {
        options.editStep = ParseStepNumber(args[i]);
        return;
    }
    if (i + 1 >= args.size() || args[i + 1].empty()) throw UsageError(L"--edit SCRIPT new needs the name of an action");
    options.newAction = args[++i];
}

void CheckCombination(const Options& options) {
    if (options.help) return;
    if (options.script.empty() && !options.list) throw UsageError(L"no script given");
    if (!options.screenshotPrefix.empty() && !options.edit) throw UsageError(L"--screenshot works only with --edit");
    if (options.scriptPage && !options.edit) throw UsageError(L"--script-page works only with --edit");
    if (options.edit && options.list) throw UsageError(L"--list and --edit cannot be combined");
    if (options.edit && options.timeoutSeconds) throw UsageError(L"--timeout does not apply to --edit");
}

} // namespace

Options ParseOptions(const std::vector<std::wstring>& args) {
    Options options;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::wstring& arg = args[i];
        if (arg == L"--help" || arg == L"-h" || arg == L"/?") {
            options.help = true;
        } else if (arg == L"--list") {
            options.list = true;
        } else if (arg == L"--var") {
            AddVariable(options, ValueOf(args, i));
        } else if (arg == L"--timeout") {
            options.timeoutSeconds = ParseTimeout(ValueOf(args, i));
        } else if (arg == L"--edit") {
            ParseEdit(options, args, i);
        } else if (arg == L"--script-page") {
            options.scriptPage = true;
        } else if (arg == L"--screenshot") {
            options.screenshotPrefix = ValueOf(args, i);
            if (options.screenshotPrefix.empty()) throw UsageError(L"--screenshot needs a file name prefix");
        } else if (arg.size() > 1 && arg[0] == L'-') {
            throw UsageError(L"unknown option " + arg);
        } else if (!options.script.empty()) {
            throw UsageError(L"one script at a time: \"" + options.script + L"\" and \"" + arg + L"\"");
        } else {
            options.script = arg;
        }
    }
    CheckCombination(options);
    return options;
}

std::wstring UsageText() {
    return L"usage: velmora-run [options] SCRIPT.json\n"
           L"       velmora-run --edit SCRIPT.json N|new ACTION [--script-page] [--screenshot PREFIX] [--var NAME=VALUE]\n"
           L"Runs the steps of a build script with the registered actions, or edits one step in the action's pages.\n"
           L"\n"
           L"  --var NAME=VALUE   a value for %NAME% references (the script's own variables come first)\n"
           L"  --timeout SECONDS  stops the run when it takes longer\n"
           L"  --list             lists the registered actions\n"
           L"  --edit SCRIPT N    opens step N (from 1) in the step editor; OK writes it back into the script\n"
           L"  --edit SCRIPT new ACTION\n"
           L"                     opens a new step of the action; OK appends it to the script\n"
           L"  --script-page      with --edit: a further tab edits the step's \"Text\" in the script editor control\n"
           L"  --screenshot PREFIX\n"
           L"                     with --edit: writes PREFIX-PAGE.png of each page and closes without saving\n"
           L"  --help             shows this text\n"
           L"\n"
           L"Exit codes: 0 every step succeeded, 1 a step failed, 2 the run was stopped,\n"
           L"64 a bad command line or script.\n"
           L"With --edit: 0 the step was saved (or the pictures written), 1 an error, 2 cancelled (the script is\n"
           L"unchanged), 64 a bad command line, script, step number or action.";
}

} // namespace host
