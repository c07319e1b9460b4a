// The catalog methods that the stand-in does not offer.
#include "catalog.h"

namespace complus {

STDMETHODIMP AdminCatalog::GetCollectionByQuery(BSTR, SAFEARRAY**, IDispatch**) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::ImportComponent(BSTR, BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::ExportApplication(BSTR, BSTR, LONG) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::InstallApplication(BSTR, BSTR, LONG, BSTR, BSTR, BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::StopRouter() { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::RefreshRouter() { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::StartRouter() { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::Reserved1() { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::Reserved2() { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::InstallMultipleComponents(BSTR, SAFEARRAY**, SAFEARRAY**) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::GetMultipleComponentsInfo(BSTR, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**) {
    return E_NOTIMPL;
}
STDMETHODIMP AdminCatalog::RefreshComponents() { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::BackupREGDB(BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::RestoreREGDB(BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::QueryApplicationFile(BSTR, BSTR*, BSTR*, VARIANT_BOOL*, VARIANT_BOOL*, SAFEARRAY**) {
    return E_NOTIMPL;
}
STDMETHODIMP AdminCatalog::ServiceCheck(LONG, LONG*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::InstallMultipleEventClasses(BSTR, SAFEARRAY**, SAFEARRAY**) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::InstallEventClass(BSTR, BSTR, BSTR, BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::GetEventClassesForIID(BSTR, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::GetCollectionByQuery2(BSTR, VARIANT*, IDispatch**) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::GetApplicationInstanceIDFromProcessID(LONG, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::ShutdownApplicationInstances(VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::PauseApplicationInstances(VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::ResumeApplicationInstances(VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::RecycleApplicationInstances(VARIANT*, LONG) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::AreApplicationInstancesPaused(VARIANT*, VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::DumpApplicationInstance(BSTR, BSTR, LONG, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::get_IsApplicationInstanceDumpSupported(VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::CreateServiceForApplication(BSTR, BSTR, BSTR, BSTR, BSTR, BSTR, BSTR, VARIANT_BOOL) {
    return E_NOTIMPL;
}
STDMETHODIMP AdminCatalog::DeleteServiceForApplication(BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::GetPartitionID(BSTR, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::GetPartitionName(BSTR, BSTR*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::put_CurrentPartition(BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::get_CurrentPartitionID(BSTR*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::get_CurrentPartitionName(BSTR*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::get_GlobalPartitionID(BSTR*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::FlushPartitionCache() { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::CopyApplications(BSTR, VARIANT*, BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::CopyComponents(BSTR, VARIANT*, BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::MoveComponents(BSTR, VARIANT*, BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::AliasComponent(BSTR, BSTR, BSTR, BSTR, BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::IsSafeToDelete(BSTR, COMAdminInUse*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::ImportUnconfiguredComponents(BSTR, VARIANT*, VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::PromoteUnconfiguredComponents(BSTR, VARIANT*, VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::ImportComponents(BSTR, VARIANT*, VARIANT*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::get_Is64BitCatalogServer(VARIANT_BOOL*) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::ExportPartition(BSTR, BSTR, LONG) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::InstallPartition(BSTR, BSTR, LONG, BSTR, BSTR, BSTR) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::QueryApplicationFile2(BSTR, IDispatch**) { return E_NOTIMPL; }
STDMETHODIMP AdminCatalog::GetComponentVersionCount(BSTR, LONG*) { return E_NOTIMPL; }

} // namespace complus
