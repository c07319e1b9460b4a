// Delete: the matching components of each application; an application that lost components is saved and then
// shut down, so that a running server process lets go of them.
#include "component.h"
#include "frame/messages.h"

namespace tol {
namespace {

constexpr unsigned kDeleting = 216; // "Deleting component '%1'..."

long DeleteInApplication(const ComponentRun& run, const CatalogItem& application, const std::wstring& pattern) {
    const CatalogCollection components = ComponentsOf(run, application);
    long deleted = 0;
    for (long index = 0; index < components.Count();) {
        if (run.stop.IsStopped()) break;
        const CatalogItem component = components.Item(index);
        const std::wstring name = component.Name();
        if (!MatchesComponent(component, name, pattern)) {
            ++index;
            continue;
        }
        LogMessage(run.build, FormatResourceMessage(kDeleting, {name}));
        components.Remove(index); // the next component moves into this index
        ++deleted;
    }
    if (deleted > 0) {
        components.SaveChanges();
        run.catalog.ShutdownApplication(VariantToText(application.Key().get()));
    }
    return deleted;
}

} // namespace

long DeleteComponents(const ComponentRun& run, const std::wstring& pattern) {
    return ForEachApplication(run,
                              [&](const CatalogItem& application) { return DeleteInApplication(run, application, pattern); });
}

} // namespace tol
