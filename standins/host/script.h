// Build scripts: a JSON file of variables and steps, read into typed step properties.
#pragma once
#include "names.h"
#include "frame/errors.h"
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct ScriptStep {
    std::wstring name; // the label; empty when the step has none
    std::wstring action;
    bool disabled = false;
    PropertyMap properties;
};

struct Script {
    VariableMap variables;
    std::vector<ScriptStep> steps;
};

// A script that cannot be read or does not have the expected form; the message says where.
class ScriptError : public tol::truntime_error {
public:
    using truntime_error::truntime_error;
};

// Parses UTF-8 JSON (a leading byte order mark is skipped). Property values become VARIANTs: a string VT_BSTR,
// true/false VT_BOOL, an integer VT_I4, a list of strings VT_ARRAY | VT_VARIANT of VT_BSTR, null VT_EMPTY.
Script ParseScript(std::string_view text);

// The file's bytes; failures throw ScriptError with the system's text.
std::string ReadScriptFile(const std::wstring& path);

// Reads and parses the file; the messages of its errors start with the file name.
Script LoadScript(const std::wstring& path);

// "step 2" or "step 2 (label)", as errors name a step; number counts from 1.
std::wstring StepTitle(size_t number, const ScriptStep& step);

} // namespace host
