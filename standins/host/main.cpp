// velmora-run: runs a build script of steps with the registered actions, as a host would on a build agent.
#include "build_run.h"
#include "catalog.h"
#include "editor.h"
#include "options.h"
#include "runner.h"
#include "stop.h"
#include "expander.h"
#include "fileutil/paths.h"
#include "frame/messages.h"
#include <objbase.h>

namespace {

using namespace host;

class ComApartment {
public:
    ComApartment() { THROW_IF_FAILED(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    ~ComApartment() { ::CoUninitialize(); }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;
};

int ListActions(Log& out, Log& err) {
    const std::vector<CatalogEntry> catalog = ReadCatalog();
    if (catalog.empty()) {
        err.Line(L"velmora-run: no actions are registered under " + CatalogLocation());
        return kExitFailed;
    }
    for (const CatalogEntry& entry : catalog) {
        out.Line(entry.name + L" (" + entry.category + L"): " + entry.description);
        std::wstring progIds = L"    " + entry.actionProgId + L", " + entry.page1ProgId;
        if (!entry.page2ProgId.empty()) progIds += L", " + entry.page2ProgId;
        out.Line(progIds);
    }
    return kExitSucceeded;
}

// The .NET SDK folder that GAC Install's command template names: the gacutil stand-in beside this program,
// unless the environment (or the script, whose variables come first) says otherwise.
void DefaultSdkFolder() {
    if (EnvironmentValue(L"DOTNETSDK_DIR")) return;
    std::wstring path(1024, L'\0');
    const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (length == 0 || length >= path.size()) return;
    path.resize(length);
    ::SetEnvironmentVariableW(L"DOTNETSDK_DIR", (tol::DirectoryPart(path, true) + L"sdk\\").c_str());
}

int RunScriptFile(const Options& options, Log& out) {
    DefaultSdkFolder();
    Script script = LoadScript(options.script);
    const std::vector<CatalogEntry> catalog = ReadCatalog();
    try {
        CheckActions(script, catalog);
    } catch (const ScriptError& e) {
        throw ScriptError(options.script + L": " + e.message());
    }
    const auto expander = std::make_shared<const Expander>(std::move(script.variables), options.variables);
    StopControl stop(out, options.timeoutSeconds);
    const tol::com_ptr<IBuildRun> build = MakeBuildRun(out, stop.event(), expander);
    const RunContext context{out, build.get(), stop.event(), expander, [&](const ScriptStep& step) {
                                 return CreateAction(FindAction(catalog, step.action)->actionProgId);
                             }};
    return RunSteps(script.steps, context);
}

int Run(const std::vector<std::wstring>& args, Log& out, Log& err) {
    const Options options = ParseOptions(args);
    if (options.help) {
        out.Line(UsageText());
        return kExitSucceeded;
    }
    const ComApartment apartment;
    if (options.edit) {
        DefaultSdkFolder();
        return EditScriptStep(options);
    }
    return options.list ? ListActions(out, err) : RunScriptFile(options, out);
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    ConsoleLog out(STD_OUTPUT_HANDLE), err(STD_ERROR_HANDLE);
    try {
        return Run(std::vector<std::wstring>(argv + 1, argv + argc), out, err);
    } catch (const UsageError& e) {
        err.Line(L"velmora-run: " + e.message());
        err.Line(L"Try \"velmora-run --help\".");
        return kExitUsage;
    } catch (const ScriptError& e) {
        err.Line(L"velmora-run: " + e.message());
        return kExitUsage;
    } catch (const std::exception& e) {
        err.Line(L"velmora-run: " + tol::ExceptionMessage(e));
        return kExitFailed;
    }
}
