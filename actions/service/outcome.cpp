#include "outcome.h"
#include "frame/messages.h"

namespace tol {

ServiceOutcome LastErrorOutcome(unsigned messageId) {
    const HRESULT code = HResultFromLastError();
    return {StepFailed, FormatResourceMessage(messageId, {SystemErrorText(code)})};
}

} // namespace tol
