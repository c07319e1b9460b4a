// Where the run's lines go. Each line is written whole and at once; a line that holds line breaks is written as it
// is. Lines end in a single LF on every platform, so a captured log has the same bytes under Wine and Windows.
#pragma once
#include <windows.h>
#include <mutex>
#include <string_view>

namespace host {

class Log {
public:
    virtual ~Log() = default;
    // May be called from any thread.
    virtual void Line(std::wstring_view text) = 0;
};

// Writes to a standard handle: WriteConsoleW on a console, else UTF-8 bytes with WriteFile (files, pipes).
class ConsoleLog final : public Log {
public:
    explicit ConsoleLog(DWORD standardHandle) noexcept;
    void Line(std::wstring_view text) override;

private:
    HANDLE handle_; // not owned: the process's standard handle
    bool console_ = false;
    std::mutex mutex_;
};

} // namespace host
