// Add: the catalog installs the DLL at once; a failed installation is reported from the catalog's ErrorInfo
// collection and fails the step. The settings then reach the components that the whole Component text matches.
#include "component.h"
#include "frame/errors.h"
#include "frame/messages.h"

namespace tol {
namespace {

constexpr unsigned kInvalidComponent = 208; // "Invalid component name."
constexpr unsigned kInstalling = 217;       // "Installing component '%1'..."

// One line per error entry, the system's text of its ErrorCode; the result's text when there is no entry.
void ReportCatalogErrors(IBuildRun* build, const CatalogCollection& errors, HRESULT result) {
    const long count = errors.Count();
    if (count == 0) {
        LogMessage(build, SystemErrorText(result));
        return;
    }
    for (long index = 0; index < count; ++index)
        LogMessage(build, SystemErrorText(VariantToLong(errors.Item(index).Value(L"ErrorCode").get())));
}

} // namespace

bool AddComponents(const ComponentRun& run, const std::wstring& component) {
    // "DLL;type library;proxy/stub DLL", empty parts dropped. Without a DLL there is nothing to install.
    const std::vector<std::wstring> paths = SplitTokens(component, L";");
    if (paths.empty()) throw truntime_error(LoadResourceText(kInvalidComponent));
    const std::wstring& dll = paths[0];
    const std::wstring typeLibrary = paths.size() > 1 ? paths[1] : std::wstring();
    const std::wstring proxyStub = paths.size() > 2 ? paths[2] : std::wstring();

    LogMessage(run.build, FormatResourceMessage(kInstalling, {dll}));
    const HRESULT installed = run.catalog.InstallComponent(run.application, dll, typeLibrary, proxyStub);
    if (FAILED(installed)) {
        ReportCatalogErrors(run.build, run.catalog.Collection(L"ErrorInfo"), installed);
        return false;
    }
    (void)ModifyComponents(run, component); // no summary line for Add
    return true;
}

} // namespace tol
