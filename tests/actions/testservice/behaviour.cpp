#include "behaviour.h"
#include "frame/handles.h"
#include <shellapi.h>
#include <cwchar>

namespace testservice {

Behaviour ReadBehaviour() {
    int count = 0;
    tol::unique_hlocal arguments(::CommandLineToArgvW(::GetCommandLineW(), &count));
    auto* argv = static_cast<LPWSTR*>(arguments.get());
    Behaviour behaviour;
    if (!argv || count < 2) return behaviour;
    const std::wstring word = argv[1];
    if (count > 2) behaviour.milliseconds = std::wcstoul(argv[2], nullptr, 10);
    if (word == L"slowstart") behaviour.kind = Kind::SlowStart;
    if (word == L"failstart") behaviour.kind = Kind::FailStart;
    if (word == L"slowstop") behaviour.kind = Kind::SlowStop;
    if (word == L"hangstop") behaviour.kind = Kind::HangStop;
    return behaviour;
}

std::wstring ReleaseEventName(const std::wstring& serviceName) { return L"Global\\velmora-testservice-release-" + serviceName; }

} // namespace testservice
