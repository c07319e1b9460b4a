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
        } else if (arg.size() > 1 && arg[0] == L'-') {
            throw UsageError(L"unknown option " + arg);
        } else if (!options.script.empty()) {
            throw UsageError(L"one script at a time: \"" + options.script + L"\" and \"" + arg + L"\"");
        } else {
            options.script = arg;
        }
    }
    if (options.script.empty() && !options.help && !options.list) throw UsageError(L"no script given");
    return options;
}

std::wstring UsageText() {
    return L"usage: velmora-run [options] SCRIPT.json\n"
           L"Runs the steps of a build script with the registered actions.\n"
           L"\n"
           L"  --var NAME=VALUE   a value for %NAME% references (the script's own variables come first)\n"
           L"  --timeout SECONDS  stops the run when it takes longer\n"
           L"  --list             lists the registered actions\n"
           L"  --help             shows this text\n"
           L"\n"
           L"Exit codes: 0 every step succeeded, 1 a step failed, 2 the run was stopped,\n"
           L"64 a bad command line or script.";
}

} // namespace host
