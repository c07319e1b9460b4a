#include "catalog.h"
#include "collection.h"
#include "computer.h"
#include "failure.h"
#include "install.h"
#include "object.h"
#include "store.h"

namespace complus {
namespace {

const IID& kIid = __uuidof(ICOMAdminCatalog);

ItemPtr RequireApplication(BSTR application) {
    const std::wstring name(View(application));
    std::optional<ItemPtr> found = FindStoredApplication(name);
    if (!found) Fail(COMADMIN_E_OBJECT_DOES_NOT_EXIST, L"The application '" + name + L"' does not exist.");
    return *found;
}

} // namespace

STDMETHODIMP AdminCatalog::GetCollection(BSTR name, IDispatch** collection) {
    RETURN_IF_NULL_OUT(collection);
    *collection = nullptr;
    return Guard(kIid, [&] {
        const CollectionSchema* schema = FindTopCollection(View(name));
        if (!schema) Fail(E_INVALIDARG, L"The catalog has no collection '" + std::wstring(View(name)) + L"'.");
        *collection = OpenTopCollection(*schema, errors_);
    });
}

// Only this computer's catalog can be reached; any other name answers as a computer that is not on the network.
STDMETHODIMP AdminCatalog::Connect(BSTR computer, IDispatch** root) {
    RETURN_IF_NULL_OUT(root);
    *root = nullptr;
    return Guard(kIid, [&] {
        const HRESULT badPath = HRESULT_FROM_WIN32(ERROR_BAD_NETPATH);
        if (!IsLocalComputer(View(computer))) Fail(badPath, tol::SystemErrorText(badPath));
        *root = OpenRootCollection(errors_);
    });
}

STDMETHODIMP AdminCatalog::get_MajorVersion(LONG* version) {
    RETURN_IF_NULL_OUT(version);
    *version = 1;
    return S_OK;
}

STDMETHODIMP AdminCatalog::get_MinorVersion(LONG* version) {
    RETURN_IF_NULL_OUT(version);
    *version = 0;
    return S_OK;
}

STDMETHODIMP AdminCatalog::InstallComponent(BSTR application, BSTR dll, BSTR typeLibrary, BSTR proxyStub) {
    errors_->clear();
    return Guard(kIid, [&] {
        InstallComponents(std::wstring(View(application)), std::wstring(View(dll)), std::wstring(View(typeLibrary)),
                          std::wstring(View(proxyStub)), *errors_);
    });
}

STDMETHODIMP AdminCatalog::ShutdownApplication(BSTR application) {
    return Guard(kIid, [&] { RecordServerState(RequireApplication(application)->Key(), false); });
}

// A library application runs in its caller's process: there is no server process to start.
STDMETHODIMP AdminCatalog::StartApplication(BSTR application) {
    return Guard(kIid, [&] {
        const ItemPtr found = RequireApplication(application);
        if (found->Number(L"Activation") == 0)
            Fail(COMADMIN_E_CAN_NOT_START_APP,
                 L"The application '" + found->Name() + L"' is a library application and cannot be started.");
        RecordServerState(found->Key(), true);
    });
}

} // namespace complus
