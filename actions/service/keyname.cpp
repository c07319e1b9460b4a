#include "keyname.h"

namespace tol {

bool LookUpKeyName(SC_HANDLE manager, const std::wstring& displayName, std::wstring& keyName) {
    std::wstring buffer(256, L'\0'); // key names have at most 256 characters; a longer answer gets its size
    for (int attempt = 0; attempt < 2; ++attempt) {
        DWORD size = static_cast<DWORD>(buffer.size());
        if (::GetServiceKeyNameW(manager, displayName.c_str(), buffer.data(), &size)) {
            keyName.assign(buffer.c_str());
            return true;
        }
        if (::GetLastError() != ERROR_INSUFFICIENT_BUFFER) return false;
        buffer.assign(size + 1, L'\0');
    }
    return false;
}

} // namespace tol
