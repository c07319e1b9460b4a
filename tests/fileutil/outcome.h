// What a call did: returned, or threw which kind of the library's exceptions with which message.
#pragma once
#include "frame/errors.h"
#include "frame/messages.h"
#include <string>

namespace test {

struct Outcome {
    std::string kind;  // "none", "win32_error", "truntime_error", "other"
    std::wstring message;
};

template <class F>
Outcome OutcomeOf(F&& call) {
    try {
        call();
        return {"none", {}};
    } catch (const comet::com_error& e) {
        return {"com_error", e.message()};
    } catch (const tol::win32_error& e) {
        return {"win32_error", e.message()};
    } catch (const tol::truntime_error& e) {
        return {"truntime_error", e.message()};
    } catch (const std::exception& e) {
        return {"other", tol::ExceptionMessage(e)};
    }
}

} // namespace test
