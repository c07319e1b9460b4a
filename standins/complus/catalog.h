// The catalog object: its collections, the connection (to this computer only), component installation and the
// server processes of applications. The methods the actions do not use answer E_NOTIMPL.
#pragma once
#include "dual.h"
#include "item.h"
#include <comadmin.h>

namespace complus {

class AdminCatalog final : public DualObject<ICOMAdminCatalog2, ICOMAdminCatalog> {
public:
    STDMETHODIMP GetCollection(BSTR name, IDispatch** collection) override;
    STDMETHODIMP Connect(BSTR computer, IDispatch** root) override;
    STDMETHODIMP get_MajorVersion(LONG* version) override;
    STDMETHODIMP get_MinorVersion(LONG* version) override;
    STDMETHODIMP InstallComponent(BSTR application, BSTR dll, BSTR typeLibrary, BSTR proxyStub) override;
    STDMETHODIMP ShutdownApplication(BSTR application) override;
    STDMETHODIMP StartApplication(BSTR application) override;

    // Not offered by the stand-in.
    STDMETHODIMP GetCollectionByQuery(BSTR, SAFEARRAY**, IDispatch**) override;
    STDMETHODIMP ImportComponent(BSTR, BSTR) override;
    STDMETHODIMP ExportApplication(BSTR, BSTR, LONG) override;
    STDMETHODIMP InstallApplication(BSTR, BSTR, LONG, BSTR, BSTR, BSTR) override;
    STDMETHODIMP StopRouter() override;
    STDMETHODIMP RefreshRouter() override;
    STDMETHODIMP StartRouter() override;
    STDMETHODIMP Reserved1() override;
    STDMETHODIMP Reserved2() override;
    STDMETHODIMP InstallMultipleComponents(BSTR, SAFEARRAY**, SAFEARRAY**) override;
    STDMETHODIMP GetMultipleComponentsInfo(BSTR, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**) override;
    STDMETHODIMP RefreshComponents() override;
    STDMETHODIMP BackupREGDB(BSTR) override;
    STDMETHODIMP RestoreREGDB(BSTR) override;
    STDMETHODIMP QueryApplicationFile(BSTR, BSTR*, BSTR*, VARIANT_BOOL*, VARIANT_BOOL*, SAFEARRAY**) override;
    STDMETHODIMP ServiceCheck(LONG, LONG*) override;
    STDMETHODIMP InstallMultipleEventClasses(BSTR, SAFEARRAY**, SAFEARRAY**) override;
    STDMETHODIMP InstallEventClass(BSTR, BSTR, BSTR, BSTR) override;
    STDMETHODIMP GetEventClassesForIID(BSTR, SAFEARRAY**, SAFEARRAY**, SAFEARRAY**) override;
    STDMETHODIMP GetCollectionByQuery2(BSTR, VARIANT*, IDispatch**) override;
    STDMETHODIMP GetApplicationInstanceIDFromProcessID(LONG, BSTR*) override;
    STDMETHODIMP ShutdownApplicationInstances(VARIANT*) override;
    STDMETHODIMP PauseApplicationInstances(VARIANT*) override;
    STDMETHODIMP ResumeApplicationInstances(VARIANT*) override;
    STDMETHODIMP RecycleApplicationInstances(VARIANT*, LONG) override;
    STDMETHODIMP AreApplicationInstancesPaused(VARIANT*, VARIANT_BOOL*) override;
    STDMETHODIMP DumpApplicationInstance(BSTR, BSTR, LONG, BSTR*) override;
    STDMETHODIMP get_IsApplicationInstanceDumpSupported(VARIANT_BOOL*) override;
    STDMETHODIMP CreateServiceForApplication(BSTR, BSTR, BSTR, BSTR, BSTR, BSTR, BSTR, VARIANT_BOOL) override;
    STDMETHODIMP DeleteServiceForApplication(BSTR) override;
    STDMETHODIMP GetPartitionID(BSTR, BSTR*) override;
    STDMETHODIMP GetPartitionName(BSTR, BSTR*) override;
    STDMETHODIMP put_CurrentPartition(BSTR) override;
    STDMETHODIMP get_CurrentPartitionID(BSTR*) override;
    STDMETHODIMP get_CurrentPartitionName(BSTR*) override;
    STDMETHODIMP get_GlobalPartitionID(BSTR*) override;
    STDMETHODIMP FlushPartitionCache() override;
    STDMETHODIMP CopyApplications(BSTR, VARIANT*, BSTR) override;
    STDMETHODIMP CopyComponents(BSTR, VARIANT*, BSTR) override;
    STDMETHODIMP MoveComponents(BSTR, VARIANT*, BSTR) override;
    STDMETHODIMP AliasComponent(BSTR, BSTR, BSTR, BSTR, BSTR) override;
    STDMETHODIMP IsSafeToDelete(BSTR, COMAdminInUse*) override;
    STDMETHODIMP ImportUnconfiguredComponents(BSTR, VARIANT*, VARIANT*) override;
    STDMETHODIMP PromoteUnconfiguredComponents(BSTR, VARIANT*, VARIANT*) override;
    STDMETHODIMP ImportComponents(BSTR, VARIANT*, VARIANT*) override;
    STDMETHODIMP get_Is64BitCatalogServer(VARIANT_BOOL*) override;
    STDMETHODIMP ExportPartition(BSTR, BSTR, LONG) override;
    STDMETHODIMP InstallPartition(BSTR, BSTR, LONG, BSTR, BSTR, BSTR) override;
    STDMETHODIMP QueryApplicationFile2(BSTR, IDispatch**) override;
    STDMETHODIMP GetComponentVersionCount(BSTR, LONG*) override;

private:
    // The entries of the catalog's ErrorInfo collection: those of the last InstallComponent.
    std::shared_ptr<ItemList> errors_ = std::make_shared<ItemList>();
};

} // namespace complus
