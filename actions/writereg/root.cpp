#include "root.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include <iterator>

namespace tol {
namespace {

// The roots a step may name. RootKey is a signed 32-bit number; the handles are sign-extended on 64-bit.
const HKEY kRootKeys[] = {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS, HKEY_CURRENT_CONFIG};

HKEY PredefinedRoot(long rootKey) {
    const HKEY root = reinterpret_cast<HKEY>(static_cast<LONG_PTR>(rootKey));
    for (HKEY known : kRootKeys) {
        if (known == root) return root;
    }
    throw truntime_error(FormatMessageText(L"The root key 0x%1!x! is not one of the registry's root keys.", {rootKey}));
}

unique_hkey ConnectRoot(HKEY root, const std::wstring& computer) {
    // A name that already starts with backslashes is taken as it stands and still gets two more.
    const std::wstring machine = L"\\\\" + computer;
    unique_hkey connected;
    const LONG status = ::RegConnectRegistryW(machine.c_str(), root, connected.put());
    if (status != ERROR_SUCCESS) throw truntime_error(SystemErrorText(static_cast<HRESULT>(status)));
    return connected;
}

} // namespace

unique_hkey OpenRegistryRoot(long rootKey, const std::wstring& computer) {
    const HKEY root = PredefinedRoot(rootKey);
    if (computer.empty()) return unique_hkey(root);
    return ConnectRoot(root, computer);
}

} // namespace tol
