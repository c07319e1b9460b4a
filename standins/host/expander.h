// %NAME% references in step texts: the script's variables, then --var values, then the process environment.
#pragma once
#include "names.h"
#include <optional>
#include <string>
#include <string_view>

namespace host {

class Expander {
public:
    // How deep the values of variables may refer to further variables; deeper references stay as they are.
    static constexpr int kDepthLimit = 32;
    // The longest text an expansion may grow to; beyond it the expansion fails (a variable that doubles itself).
    static constexpr size_t kLongestText = size_t{1} << 22;

    Expander() = default;
    Expander(VariableMap scriptVariables, VariableMap commandLineVariables);

    // Replaces each %NAME% whose value is known. A reference that cannot be resolved stays as it is and sets
    // unresolved; "%%" and a lone "%" are plain text. Values of script and --var variables are expanded in turn;
    // environment values are taken as they are (the system expanded them already).
    std::wstring Expand(std::wstring_view text, bool& unresolved) const;

private:
    void ExpandInto(std::wstring& out, std::wstring_view text, int depth, bool& unresolved) const;
    bool AppendReference(std::wstring& out, const std::wstring& name, int depth, bool& unresolved) const;

    VariableMap script_;
    VariableMap commandLine_;
};

std::optional<std::wstring> EnvironmentValue(const std::wstring& name);

// Expands every text in value: a BSTR, or each BSTR element of a one-dimensional array of VARIANTs; other
// values are copied unchanged.
tol::variant ExpandValue(const Expander& expander, const VARIANT& value, bool& unresolved);

} // namespace host
