// The operations of the COM+ Component action on the components of one application or of every application.
#pragma once
#include "catalog.h"
#include "frame/step.h"
#include <optional>
#include <string>

namespace tol {

// What every operation of one run works with; all of it is owned by the run routine.
struct ComponentRun {
    IBuildRun* build;
    IBuildStep* step;
    StopSignal& stop;
    const Catalog& catalog;
    const CatalogCollection& applications;
    std::wstring application;         // the step's text: a name, or "*"
    std::optional<CatalogItem> named; // the named application; none for "*"
};

// Calls work for the named application, or for each application in index order with the stop signal polled
// before each; returns the sum of what work returns.
template <class Work>
long ForEachApplication(const ComponentRun& run, Work&& work) {
    if (run.named) return work(*run.named);
    long total = 0;
    const long count = run.applications.Count();
    for (long index = 0; index < count; ++index) {
        if (run.stop.IsStopped()) break;
        total += work(run.applications.Item(index));
    }
    return total;
}

// The application's Components collection, populated.
CatalogCollection ComponentsOf(const ComponentRun& run, const CatalogItem& application);

// "*" matches every component; otherwise the component's name or its DLL, compared without regard to case.
bool MatchesComponent(const CatalogItem& component, const std::wstring& name, const std::wstring& pattern);

// Installs the DLL (with its type library and proxy/stub DLL when given) and applies the settings to the
// components that the whole text matches; false when the installation failed, its errors logged.
bool AddComponents(const ComponentRun& run, const std::wstring& component);

// Each returns the number of components it modified, deleted or reported.
long ModifyComponents(const ComponentRun& run, const std::wstring& pattern);
long DeleteComponents(const ComponentRun& run, const std::wstring& pattern);
long ReportComponents(const ComponentRun& run, const std::wstring& pattern);

} // namespace tol
