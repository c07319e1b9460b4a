#include "pickers.h"
#include "page.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <lm.h>
#include <memory>

namespace tol {
namespace {

// Message ids of the string table.
constexpr UINT kOpenManagerFailed = 22;  // "Error opening service manager: %1"
constexpr UINT kEnumerationFailed = 151; // "Error enumerating services: %1"

// The size query's buffer, smaller than one entry: the query only learns how much room the whole list takes. The
// read gets that much and this much to spare.
constexpr DWORD kEntrySize = 36;

struct net_buffer_deleter {
    void operator()(BYTE* buffer) const noexcept { ::NetApiBufferFree(buffer); }
};
using unique_net_buffer = std::unique_ptr<BYTE, net_buffer_deleter>;

// Storage for service entries: aligned for them, at least `bytes` long.
class ServiceBuffer {
public:
    explicit ServiceBuffer(DWORD bytes)
        : entries_((bytes + sizeof(ENUM_SERVICE_STATUSW) - 1) / sizeof(ENUM_SERVICE_STATUSW)), bytes_(bytes) {}
    ENUM_SERVICE_STATUSW* data() noexcept { return entries_.data(); }
    DWORD size() const noexcept { return bytes_; }
    const ENUM_SERVICE_STATUSW& operator[](size_t index) const noexcept { return entries_[index]; }

private:
    std::vector<ENUM_SERVICE_STATUSW> entries_;
    DWORD bytes_;
};

std::wstring FailureText(UINT message, DWORD code) { return FormatResourceMessage(message, {SystemErrorText(code)}); }

} // namespace

void FillComputerList(HWND combo) {
    BYTE* raw = nullptr;
    DWORD read = 0, total = 0;
    const NET_API_STATUS status =
        ::NetServerEnum(nullptr, 100, &raw, MAX_PREFERRED_LENGTH, &read, &total, SV_TYPE_SERVER, nullptr, nullptr);
    const unique_net_buffer buffer(raw);
    if (!buffer || (status != NERR_Success && status != ERROR_MORE_DATA)) return;
    ::SendMessageW(combo, CB_RESETCONTENT, 0, 0);
    const auto* servers = reinterpret_cast<const SERVER_INFO_100*>(buffer.get());
    for (DWORD i = 0; i < read; ++i) {
        if (servers[i].sv100_name) ::SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(servers[i].sv100_name));
    }
}

ServiceQuery QueryServices(const std::wstring& computer) {
    ServiceQuery result;
    const unique_service manager(
        ::OpenSCManagerW(computer.empty() ? nullptr : computer.c_str(), nullptr, SC_MANAGER_ENUMERATE_SERVICE));
    if (!manager) {
        result.error = FailureText(kOpenManagerFailed, ::GetLastError());
        return result;
    }
    DWORD needed = 0, count = 0;
    ServiceBuffer probe(kEntrySize);
    if (::EnumServicesStatusW(manager.get(), SERVICE_DRIVER | SERVICE_WIN32, SERVICE_STATE_ALL, probe.data(), probe.size(),
                              &needed, &count, nullptr))
        return result; // the whole list fits in no room: nothing to show
    if (const DWORD error = ::GetLastError(); error != ERROR_MORE_DATA) {
        result.error = FailureText(kEnumerationFailed, error);
        return result;
    }
    ServiceBuffer buffer(needed + kEntrySize);
    if (!::EnumServicesStatusW(manager.get(), SERVICE_WIN32, SERVICE_STATE_ALL, buffer.data(), buffer.size(), &needed, &count,
                               nullptr)) {
        result.error = FailureText(kEnumerationFailed, ::GetLastError());
        return result;
    }
    for (DWORD i = 0; i < count; ++i) result.displayNames.emplace_back(buffer[i].lpDisplayName ? buffer[i].lpDisplayName : L"");
    result.listed = true;
    return result;
}

void FillServiceList(HWND page, int comboId, const std::wstring& computer) {
    const ServiceQuery query = QueryServices(computer);
    if (query.listed) {
        const HWND combo = ::GetDlgItem(page, comboId);
        const std::wstring kept = WindowText(combo); // a service typed or chosen before the refill stays
        ::SendMessageW(combo, CB_RESETCONTENT, 0, 0);
        for (const std::wstring& name : query.displayNames)
            ::SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(name.c_str()));
        ::SetWindowTextW(combo, kept.c_str());
    }
    if (!query.error.empty()) ::MessageBoxW(page, query.error.c_str(), L"Velmora", MB_OK | MB_ICONEXCLAMATION);
}

} // namespace tol
