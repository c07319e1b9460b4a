// The test service installed with the local service manager for one test and removed again afterwards.
#pragma once
#include "frame/handles.h"
#include <string>

namespace testservice {

class InstalledService {
public:
    // behaviour: the command-line words of the test service (see behaviour.h), such as L"slow 1500".
    explicit InstalledService(const std::wstring& behaviour);
    ~InstalledService();

    bool installed() const { return static_cast<bool>(service_); }
    const std::wstring& keyName() const { return keyName_; }
    const std::wstring& displayName() const { return displayName_; }

    // The current state, or 0 when it cannot be read.
    DWORD State() const;
    // Whether the service has been deleted (it stays marked for deletion while this object holds it open).
    bool Deleted() const;

private:
    tol::unique_service manager_;
    tol::unique_service service_;
    std::wstring keyName_;
    std::wstring displayName_;
};

} // namespace testservice
