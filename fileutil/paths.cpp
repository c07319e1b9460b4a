#include "paths.h"

namespace tol {

std::wstring DirectoryPart(std::wstring_view path, bool keepSeparator) {
    for (size_t i = path.size(); i > 0; --i)
        if (IsPathSeparator(path[i - 1])) return std::wstring(path.substr(0, keepSeparator ? i : i - 1));
    return {};
}

std::wstring CombinePath(std::wstring_view folder, std::wstring_view name) {
    std::wstring result(folder);
    if (!result.empty() && !IsPathSeparator(result.back())) result += L'\\';
    result += name;
    return result;
}

} // namespace tol
