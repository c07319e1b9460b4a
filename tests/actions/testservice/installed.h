// The test service installed with the local service manager for one test and removed again afterwards.
#pragma once
#include "frame/handles.h"
#include <string>

namespace testservice {

class InstalledService {
public:
    // behaviour: the command-line words of the test service (see behaviour.h), such as L"slowstart 1500".
    explicit InstalledService(const std::wstring& behaviour);
    ~InstalledService();
    InstalledService(const InstalledService&) = delete;
    InstalledService& operator=(const InstalledService&) = delete;

    bool installed() const { return static_cast<bool>(service_); }
    const std::wstring& keyName() const { return keyName_; }
    const std::wstring& displayName() const { return displayName_; }

    // The current state, or 0 when it cannot be read.
    DWORD State() const;
    // Polls until the state is reached; false when it is not within the time.
    bool WaitForState(DWORD state, DWORD milliseconds) const;
    // Starts the service directly and waits until it runs.
    bool Start() const;
    // Whether the service has been deleted (it stays marked for deletion while this object holds it open).
    bool Deleted() const;
    // Ends a hanging stop (the hangstop behaviour).
    void Release() const;

private:
    void Remove() noexcept;
    tol::unique_service manager_;
    tol::unique_service service_;
    std::wstring keyName_;
    std::wstring displayName_;
};

} // namespace testservice
