// A command for the RunCommandLine tests. It does what its arguments say, in order:
//   out TEXT | err TEXT   writes TEXT and a line feed to stdout or stderr
//   hex BYTES             writes raw bytes to stdout ("C3BC0A")
//   pid | cwd             writes "pid N" or the current folder (UTF-8) to stdout
//   sleep MS | exit CODE  sleeps; ends with the code
//   spawn "ARGS"          starts another copy with ARGS, which inherits the output handles, and does not wait
#include "frame/handles.h"
#include <windows.h>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void Write(DWORD which, const std::string& bytes) {
    DWORD written = 0;
    ::WriteFile(::GetStdHandle(which), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
}

std::string FromHex(const char* hex) {
    std::string bytes;
    for (size_t i = 0; hex[i] && hex[i + 1]; i += 2)
        bytes += static_cast<char>(std::strtoul(std::string(hex + i, 2).c_str(), nullptr, 16));
    return bytes;
}

std::string CurrentFolder() {
    std::wstring folder(::GetCurrentDirectoryW(0, nullptr), L'\0');
    folder.resize(::GetCurrentDirectoryW(static_cast<DWORD>(folder.size()), folder.data()));
    std::string utf8(folder.size() * 4, '\0');
    utf8.resize(::WideCharToMultiByte(CP_UTF8, 0, folder.data(), static_cast<int>(folder.size()), utf8.data(),
                                      static_cast<int>(utf8.size()), nullptr, nullptr));
    return utf8;
}

void Spawn(const char* args) {
    std::wstring self(32768, L'\0');
    self.resize(::GetModuleFileNameW(nullptr, self.data(), static_cast<DWORD>(self.size())));
    std::wstring command = L"\"" + self + L"\" " + std::wstring(args, args + std::strlen(args)); // ASCII arguments
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION info{};
    if (::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &info)) {
        const tol::unique_process process(info.hProcess), thread(info.hThread);
    }
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "pid") {
            Write(STD_OUTPUT_HANDLE, "pid " + std::to_string(::GetCurrentProcessId()) + "\n");
            continue;
        }
        if (word == "cwd") {
            Write(STD_OUTPUT_HANDLE, CurrentFolder() + "\n");
            continue;
        }
        const char* value = i + 1 < argc ? argv[++i] : "";
        if (word == "out")
            Write(STD_OUTPUT_HANDLE, std::string(value) + "\n");
        else if (word == "err")
            Write(STD_ERROR_HANDLE, std::string(value) + "\n");
        else if (word == "hex")
            Write(STD_OUTPUT_HANDLE, FromHex(value));
        else if (word == "sleep")
            ::Sleep(std::strtoul(value, nullptr, 10));
        else if (word == "exit")
            return static_cast<int>(std::strtol(value, nullptr, 10));
        else if (word == "spawn")
            Spawn(value);
    }
    return 0;
}
