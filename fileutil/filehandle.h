// A Win32 file opened in one of three modes, with byte reads and writes that throw on failure.
#pragma once
#include "frame/handles.h"
#include <windows.h>
#include <cstddef>
#include <string>

namespace tol {

// Read: shared for reading, must exist. Create: exclusive, replaces the file. Append: exclusive, opens or
// creates the file and moves to its end.
enum class FileMode { Read = 0, Create = 1, Append = 2 };

// Opens name in mode; an invalid handle on failure with the platform's error code left in place.
[[nodiscard]] unique_file OpenFileQuiet(const std::wstring& name, FileMode mode) noexcept;

class FileHandle {
public:
    FileHandle() noexcept = default;

    // Throws tol::win32_error "Failed to create/open '<name>': <system text>". The handle held before is
    // closed whether or not the new one opens.
    void Open(const std::wstring& name, FileMode mode);
    // The new handle, or INVALID_HANDLE_VALUE with the platform's error code left for the caller.
    [[nodiscard]] HANDLE OpenQuiet(const std::wstring& name, FileMode mode) noexcept;

    // True when exactly count bytes were read; *read (when given) receives the number read. A failing
    // platform read throws tol::win32_error.
    [[nodiscard]] bool ReadBytes(void* buffer, DWORD count, DWORD* read = nullptr);
    // Writes all count bytes or throws tol::win32_error.
    void WriteBytes(const void* buffer, std::size_t count);

    HANDLE get() const noexcept { return handle_.get(); }
    bool IsOpen() const noexcept { return static_cast<bool>(handle_); }
    const std::wstring& Name() const noexcept { return name_; }
    void Close() noexcept { handle_.reset(); }

private:
    unique_file handle_;
    std::wstring name_;  // the name given to the last open, for messages
};

} // namespace tol
