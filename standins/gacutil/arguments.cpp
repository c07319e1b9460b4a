#include "arguments.h"
#include "failure.h"
#include <windows.h>

namespace gac {
namespace {

struct SwitchRow {
    const wchar_t* name;
    Operation operation; // None: the switch chooses no operation (/nologo)
    bool force;
    bool nativeImages;
};

const SwitchRow kSwitches[] = {
    {L"nologo", Operation::None, false, false},    {L"i", Operation::Install, false, false},
    {L"if", Operation::Install, true, false},      {L"u", Operation::Uninstall, false, false},
    {L"uf", Operation::Uninstall, true, false},    {L"ungen", Operation::Uninstall, false, true},
    {L"l", Operation::List, false, false},         {L"?", Operation::Help, false, false},
};

const wchar_t* const kUsage[] = {
    L"Usage: gacutil [/nologo] <operation>",
    L"  /i <assembly file>     install the assembly; an identical copy already installed is no failure",
    L"  /if <assembly file>    install the assembly, replacing a different copy of the same name",
    L"  /u <assembly name>     uninstall the assembly (a name, a display name \"Name, Version=...\" or a file path)",
    L"  /uf <assembly name>    uninstall the assembly (this cache keeps no references: as /u)",
    L"  /ungen <assembly name> uninstall the assembly with its native images (this cache keeps none: as /u)",
    L"  /l                     list the installed assemblies",
    L"The cache is the folder named by VELMORA_GAC_STORE, else the folder gac beside this program.",
    nullptr,
};

bool IsSwitch(const wchar_t* argument) noexcept { return argument[0] == L'/' || argument[0] == L'-'; }

const SwitchRow& FindSwitch(const wchar_t* argument) {
    for (const SwitchRow& row : kSwitches) {
        if (::CompareStringOrdinal(argument + 1, -1, row.name, -1, TRUE) == CSTR_EQUAL) return row;
    }
    FailUsage(std::wstring(L"Unknown option ") + argument + L".");
}

void TakeSwitch(Request& request, const wchar_t* argument) {
    const SwitchRow& row = FindSwitch(argument);
    if (row.operation == Operation::None) {
        request.logo = false;
        return;
    }
    if (request.operation != Operation::None) FailUsage(L"Only one of /i, /if, /u, /uf, /ungen, /l and /? may be given.");
    request.operation = row.operation;
    request.force = row.force;
    request.nativeImages = row.nativeImages;
}

void RequireAssemblyArgument(const Request& request, int assemblies) {
    const bool wanted = request.operation == Operation::Install || request.operation == Operation::Uninstall;
    if (request.operation == Operation::None) FailUsage(L"No operation given.");
    if (wanted && assemblies == 0) FailUsage(L"The operation needs an assembly.");
    if (assemblies > 1 || (!wanted && assemblies == 1)) FailUsage(L"Too many arguments.");
    if (wanted && request.assembly.empty()) FailUsage(L"The assembly argument is empty.");
}

} // namespace

Request ParseArguments(int argc, const wchar_t* const* argv) {
    Request request;
    int assemblies = 0;
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] != L'\0' && IsSwitch(argv[i])) {
            TakeSwitch(request, argv[i]);
        } else if (++assemblies == 1) {
            request.assembly = argv[i];
        }
    }
    RequireAssemblyArgument(request, assemblies);
    return request;
}

const wchar_t* const* UsageLines() { return kUsage; }

} // namespace gac
