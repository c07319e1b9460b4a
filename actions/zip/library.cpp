#include "library.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/messages.h"

namespace tol {
namespace {

} // namespace

ArchiveEntry ArchiveLibrary::Entry() {
    ArchiveEntry entry = loaded_.load(std::memory_order_acquire);
    if (!entry) {
        entry = Load();
        loaded_.store(entry, std::memory_order_release);
    }
    return entry;
}

// The loaded library is pinned, so that it stays loaded once our own reference is released; two threads that
// load at once only pin it twice.
ArchiveEntry ArchiveLibrary::Load() const {
    const unique_module library(::LoadLibraryW(file_));
    if (!library) ThrowLibraryLoadFailure(file_);
    const FARPROC entry = ::GetProcAddress(library.get(), entry_);
    if (!entry) ThrowLibraryLoadFailure(file_);
    HMODULE pinned = nullptr;
    const DWORD flags = GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
    if (!::GetModuleHandleExW(flags, reinterpret_cast<LPCWSTR>(entry), &pinned)) ThrowLibraryLoadFailure(file_);
    return reinterpret_cast<ArchiveEntry>(entry);
}

} // namespace tol
