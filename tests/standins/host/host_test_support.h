// Shared by the host's tests (host_test_support.cpp gives the test thread COM): a log that records, and readers
// of results.
#pragma once
#include "log.h"
#include "values.h"
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include <cstring>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace hosttest {

// Records each line, and the tick count at which the first arrived.
class RecordingLog final : public host::Log {
public:
    void Line(std::wstring_view text) override {
        std::lock_guard<std::mutex> lock(mutex_);
        if (lines_.empty()) first_ = ::GetTickCount64();
        lines_.emplace_back(text);
    }
    std::vector<std::wstring> lines(ULONGLONG* firstLineTime = nullptr) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (firstLineTime) *firstLineTime = first_;
        return lines_;
    }

private:
    std::mutex mutex_;
    std::vector<std::wstring> lines_;
    ULONGLONG first_ = 0;
};

// The description of the thread's error information (taken), or "(none)".
inline std::wstring TakeErrorDescription() {
    tol::com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"(none)";
    tol::bstr description;
    info->GetDescription(description.receive());
    return description.str();
}

// "vt:text": a text, an integer as digits, a list as its texts each followed by "|".
inline std::wstring Shown(const VARIANT& value) {
    std::wstring text = std::to_wstring(V_VT(&value)) + L":";
    switch (V_VT(&value)) {
    case VT_EMPTY: return text;
    case VT_BSTR: return text + std::wstring(host::BstrView(V_BSTR(&value)));
    case VT_I4: return text + std::to_wstring(V_I4(&value));
    case VT_ARRAY | VT_VARIANT: break;
    default: return text + L"?";
    }
    const SAFEARRAY* array = V_ARRAY(&value);
    for (ULONG i = 0; i < array->rgsabound[0].cElements; ++i) {
        const VARIANT& element = static_cast<const VARIANT*>(array->pvData)[i];
        text += (V_VT(&element) == VT_BSTR ? std::wstring(host::BstrView(V_BSTR(&element))) : L"?") + L"|";
    }
    return text;
}

// A VARIANT out parameter as a caller that forgot to initialise it would pass it.
inline void FillWithGarbage(VARIANT& value) {
    std::memset(&value, 0xA5, sizeof value);
    V_VT(&value) = VT_I4;
}

// A caller's BSTR argument, alive until the program ends.
inline BSTR Arg(const std::wstring& text) {
    static std::deque<tol::bstr> keep;
    keep.emplace_back(text);
    return keep.back().get();
}

} // namespace hosttest
