// Writes a step's properties back into its script file: the other steps, the variables and the key order stay as
// they are; the file is rewritten as UTF-8 JSON with two-space indentation.
#pragma once
#include "names.h"
#include <optional>
#include <string>

namespace host {

// The step to write: an existing one (index from 0), or a new one appended with the action's name.
struct StepTarget {
    std::optional<size_t> index; // none: a new step
    std::wstring action;         // the action of a new step
};

// Replaces the properties of the step with these: a property whose value is empty (VT_EMPTY) or missing is
// removed, unless the file holds null for it; new properties follow the file's own in the map's order. Values
// become JSON as the script reader reads them back: a text a string, VT_BOOL true/false, integers numbers, a list
// of texts an array of strings. Failures throw ScriptError (file problems, a step that is not there) or
// comet::com_error (a value that has no JSON form).
void WriteStepProperties(const std::wstring& path, const StepTarget& target, const PropertyMap& properties);

} // namespace host
