// The one exception barrier for every place where the library's code meets a COM or Win32 caller.
#pragma once
#include "errors.h"
#include "messages.h"

namespace tol {

// Runs body (which returns an HRESULT) and turns whatever it throws into an HRESULT with error information:
// comet::com_error gives its own HRESULT and error information, any other std::exception E_FAIL with its
// message as the description, a thrown long that value, anything else E_FAIL.
template <class Body>
HRESULT ExceptionBarrier(Body&& body) noexcept {
    try {
        return body();
    } catch (const comet::com_error& e) {
        ::SetErrorInfo(0, e.error_info());
        return e.hr();
    } catch (const std::exception& e) {
        SetErrorDescription(ExceptionMessage(e));
        return E_FAIL;
    } catch (long hr) {
        return hr;
    } catch (...) {
        return E_FAIL;
    }
}

} // namespace tol
