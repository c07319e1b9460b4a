// How the stand-in catalog fails: a result code with a description, which the caller finds as the thread's error
// information for the interface it called.
#pragma once
#include "frame/errors.h"
#include "frame/messages.h"
#include <new>
#include <string>

namespace complus {

class CatalogError : public tol::truntime_error {
public:
    CatalogError(HRESULT hr, std::wstring description) : tol::truntime_error(std::move(description)), hr_(hr) {}
    HRESULT hr() const noexcept { return hr_; }

private:
    HRESULT hr_;
};

[[noreturn]] inline void Fail(HRESULT hr, std::wstring description) { throw CatalogError(hr, std::move(description)); }

// Installs the description as the thread's error information, naming the interface that failed.
void SetCatalogErrorInfo(REFIID iid, const std::wstring& description) noexcept;

// The one barrier of every interface method: runs body and turns what it throws into a result code with error
// information; a failed allocation is E_OUTOFMEMORY, anything else unexpected E_FAIL with its message.
template <class Body>
HRESULT Guard(REFIID iid, Body&& body) noexcept {
    try {
        body();
        return S_OK;
    } catch (const CatalogError& e) {
        SetCatalogErrorInfo(iid, e.message());
        return e.hr();
    } catch (const comet::com_error& e) {
        SetCatalogErrorInfo(iid, e.message());
        return e.hr();
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception& e) {
        SetCatalogErrorInfo(iid, tol::ExceptionMessage(e));
        return E_FAIL;
    } catch (...) {
        return E_FAIL;
    }
}

// A null out parameter is refused before anything else; callers then clear the slot, so that a failure never
// leaves garbage in it.
#define RETURN_IF_NULL_OUT(pointer)                                                                                              \
    do {                                                                                                                         \
        if (!(pointer)) return E_POINTER;                                                                                        \
    } while (0)

} // namespace complus
