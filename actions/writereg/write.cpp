#include "write.h"
#include "dword.h"
#include "frame/errors.h"
#include "frame/registry.h"

namespace tol {

void WriteRegistryValue(HKEY key, const std::wstring& name, long valueType, const std::wstring& data) {
    if (valueType != REG_DWORD) {
        SetStringValue(key, name.c_str(), data);
        return;
    }
    const DWORD number = ParseDwordText(data);
    THROW_IF_WIN32_ERROR(
        ::RegSetValueExW(key, name.c_str(), 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number), sizeof number));
}

} // namespace tol
