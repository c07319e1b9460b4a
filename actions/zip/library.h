// An archive library's entry point, loaded by name on first use; the library then stays loaded for the process.
#pragma once
#include <windows.h>
#include <atomic>

namespace tol {

// The entry points take the command block and return the library's result code.
using ArchiveEntry = long(__stdcall*)(void* block);

class ArchiveLibrary {
public:
    constexpr ArchiveLibrary(const wchar_t* file, const char* entry) noexcept : file_(file), entry_(entry) {}
    ArchiveLibrary(const ArchiveLibrary&) = delete;
    ArchiveLibrary& operator=(const ArchiveLibrary&) = delete;

    // The entry point; a library or entry point that cannot be found throws comet::com_error with the platform's
    // error and a description that names the library. A failed load is tried again at the next call.
    ArchiveEntry Entry();
    const wchar_t* File() const noexcept { return file_; }

private:
    ArchiveEntry Load() const;

    const wchar_t* file_;
    const char* entry_;
    std::atomic<ArchiveEntry> loaded_{nullptr};
};

} // namespace tol
