// Running ZIP Files or UNZIP Files through its action component as the host does, with the step's properties given
// as a table of typed values, and what came back: HRESULT, status, error description and log lines.
#pragma once
#include "host_doubles.h"
#include <initializer_list>
#include <string>
#include <variant>
#include <vector>

namespace ziptest {

constexpr long kGarbageStatus = 0x5A5A;

// A property whose read fails with 0x80041234 "no such property today".
struct Fails {};
constexpr HRESULT kReadFailure = static_cast<HRESULT>(0x80041234);

using Value = std::variant<bool, long, std::wstring, Fails>;
struct Property {
    std::wstring name;
    Value value;
};
using Properties = std::vector<Property>;

struct Outcome {
    HRESULT hr = E_UNEXPECTED;
    long status = kGarbageStatus;   // keeps the garbage unless Execute writes it
    std::wstring description;       // the thread's error information after a failure
    std::vector<std::wstring> log;
};

void SetProperties(test::TestStep& step, const Properties& properties);

// stopped: the build's stop event is set before the run.
Outcome RunAction(REFCLSID action, const Properties& properties, bool stopped = false);

// The properties that a new step's page holds, with the test's changes over them (a later entry wins).
Properties ZipDefaults(std::initializer_list<Property> changes);
Properties UnzipDefaults(std::initializer_list<Property> changes);

} // namespace ziptest
