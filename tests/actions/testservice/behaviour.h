// How the test service behaves, chosen by its command line:
//   normal            starts and stops at once (the stop is reported as done inside the control handler)
//   slowstart MS      reports start pending, with a checkpoint every 250 ms and a wait hint of 500 ms, for MS
//   failstart         reports start pending for 300 ms, then falls back to stopped with a service error
//   slowstop MS       on stop: reports stop pending, with a checkpoint every 250 ms, for MS
//   hangstop          on stop: reports stop pending with a wait hint of 1000 ms and never advances its
//                     checkpoint, until the release event is set (or a minute has passed)
#pragma once
#include <windows.h>
#include <string>

namespace testservice {

enum class Kind { Normal, SlowStart, FailStart, SlowStop, HangStop };

struct Behaviour {
    Kind kind = Kind::Normal;
    DWORD milliseconds = 0;
};

// Reads the process's command line; an unknown word is the normal behaviour.
Behaviour ReadBehaviour();

// The event that ends a hanging stop of the service with this key name.
std::wstring ReleaseEventName(const std::wstring& serviceName);

} // namespace testservice
