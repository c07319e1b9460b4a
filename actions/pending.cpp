// Actions whose run routine is not part of this build yet: each fails its step with a clear message.
#include "actions.h"
#include "frame/errors.h"
#include <string>

namespace tol {
namespace {
[[noreturn]] void NotAvailable(const wchar_t* action) {
    throw truntime_error(std::wstring(L"The ") + action + L" action is not available in this build.");
}
} // namespace

long RunZipFiles(IBuildRun*, IBuildStep*) { NotAvailable(L"ZIP Files"); }
long RunUnzipFiles(IBuildRun*, IBuildStep*) { NotAvailable(L"UNZIP Files"); }

} // namespace tol
