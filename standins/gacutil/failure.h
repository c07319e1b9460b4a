// How gacutil ends: its exit codes, and the failure that carries a message to the error output.
#pragma once
#include <string>

namespace gac {

constexpr int kSucceeded = 0;
constexpr int kFailed = 1;       // the assembly operation could not be done
constexpr int kBadArguments = 2; // the command line is not understood; the usage follows the message

struct failure {
    std::wstring message;
    int exitCode = kFailed;
};

[[noreturn]] inline void Fail(std::wstring message) { throw failure{std::move(message), kFailed}; }
[[noreturn]] inline void FailUsage(std::wstring message) { throw failure{std::move(message), kBadArguments}; }

} // namespace gac
