// What every host object shares: heap reference counting, QueryInterface over its interfaces, a truthful
// ISupportErrorInfo, and the barrier at each method that leaves error information describing a failure.
#pragma once
#include "text.h"
#include "frame/barrier.h"
#include "frame/com_ptr.h"
#include <oaidl.h>
#include <new>
#include <string>
#include <utility>

namespace host {

// The thread's next error information for a failure of a call on iid; null when none can be made.
tol::com_ptr<IErrorInfo> MakeErrorInfo(REFIID iid, const std::wstring& description) noexcept;

// Throws comet::com_error with the code and error information that carries the description.
[[noreturn]] void ThrowDescribed(HRESULT hr, REFIID iid, const std::wstring& description);

template <class First, class... Rest>
class HostObject : public First, public Rest..., public ISupportErrorInfo {
public:
    HostObject() = default;
    HostObject(const HostObject&) = delete;
    HostObject& operator=(const HostObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = Find(iid);
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(::InterlockedIncrement(&references_)); }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG count = ::InterlockedDecrement(&references_);
        if (count == 0) delete this;
        return static_cast<ULONG>(count);
    }
    // Our own interfaces set error information when they fail; IUnknown and ISupportErrorInfo do not.
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == __uuidof(First) || ((iid == __uuidof(Rest)) || ...) ? S_OK : S_FALSE;
    }

protected:
    virtual ~HostObject() = default;

    // The barrier of a method of Interface: whatever the body throws becomes an HRESULT with error information.
    template <class Interface, class Body>
    static HRESULT Call(Body&& body) noexcept {
        return tol::ExceptionBarrier([&]() -> HRESULT {
            try {
                return body();
            } catch (const comet::com_error& e) {
                if (e.error_info()) throw;
                ThrowDescribed(e.hr(), __uuidof(Interface), TrimLineEnd(e.message()));
            } catch (const std::bad_alloc&) {
                ThrowDescribed(E_OUTOFMEMORY, __uuidof(Interface), SystemText(E_OUTOFMEMORY));
            }
        });
    }

private:
    void* Find(REFIID iid) noexcept {
        if (iid == IID_IUnknown || iid == __uuidof(First)) return static_cast<First*>(this);
        if (iid == IID_ISupportErrorInfo) return static_cast<ISupportErrorInfo*>(this);
        void* found = nullptr;
        ((found = found ? found : iid == __uuidof(Rest) ? static_cast<Rest*>(this) : nullptr), ...);
        return found;
    }

    volatile LONG references_ = 1; // the creator's reference
};

// Creates a host object and hands out its first reference through Interface.
template <class Interface, class Object, class... Args>
tol::com_ptr<Interface> MakeHostObject(Args&&... args) {
    Object* object = new Object(std::forward<Args>(args)...);
    return tol::com_ptr<Interface>::attach(static_cast<Interface*>(object));
}

} // namespace host
