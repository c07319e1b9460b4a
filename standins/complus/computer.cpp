#include "computer.h"
#include "schema.h"

namespace complus {
namespace {

std::wstring ComputerName(COMPUTER_NAME_FORMAT format) {
    DWORD size = 0;
    ::GetComputerNameExW(format, nullptr, &size);
    if (size == 0) return {};
    std::wstring name(size, L'\0');
    if (!::GetComputerNameExW(format, name.data(), &size)) return {};
    name.resize(size);
    return name;
}

} // namespace

std::wstring LocalComputerName() { return ComputerName(ComputerNameNetBIOS); }

bool IsLocalComputer(std::wstring_view name) {
    if (name.substr(0, 2) == L"\\\\") name.remove_prefix(2);
    if (name.empty() || name == L"." || SameText(name, L"localhost") || name == L"127.0.0.1") return true;
    for (COMPUTER_NAME_FORMAT format : {ComputerNameNetBIOS, ComputerNameDnsHostname, ComputerNameDnsFullyQualified}) {
        const std::wstring local = ComputerName(format);
        if (!local.empty() && SameText(name, local)) return true;
    }
    return false;
}

} // namespace complus
