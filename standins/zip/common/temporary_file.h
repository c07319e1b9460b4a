// Temporary files beside the file they will replace, for both archive libraries.
#pragma once
#include "frame/handles.h"
#include <string>

namespace zipwin {

// Creates a file of a free name in the folder (ending in a separator): ~dz, eight hex digits, .tmp. `name` gets
// the name tried last; an empty handle when no free name was found or the folder refuses new files (last error).
tol::unique_file CreateTemporaryFile(const std::wstring& folder, DWORD access, DWORD share, std::wstring& name);

} // namespace zipwin
