// Runs velmora-run.exe (or any program) as a build agent would, with its output captured in files, and
// registers the real VelmoraExt.dll in the prefix for the tests that need the action catalog.
#pragma once
#include "fileutil/scratch.h" // ScratchFolder, ReadFileBytes, WriteFileBytes
#include <windows.h>
#include <string>
#include <vector>

namespace test {

struct ProgramRun {
    DWORD exitCode = 0xDEAD;
    std::vector<std::wstring> out; // the lines of stdout (UTF-8, or the OEM code page when not UTF-8)
    std::wstring err;
    double seconds = 0; // wall time from start to exit
};

std::wstring BinFolder();

// Starts the command line with stdout and stderr in files of the folder and waits (at most timeoutMs) for it.
ProgramRun RunProgram(std::wstring commandLine, const std::wstring& folder, DWORD timeoutMs = 120000);
// Writes the script (UTF-8 JSON) into the folder and runs velmora-run.exe with the options and the script.
ProgramRun RunScript(const std::string& script, const std::wstring& folder, const std::wstring& options = L"");

// A text as the body of a JSON string: UTF-8 with backslashes and double quotes escaped.
std::string Json(const std::wstring& text);

// Calls an export of a DLL in bin (DllRegisterServer, DllUnregisterServer).
HRESULT CallLibrary(const char* entry, const wchar_t* dll = L"VelmoraExt.dll");

} // namespace test
