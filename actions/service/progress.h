// Telling a slow stop from a hung one by the progress that the service reports.
#pragma once
#include <windows.h>
#include <winsvc.h>

namespace tol {

// A stop counts as hung once neither the service's state nor its checkpoint has changed for longer than
// twice its wait hint, and never before ten seconds: a service that keeps reporting progress is never hung.
class StopProgress {
public:
    explicit StopProgress(const SERVICE_STATUS& status) noexcept;
    // Takes a newly read status into account; true when the stop has made no progress for too long.
    [[nodiscard]] bool IsHung(const SERVICE_STATUS& status) noexcept;

private:
    DWORD state_;
    DWORD checkpoint_;
    ULONGLONG since_; // tick count of the last change seen
};

} // namespace tol
