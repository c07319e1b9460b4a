// The stand-in's entry points: the catalog's class object and unloading.
#include "catalog.h"
#include "frame/module.h"
#include <new>

namespace complus {
namespace {

class CatalogFactory final : public IClassFactory {
public:
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        if (iid == IID_IClassFactory || iid == IID_IUnknown) {
            *object = static_cast<IClassFactory*>(this);
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return 2; } // static: lives as long as the module
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        try {
            AdminCatalog* catalog = new AdminCatalog();
            catalog->AddRef();
            const HRESULT hr = catalog->QueryInterface(iid, object);
            catalog->Release(); // a refused interface destroys the object again
            return hr;
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        }
    }
    STDMETHODIMP LockServer(BOOL lock) override {
        if (lock)
            tol::LockModule();
        else
            tol::UnlockModule();
        return S_OK;
    }
};

CatalogFactory g_factory;

} // namespace
} // namespace complus

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (clsid != __uuidof(COMAdminCatalog)) return CLASS_E_CLASSNOTAVAILABLE;
    return complus::g_factory.QueryInterface(iid, object);
}

STDAPI DllCanUnloadNow() { return tol::IsModuleLocked() ? S_FALSE : S_OK; }

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) ::DisableThreadLibraryCalls(instance);
    return TRUE;
}
