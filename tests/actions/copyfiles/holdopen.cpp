// copyfiles-holdopen PATH MILLISECONDS EVENTS: holds PATH open without sharing (another process that opens it
// meets ERROR_SHARING_VIOLATION), sets the named event EVENTS-ready once it does, and lets go after MILLISECONDS
// or as soon as the named event EVENTS-go is set, whichever comes first.
// Exit code 0 after letting go, 1 when the file cannot be opened, 2 for wrong arguments or events.
#include "frame/handles.h"
#include <cwchar>
#include <string>

int wmain(int argc, wchar_t** argv) {
    if (argc != 4) return 2;
    const std::wstring events = argv[3];
    const tol::unique_event ready(::OpenEventW(EVENT_MODIFY_STATE, FALSE, (events + L"-ready").c_str()));
    const tol::unique_event go(::OpenEventW(SYNCHRONIZE, FALSE, (events + L"-go").c_str()));
    if (!ready || !go) return 2;
    const tol::unique_file file(
        ::CreateFileW(argv[1], GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file) return 1;
    if (!::SetEvent(ready.get())) return 2;
    ::WaitForSingleObject(go.get(), static_cast<DWORD>(std::wcstoul(argv[2], nullptr, 10)));
    return 0;
}
