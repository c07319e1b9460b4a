// Modify: the transaction, synchronization, timeout and activation settings and the additional properties of the
// matching components; one SaveChanges per application that had a match.
#include "additional.h"
#include "component.h"
#include "frame/messages.h"
#include "lookup.h"
#include "values.h"
#include <cwchar>

namespace tol {
namespace {

constexpr unsigned kSettingProperties = 215; // "Setting properties on component '%1'..."
constexpr long kLeaveUnchanged = 5;

void PutUnlessUnchanged(const ComponentRun& run, const CatalogItem& component, const wchar_t* property) {
    const long value = GetStepLong(run.step, run.build, property);
    if (value != kLeaveUnchanged) component.Put(property, LongVariant(value).get());
}

// The leading decimal number: blanks and a sign first, then digits up to the first other character; 0 for none.
long LeadingNumber(const std::wstring& text) noexcept { return std::wcstol(text.c_str(), nullptr, 10); }

void WriteComponentSettings(const ComponentRun& run, const CatalogItem& component) {
    PutUnlessUnchanged(run, component, L"Transaction");
    PutUnlessUnchanged(run, component, L"Synchronization");
    const std::wstring timeout = GetStepText(run.step, run.build, L"ComponentTransactionTimeout");
    if (!timeout.empty()) {
        component.Put(L"ComponentTransactionTimeoutEnabled", BoolVariant(true).get());
        component.Put(L"ComponentTransactionTimeout", LongVariant(LeadingNumber(timeout)).get());
    }
    // Always written, as the host answers it.
    component.Put(L"JustInTimeActivation", ReadStepVariant(run.build, run.step, L"JustInTimeActivation", VT_BOOL).get());
}

long ModifyInApplication(const ComponentRun& run, const CatalogItem& application, const std::wstring& pattern) {
    const CatalogCollection components = ComponentsOf(run, application);
    long modified = 0;
    const long count = components.Count();
    for (long index = 0; index < count; ++index) {
        if (run.stop.IsStopped()) break;
        const CatalogItem component = components.Item(index);
        const std::wstring name = component.Name();
        if (!MatchesComponent(component, name, pattern)) continue;
        LogMessage(run.build, FormatResourceMessage(kSettingProperties, {name}));
        WriteComponentSettings(run, component);
        WriteAdditionalProperties(component, run.build, run.step);
        ++modified;
    }
    if (modified > 0) components.SaveChanges();
    return modified;
}

} // namespace

bool MatchesComponent(const CatalogItem& component, const std::wstring& name, const std::wstring& pattern) {
    if (pattern == L"*" || SameText(name, pattern)) return true;
    return SameText(VariantToText(component.Value(L"DLL").get()), pattern);
}

long ModifyComponents(const ComponentRun& run, const std::wstring& pattern) {
    return ForEachApplication(run,
                              [&](const CatalogItem& application) { return ModifyInApplication(run, application, pattern); });
}

} // namespace tol
