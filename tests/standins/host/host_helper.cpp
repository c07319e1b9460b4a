// A command for the RunCommandLine tests. It does what its arguments say, in order:
//   out TEXT | err TEXT   writes TEXT and a line feed to stdout or stderr
//   hex BYTES             writes raw bytes to stdout ("C3BC0A")
//   pid                   writes "pid N" to stdout
//   sleep MS | exit CODE  sleeps; ends with the code
//   spawn "ARGS"          starts another copy with ARGS, which inherits the output handles, and does not wait
#include "frame/handles.h"
#include <windows.h>
#include <cstdlib>
#include <string>

namespace {

void Write(DWORD which, const std::string& bytes) {
    DWORD written = 0;
    ::WriteFile(::GetStdHandle(which), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

void Spawn(const std::string& args) {
    char self[32768];
    std::string command = "\"" + std::string(self, ::GetModuleFileNameA(nullptr, self, sizeof self)) + "\" " + args;
    STARTUPINFOA startup{sizeof startup};
    PROCESS_INFORMATION info{};
    if (::CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &info)) {
        const tol::unique_process process(info.hProcess), thread(info.hThread);
    }
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const std::string value = word == "pid" || i + 1 == argc ? "" : argv[++i];
        std::string bytes;
        for (size_t at = 0; word == "hex" && at + 1 < value.size(); at += 2)
            bytes += static_cast<char>(std::strtoul(value.substr(at, 2).c_str(), nullptr, 16));
        if (word == "pid") Write(STD_OUTPUT_HANDLE, "pid " + std::to_string(::GetCurrentProcessId()) + "\n");
        if (word == "out" || word == "hex") Write(STD_OUTPUT_HANDLE, word == "hex" ? bytes : value + "\n");
        if (word == "err") Write(STD_ERROR_HANDLE, value + "\n");
        if (word == "sleep") ::Sleep(std::strtoul(value.c_str(), nullptr, 10));
        if (word == "exit") return static_cast<int>(std::strtol(value.c_str(), nullptr, 10));
        if (word == "spawn") Spawn(value);
    }
    return 0;
}
