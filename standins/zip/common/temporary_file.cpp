#include "temporary_file.h"

namespace zipwin {

tol::unique_file CreateTemporaryFile(const std::wstring& folder, DWORD access, DWORD share, std::wstring& name) {
    unsigned value = ::GetTickCount() ^ (::GetCurrentProcessId() << 16) ^ (::GetCurrentThreadId() << 8);
    for (int attempt = 0; attempt < 100; ++attempt, value = value * 1103515245u + 12345u) {
        name = folder + L"~dz";
        for (int shift = 28; shift >= 0; shift -= 4) name += L"0123456789ABCDEF"[(value >> shift) & 0xF];
        name += L".tmp";
        tol::unique_file file(::CreateFileW(name.c_str(), access, share, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                                            nullptr));
        if (file || ::GetLastError() != ERROR_FILE_EXISTS) return file;
    }
    return tol::unique_file();
}

} // namespace zipwin
