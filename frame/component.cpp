#include "component.h"
#include "barrier.h"
#include "module.h"
#include "VelmoraExt.h"
#include <new>

namespace tol {
namespace {

// Reference counting, the module lock, IProvideClassInfo and ISupportErrorInfo for one primary interface.
template <class Primary>
class Component : public Primary, public IProvideClassInfo, public ISupportErrorInfo {
public:
    explicit Component(const ClassEntry& entry) noexcept : entry_(entry) {}
    virtual ~Component() = default;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        if (iid == __uuidof(Primary)) {
            *object = static_cast<Primary*>(this);
        } else if (iid == IID_IProvideClassInfo) {
            *object = static_cast<IProvideClassInfo*>(this);
        } else if (iid == IID_ISupportErrorInfo) {
            *object = static_cast<ISupportErrorInfo*>(this);
        } else if (iid == IID_IUnknown) {
            *object = static_cast<Primary*>(this);
        } else {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override {
        const LONG count = ::InterlockedIncrement(&references_);
        if (count == 1) LockModule();
        return static_cast<ULONG>(count);
    }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG count = ::InterlockedDecrement(&references_);
        if (count == 0) {
            delete this;
            UnlockModule();
        }
        return static_cast<ULONG>(count);
    }

    STDMETHODIMP GetClassInfo(ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        com_ptr<ITypeLib> library;
        const HRESULT hr = ::LoadRegTypeLib(LIBID_VelmoraExt, 1, 0, 0, library.put());
        if (FAILED(hr)) return hr;
        return library->GetTypeInfoOfGuid(*entry_.clsid, info);
    }

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID) override { return S_OK; }

protected:
    const ClassEntry& entry_;

private:
    volatile LONG references_ = 0;
};

class ActionComponent final : public Component<IBuildAction> {
public:
    using Component::Component;

    STDMETHODIMP Execute(IBuildRun* build, IBuildStep* step, long* status) override {
        if (!status) return E_POINTER;
        return ExceptionBarrier([&] {
            const long result = entry_.run(build, step);
            *status = result;
            return S_OK;
        });
    }
};

// Until the page framework is part of the build, a page can be created but offers no window.
class PageComponent final : public Component<IActionPage> {
public:
    using Component::Component;

    STDMETHODIMP CreatePage(IActionPageSite*, ITextExpander*, HWND, VARIANT_BOOL, HWND* page) override {
        if (page) *page = nullptr;
        return NotAvailable();
    }
    STDMETHODIMP DestroyPage() override { return NotAvailable(); }
    STDMETHODIMP ActivatePage() override { return NotAvailable(); }
    STDMETHODIMP DeactivatePage() override { return S_OK; }
    STDMETHODIMP LoadStep(IBuildStep*, VARIANT_BOOL) override { return NotAvailable(); }
    STDMETHODIMP ValidatePage(VARIANT_BOOL* valid) override {
        if (valid) *valid = VARIANT_FALSE;
        return NotAvailable();
    }
    STDMETHODIMP SaveStep(IBuildStep*) override { return NotAvailable(); }
    STDMETHODIMP GetActiveField(IActionField** field) override {
        if (field) *field = nullptr;
        return NotAvailable();
    }

private:
    HRESULT NotAvailable() const noexcept {
        SetErrorDescription(std::wstring(L"The property page ") + entry_.name + L" is not available in this build.");
        return E_NOTIMPL;
    }
};

class ClassFactory final : public IClassFactory {
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
    // The class objects are static: they live as long as the module.
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        return CreateComponent(*entry, iid, object);
    }
    STDMETHODIMP LockServer(BOOL lock) override {
        lock ? LockModule() : UnlockModule();
        return S_OK;
    }

    const ClassEntry* entry = nullptr;
};

ClassFactory g_factories[std::size(kClasses)];

} // namespace

HRESULT CreateComponent(const ClassEntry& entry, REFIID iid, void** object) noexcept {
    IUnknown* component = nullptr;
    if (entry.kind == ClassKind::Action)
        component = static_cast<IBuildAction*>(new (std::nothrow) ActionComponent(entry));
    else
        component = static_cast<IActionPage*>(new (std::nothrow) PageComponent(entry));
    if (!component) return E_OUTOFMEMORY;
    component->AddRef();
    const HRESULT hr = component->QueryInterface(iid, object);
    component->Release();
    return hr;
}

HRESULT GetClassObject(const ClassEntry& entry, REFIID iid, void** object) noexcept {
    ClassFactory& factory = g_factories[&entry - kClasses];
    factory.entry = &entry;
    return factory.QueryInterface(iid, object);
}

} // namespace tol
