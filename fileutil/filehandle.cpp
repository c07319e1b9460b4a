#include "filehandle.h"
#include "frame/errors.h"
#include "frame/messages.h"

namespace tol {
namespace {

struct ModeRow {
    DWORD access;
    DWORD sharing;
    DWORD disposition;
};

constexpr ModeRow kModes[] = {
    {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING},  // Read
    {GENERIC_WRITE, 0, CREATE_ALWAYS},               // Create
    {GENERIC_WRITE, 0, OPEN_ALWAYS},                 // Append
};

// WriteFile takes a 32-bit count: larger buffers go out in pieces of this size.
constexpr std::size_t kLargestWrite = 0x40000000;

[[noreturn]] void ThrowFileError(const wchar_t* pattern, const std::wstring& name) {
    const HRESULT hr = HResultFromLastError();
    throw win32_error(FormatMessageText(pattern, {name, SystemErrorText(hr)}));
}

} // namespace

unique_file OpenFileQuiet(const std::wstring& name, FileMode mode) noexcept {
    const ModeRow& row = kModes[static_cast<int>(mode)];
    unique_file file(::CreateFileW(name.c_str(), row.access, row.sharing, nullptr, row.disposition,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file && mode == FileMode::Append) {
        LARGE_INTEGER zero{};
        // A file whose end cannot be found is not appended to: writing at its start would overwrite it.
        if (!::SetFilePointerEx(file.get(), zero, nullptr, FILE_END)) {
            const DWORD code = ::GetLastError();
            file.reset();
            ::SetLastError(code);
        }
    }
    return file;
}

HANDLE FileHandle::OpenQuiet(const std::wstring& name, FileMode mode) noexcept {
    unique_file opened = OpenFileQuiet(name, mode);
    const DWORD code = ::GetLastError();
    handle_ = std::move(opened);
    try {
        name_ = name;
    } catch (...) {
        name_.clear();  // only the messages lose the name
    }
    ::SetLastError(code);
    return handle_.get();
}

void FileHandle::Open(const std::wstring& name, FileMode mode) {
    if (OpenQuiet(name, mode) == INVALID_HANDLE_VALUE) {
        const HRESULT hr = HResultFromLastError();
        const wchar_t* verb = mode == FileMode::Create ? L"create" : L"open";
        throw win32_error(FormatMessageText(L"Failed to %1 '%2': %3", {verb, name, SystemErrorText(hr)}));
    }
}

bool FileHandle::ReadBytes(void* buffer, DWORD count, DWORD* read) {
    DWORD done = 0;
    if (!::ReadFile(handle_.get(), buffer, count, &done, nullptr)) ThrowFileError(L"Failed to read file '%1': %2", name_);
    if (read) *read = done;
    return done == count;
}

void FileHandle::WriteBytes(const void* buffer, std::size_t count) {
    const auto* bytes = static_cast<const unsigned char*>(buffer);
    while (count > 0) {
        const DWORD piece = static_cast<DWORD>(count < kLargestWrite ? count : kLargestWrite);
        DWORD written = 0;
        if (!::WriteFile(handle_.get(), bytes, piece, &written, nullptr) || written != piece)
            ThrowFileError(L"Failed to write to file '%1': %2", name_);
        bytes += piece;
        count -= piece;
    }
}

} // namespace tol
