// What every object of the stand-in shares: reference counting with the module lock, a dual interface whose
// IDispatch half offers no type information (callers use the vtable), and error information for that interface.
#pragma once
#include "frame/module.h"
#include <oaidl.h>

namespace complus {

template <class Primary, class Base = Primary>
class DualObject : public Primary, public ISupportErrorInfo {
public:
    DualObject(const DualObject&) = delete;
    DualObject& operator=(const DualObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(Primary) || iid == __uuidof(Base)) {
            *object = static_cast<Primary*>(this);
        } else if (iid == IID_ISupportErrorInfo) {
            *object = static_cast<ISupportErrorInfo*>(this);
        } else {
            *object = nullptr;
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override {
        const LONG count = ::InterlockedIncrement(&references_);
        if (count == 1) tol::LockModule();
        return static_cast<ULONG>(count);
    }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG count = ::InterlockedDecrement(&references_);
        if (count == 0) {
            delete this;
            tol::UnlockModule();
        }
        return static_cast<ULONG>(count);
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo** info) override {
        if (info) *info = nullptr;
        return E_NOTIMPL;
    }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override { return E_NOTIMPL; }

    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == __uuidof(Primary) || iid == __uuidof(Base) ? S_OK : S_FALSE;
    }

    // Hands the object out as IDispatch, with the one reference the caller owns.
    IDispatch* NewReference() noexcept {
        AddRef();
        return static_cast<Primary*>(this);
    }

protected:
    DualObject() = default;
    virtual ~DualObject() = default;

private:
    volatile LONG references_ = 0;
};

} // namespace complus
