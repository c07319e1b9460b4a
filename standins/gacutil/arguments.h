// The command line: one operation switch, /nologo, and the assembly it works on.
#pragma once
#include <string>

namespace gac {

enum class Operation { None, Install, Uninstall, List, Help };

struct Request {
    Operation operation = Operation::None;
    bool force = false;        // /if: replace a different copy; /uf: uninstall as /u does (no references are kept)
    bool nativeImages = false; // /ungen: uninstall, native images included
    bool logo = true;          // off with /nologo
    std::wstring assembly;     // install: a file path; uninstall: an assembly name, display name or file path
};

// Switches start with "/" or "-" and are matched without regard to case. Throws failure with kBadArguments for
// an unknown switch, two operations, a missing, empty or extra assembly argument.
Request ParseArguments(int argc, const wchar_t* const* argv);

// The usage text, one line per entry.
const wchar_t* const* UsageLines();

} // namespace gac
