// Delete, Shutdown and Start, on one application or, for "*", on every application in index order with the
// stop signal polled before each.
#include "application.h"
#include "frame/messages.h"
#include "lookup.h"

namespace tol {
namespace {

constexpr unsigned kDeleting = 211;     // "Deleting application '%1'..."
constexpr unsigned kShuttingDown = 212; // "Shutting down application '%1'..."
constexpr unsigned kStarting = 213;     // "Starting application '%1'..."

void Command(const ApplicationRun& run, ServerCommand command, const std::wstring& name) {
    LogMessage(run.build, FormatResourceMessage(command == ServerCommand::Shutdown ? kShuttingDown : kStarting, {name}));
    if (command == ServerCommand::Shutdown)
        run.catalog.ShutdownApplication(name);
    else
        run.catalog.StartApplication(name);
}

} // namespace

long DeleteEveryApplication(const ApplicationRun& run) {
    long deleted = 0;
    for (long index = 0; index < run.applications.Count();) {
        if (run.stop.IsStopped()) break;
        const CatalogItem application = run.applications.Item(index);
        if (!VariantToBool(application.Value(L"Deleteable").get())) {
            ++index;
            continue;
        }
        LogMessage(run.build, FormatResourceMessage(kDeleting, {application.Name()}));
        run.applications.Remove(index); // the next application moves into this index
        ++deleted;
    }
    // Also after a stop: what was removed so far is saved.
    if (deleted > 0) run.applications.SaveChanges();
    return deleted;
}

void DeleteOneApplication(const ApplicationRun& run, const std::wstring& name) {
    LogMessage(run.build, FormatResourceMessage(kDeleting, {name}));
    (void)DeleteByName(run.applications, name);
}

long ControlEveryApplication(const ApplicationRun& run, ServerCommand command) {
    long handled = 0;
    const long count = run.applications.Count();
    for (long index = 0; index < count; ++index) {
        if (run.stop.IsStopped()) break;
        const CatalogItem application = run.applications.Item(index);
        if (VariantToLong(application.Value(L"Activation").get()) == 0) continue; // a library application
        Command(run, command, application.Name());
        ++handled;
    }
    return handled;
}

void ControlOneApplication(const ApplicationRun& run, ServerCommand command, const std::wstring& name) {
    Command(run, command, name);
}

} // namespace tol
