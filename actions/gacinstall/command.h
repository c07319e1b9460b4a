// The gacutil command line of a step: the tool's path from the host's expander, the switch, the assembly path.
#pragma once
#include "VelmoraSvr.h"
#include <string>

namespace tol {

// The tool's path is resolved by the host's text expander; the two double quotes belong to the text.
constexpr wchar_t kGacCommandTemplate[] = L"\"%DOTNETSDK_DIR%bin\\gacutil.exe\" /nologo";

// The template as the host's expander leaves it. The expander's "unresolved" flag is not looked at: a reference
// that cannot be resolved is run as it stands, and the tool's failure tells the user. Host failures throw.
std::wstring ExpandCommandTemplate(IBuildRun* build);

// " /i" or " /u" with "f" for Force, or " /ungen" when NGEN is on for an uninstall (Force is then not read).
// NGEN is read only for an uninstall. The properties are read in this order: NGEN, Force.
std::wstring ReadGacSwitch(IBuildRun* build, IBuildStep* step, bool unregister);

// A space and the path, unchanged, inside double quotes.
std::wstring QuotedAssemblyPath(const std::wstring& filename);

} // namespace tol
