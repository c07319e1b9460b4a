#include "loglines.h"
#include "frame/step.h"

namespace tol {

static_assert(sizeof LinePrefix::kNewFolder / sizeof(wchar_t) == 23 && sizeof LinePrefix::kSame / sizeof(wchar_t) == 23 &&
                  sizeof LinePrefix::kCopying / sizeof(wchar_t) == 23 &&
                  sizeof LinePrefix::kDifferent / sizeof(wchar_t) == 23 &&
                  sizeof LinePrefix::kNewFile / sizeof(wchar_t) == 23 &&
                  sizeof LinePrefix::kExtraFile / sizeof(wchar_t) == 23 &&
                  sizeof LinePrefix::kExtraFolder / sizeof(wchar_t) == 23,
              "every item prefix is 22 characters");

std::wstring_view RelativeTo(std::wstring_view path, const std::wstring& root) noexcept {
    if (path.size() < root.size() || path.compare(0, root.size(), root) != 0) return path;
    return path.substr(root.size());
}

void LogItem(const CopyFilesRun& run, const wchar_t* prefix, std::wstring_view path, const std::wstring& root,
             std::wstring_view tail) {
    std::wstring line(prefix);
    line += RelativeTo(path, root);
    line += tail;
    LogMessage(run.build, line);
}

} // namespace tol
