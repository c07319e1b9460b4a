#include "component.h"
#include "barrier.h"
#include "module.h"
#include "VelmoraExt.h"
#include "pages/pages.h"
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

// A page of the step editor: the page object of its class behind the IActionPage boundary.
class PageComponent final : public Component<IActionPage> {
public:
    PageComponent(const ClassEntry& entry, std::unique_ptr<PropertyPage> page) noexcept
        : Component(entry), page_(std::move(page)) {}

    STDMETHODIMP CreatePage(IActionPageSite* site, ITextExpander* expander, HWND parent, VARIANT_BOOL tooltips,
                            HWND* page) override {
        if (!page) return E_POINTER;
        *page = nullptr;
        return ExceptionBarrier([&] {
            *page = page_->Create(site, expander, parent, tooltips != VARIANT_FALSE);
            return S_OK;
        });
    }
    STDMETHODIMP DestroyPage() override {
        page_->Destroy();
        return S_OK;
    }
    STDMETHODIMP ActivatePage() override {
        return ExceptionBarrier([&] {
            page_->Activate();
            return S_OK;
        });
    }
    STDMETHODIMP DeactivatePage() override { return S_OK; }
    STDMETHODIMP LoadStep(IBuildStep* step, VARIANT_BOOL several) override {
        return ExceptionBarrier([&] {
            page_->Load(step, several != VARIANT_FALSE);
            return S_OK;
        });
    }
    STDMETHODIMP ValidatePage(VARIANT_BOOL* valid) override {
        if (!valid) return E_POINTER;
        *valid = VARIANT_FALSE;
        return ExceptionBarrier([&] {
            *valid = page_->Validate() ? VARIANT_TRUE : VARIANT_FALSE;
            return S_OK;
        });
    }
    STDMETHODIMP SaveStep(IBuildStep* step) override {
        return ExceptionBarrier([&] {
            page_->Save(step);
            return S_OK;
        });
    }
    STDMETHODIMP GetActiveField(IActionField** field) override {
        if (!field) return E_POINTER;
        *field = nullptr;
        return ExceptionBarrier([&] {
            *field = page_->ActiveField().detach();
            return S_OK;
        });
    }

private:
    std::unique_ptr<PropertyPage> page_;
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
ClassFactory g_previewFactory;

} // namespace

HRESULT CreateComponent(const ClassEntry& entry, REFIID iid, void** object) noexcept {
    IUnknown* component = nullptr;
    if (entry.kind == ClassKind::Action) {
        component = static_cast<IBuildAction*>(new (std::nothrow) ActionComponent(entry));
    } else {
        std::unique_ptr<PropertyPage> page;
        try {
            page = CreatePropertyPage(entry.name);
        } catch (const std::bad_alloc&) {
            return E_OUTOFMEMORY;
        } catch (...) {
            return E_FAIL;
        }
        if (!page) return CLASS_E_CLASSNOTAVAILABLE;
        component = static_cast<IActionPage*>(new (std::nothrow) PageComponent(entry, std::move(page)));
    }
    if (!component) return E_OUTOFMEMORY;
    component->AddRef();
    const HRESULT hr = component->QueryInterface(iid, object);
    component->Release();
    return hr;
}

HRESULT GetClassObject(const ClassEntry& entry, REFIID iid, void** object) noexcept {
    ClassFactory& factory = &entry == &kPreviewPage ? g_previewFactory : g_factories[&entry - kClasses];
    factory.entry = &entry;
    return factory.QueryInterface(iid, object);
}

} // namespace tol
