// Runs a command line for IBuildRun::RunCommandLine: its output relayed line by line, its end awaited together
// with the run's stop event and the command's own time limit.
#pragma once
#include "output_lines.h"
#include <windows.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct CommandRequest {
    std::wstring commandLine;
    std::wstring startFolder; // empty: the host's current folder
    long timeoutSeconds = 0;  // 0 or less: no limit
    bool wait = true;         // false: start the command and return (its output goes nowhere)
};

enum class CommandEnd { NotStarted, NotWaited, Exited, TimedOut, Stopped };

struct CommandOutcome {
    CommandEnd end = CommandEnd::NotStarted;
    DWORD exitCode = 0;   // Exited, TimedOut, Stopped
    DWORD startError = 0; // NotStarted: why CreateProcessW failed
};

// The exit code that a command ended by the host gets.
constexpr DWORD kEndedExitCode = 1;
// After the command has ended, output still arriving from its children is read until this much time passes
// without any, and never for longer than the drain limit in all.
constexpr DWORD kQuietMilliseconds = 300;
constexpr DWORD kDrainLimitMilliseconds = 2000;

// The command and every process it starts run in a job, so that ending the command ends them as well. Lines are
// handed to sink on the calling thread as they arrive. Failures other than starting the command throw.
CommandOutcome RunCommand(const CommandRequest& request, HANDLE stopEvent, const LineSink& sink);

// Exit codes that count as success: integers (decimal, or hexadecimal after "0x"; -1 and 0xFFFFFFFF are the same
// code) separated by "," or ";", blanks around them allowed. Empty means "0". Nothing when the text is not such a list.
std::optional<std::vector<long>> ParseSuccessCodes(std::wstring_view text);

} // namespace host
