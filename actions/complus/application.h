// The operations of the COM+ Application action on the Applications collection of one catalog.
#pragma once
#include "catalog.h"
#include "frame/step.h"
#include <string>

namespace tol {

// What every operation of one run works with; all of it is owned by the run routine.
struct ApplicationRun {
    IBuildRun* build;
    IBuildStep* step;
    StopSignal& stop;
    const Catalog& catalog;
    const CatalogCollection& applications;
};

enum class ServerCommand { Shutdown, Start };

// Always on the one named application; "*" has no special meaning here.
void CreateOrModifyApplication(const ApplicationRun& run, const std::wstring& name);

// "*": every application whose Deleteable is true; returns how many were deleted.
long DeleteEveryApplication(const ApplicationRun& run);
// An application that does not exist is no error: nothing changes.
void DeleteOneApplication(const ApplicationRun& run, const std::wstring& name);

// "*": every server application (library applications are skipped); returns how many were handled.
long ControlEveryApplication(const ApplicationRun& run, ServerCommand command);
// The named application, without looking it up first: the catalog judges the name.
void ControlOneApplication(const ApplicationRun& run, ServerCommand command, const std::wstring& name);

} // namespace tol
