// Create/Modify: the named application, made when it is missing, gets the step's activation, the server
// settings of a server application and the additional properties; one SaveChanges at the end, so a run that
// fails part-way saves nothing.
#include "additional.h"
#include "application.h"
#include "frame/messages.h"
#include "lookup.h"
#include "values.h"

namespace tol {
namespace {

constexpr unsigned kCreating = 209;          // "Creating application '%1'..."
constexpr unsigned kSettingProperties = 210; // "Setting properties on application '%1'..."

CatalogItem FindOrCreate(const ApplicationRun& run, const std::wstring& name) {
    if (std::optional<CatalogItem> found = FindObjectByName(run.applications, name)) return *found;
    LogMessage(run.build, FormatResourceMessage(kCreating, {name}));
    CatalogItem created = run.applications.Add();
    created.Put(L"Name", TextVariant(name).get());
    return created;
}

// The password is handed on and its copies are wiped; it is never logged.
void PutPassword(const ApplicationRun& run, const CatalogItem& application) {
    std::wstring password = GetStepText(run.step, run.build, L"Password");
    variant value = TextVariant(password);
    ::SecureZeroMemory(password.data(), password.size() * sizeof(wchar_t));
    application.Put(L"Password", value.get());
    ::SecureZeroMemory(V_BSTR(value.ptr()), ::SysStringByteLen(V_BSTR(value.ptr())));
}

void WriteStandardProperties(const ApplicationRun& run, const CatalogItem& application) {
    const bool server = GetStepLong(run.step, run.build, L"Activation") != 0;
    application.Put(L"Activation", LongVariant(server ? 1 : 0).get());
    if (!server) return;
    application.Put(L"Identity", TextVariant(GetStepText(run.step, run.build, L"Identity")).get());
    PutPassword(run, application);
    application.Put(L"RunForever", BoolVariant(GetStepLong(run.step, run.build, L"RunForever") == 0).get());
    application.Put(L"ShutdownAfter", LongVariant(GetStepLong(run.step, run.build, L"ShutdownAfter")).get());
}

} // namespace

void CreateOrModifyApplication(const ApplicationRun& run, const std::wstring& name) {
    const CatalogItem application = FindOrCreate(run, name);
    LogMessage(run.build, FormatResourceMessage(kSettingProperties, {name}));
    WriteStandardProperties(run, application);
    WriteAdditionalProperties(application, run.build, run.step);
    run.applications.SaveChanges();
}

} // namespace tol
