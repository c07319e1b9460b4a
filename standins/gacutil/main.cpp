// gacutil.exe: a small stand-in for the .NET SDK's assembly cache tool, for tests and demonstrations. It keeps
// "installed" assemblies as copies in a folder (see store.h) and prints one line for what it did.
// Exit codes: 0 done, 1 the operation failed, 2 the command line is not understood.
#include "arguments.h"
#include "console.h"
#include "failure.h"
#include "names.h"
#include "store.h"
#include <exception>

namespace gac {
namespace {

constexpr wchar_t kAdded[] = L"Assembly successfully added to the cache: ";

void Install(const Request& request) {
    const Installed installed = Store(StoreFolder()).Install(request.assembly, request.force);
    switch (installed.outcome) {
    case InstallOutcome::Added: PrintLine(kAdded + installed.name); break;
    case InstallOutcome::AlreadyIdentical: PrintLine(kAdded + installed.name + L" (an identical copy was already there)"); break;
    case InstallOutcome::Replaced: PrintLine(kAdded + installed.name + L" (a different copy was replaced)"); break;
    }
}

void Uninstall(const Request& request) {
    const std::wstring name = AssemblyNameOfArgument(request.assembly);
    if (!IsValidAssemblyName(name)) Fail(L"\"" + request.assembly + L"\" does not give a usable assembly name.");
    Store(StoreFolder()).Uninstall(name);
    const wchar_t* images = request.nativeImages ? L" (native images included)" : L"";
    PrintLine(L"Assembly successfully uninstalled from the cache: " + name + images);
}

void List() {
    const std::vector<std::wstring> assemblies = Store(StoreFolder()).List();
    for (const std::wstring& line : assemblies) PrintLine(L"  " + line);
    PrintLine(L"Number of assemblies = " + std::to_wstring(assemblies.size()));
}

void PrintUsage(void (*print)(std::wstring_view)) {
    for (const wchar_t* const* line = UsageLines(); *line; ++line) print(*line);
}

int Run(int argc, const wchar_t* const* argv) {
    const Request request = ParseArguments(argc, argv);
    if (request.logo) PrintLine(L"Velmora assembly cache stand-in (keeps assemblies as copies in a folder)");
    switch (request.operation) {
    case Operation::Install: Install(request); break;
    case Operation::Uninstall: Uninstall(request); break;
    case Operation::List: List(); break;
    default: PrintUsage(PrintLine); break;
    }
    return kSucceeded;
}

} // namespace
} // namespace gac

int wmain(int argc, wchar_t** argv) {
    try {
        return gac::Run(argc, argv);
    } catch (const gac::failure& f) {
        gac::PrintError(L"Error: " + f.message);
        if (f.exitCode == gac::kBadArguments) gac::PrintUsage(gac::PrintError);
        return f.exitCode;
    } catch (const std::exception& e) {
        gac::PrintError(L"Error: " + std::wstring(e.what(), e.what() + std::char_traits<char>::length(e.what())));
        return gac::kFailed;
    }
}
