// How the test service behaves, chosen by the words after its program name:
//   normal     starts and stops at once (the stop is reported as done inside the control handler)
//   slow MS    on start, and again on stop, reports the pending state for MS milliseconds, with a checkpoint
//              every 250 ms and a wait hint of 500 ms
//   hangstop   on stop: reports stop pending with a wait hint of 1000 ms and never advances its checkpoint,
//              until the release event is set (or a minute has passed)
#pragma once
#include <string>

namespace testservice {

// The event that ends a hanging stop of the service with this key name.
inline std::wstring ReleaseEventName(const std::wstring& serviceName) {
    return L"Global\\velmora-testservice-release-" + serviceName;
}

} // namespace testservice
