// Report: the local computer, then each application with its matching components, every property that the
// collection describes (never Password), indented four blanks per level.
#include "component.h"
#include "frame/messages.h"
#include "lookup.h"
#include "values.h"

namespace tol {
namespace {

constexpr unsigned kPropertyLine = 219; // "%1%2 = %3"

void DisplayObject(IBuildRun* build, int level, const wchar_t* label, const CatalogItem& object,
                   const CatalogCollection& collection) {
    const std::wstring indent(4 * level, L' ');
    LogMessage(build, indent + label);
    const CatalogCollection properties = collection.Related(L"PropertyInfo", TextVariant(L"").get());
    const long count = properties.Count();
    for (long index = 0; index < count; ++index) {
        const std::wstring name = properties.Item(index).Name();
        if (SameText(name, L"Password")) continue;
        const std::wstring value = VariantToText(object.Value(name.c_str()).get());
        LogMessage(build, FormatResourceMessage(kPropertyLine, {indent, name, value}));
    }
    LogMessage(build, L"");
}

long ReportApplication(const ComponentRun& run, const CatalogItem& application, const std::wstring& pattern) {
    DisplayObject(run.build, 1, L"APPLICATION", application, run.applications);
    const CatalogCollection components = ComponentsOf(run, application);
    long shown = 0;
    const long count = components.Count();
    for (long index = 0; index < count; ++index) {
        if (run.stop.IsStopped()) break;
        const CatalogItem component = components.Item(index);
        if (!MatchesComponent(component, component.Name(), pattern)) continue;
        DisplayObject(run.build, 2, L"COMPONENT", component, components);
        ++shown;
    }
    return shown;
}

} // namespace

long ReportComponents(const ComponentRun& run, const std::wstring& pattern) {
    const CatalogCollection computer = run.catalog.Collection(L"LocalComputer");
    DisplayObject(run.build, 0, L"COMPUTER", computer.Item(0), computer);
    return ForEachApplication(run, [&](const CatalogItem& application) { return ReportApplication(run, application, pattern); });
}

} // namespace tol
