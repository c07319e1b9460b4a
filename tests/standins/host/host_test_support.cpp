#include "host_test_support.h"
#include "values.h"
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include "frame/variant.h"
#include <gtest/gtest.h>
#include <cstring>
#include <deque>

namespace hosttest {
namespace {

class ComEnvironment final : public testing::Environment {
public:
    void SetUp() override { ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }
    void TearDown() override { ::CoUninitialize(); }
};

testing::Environment* const g_com = testing::AddGlobalTestEnvironment(new ComEnvironment);

} // namespace

void RecordingLog::Line(std::wstring_view text) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (lines_.empty()) first_ = ::GetTickCount64();
    lines_.emplace_back(text);
}

void RecordingLog::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    lines_.clear();
}

std::vector<std::wstring> RecordingLog::lines() {
    std::lock_guard<std::mutex> lock(mutex_);
    return lines_;
}

ULONGLONG RecordingLog::firstLineTime() {
    std::lock_guard<std::mutex> lock(mutex_);
    return first_;
}

std::wstring BinFolder() {
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

std::wstring NewTempFolder(const std::wstring& prefix) {
    std::wstring temp(::GetTempPathW(0, nullptr), L'\0');
    temp.resize(::GetTempPathW(static_cast<DWORD>(temp.size()), temp.data()));
    const std::wstring folder =
        temp + prefix + L" " + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(::GetTickCount64());
    EXPECT_TRUE(::CreateDirectoryW(folder.c_str(), nullptr)) << ::GetLastError();
    return folder;
}

std::wstring TakeErrorDescription() {
    tol::com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"(none)";
    tol::bstr description;
    info->GetDescription(description.receive());
    return description.str();
}

std::wstring ArrayTexts(const VARIANT& value) {
    if (V_VT(&value) != (VT_ARRAY | VT_VARIANT)) return L"(not a list)";
    LONG lower = 0, upper = -1;
    ::SafeArrayGetLBound(V_ARRAY(&value), 1, &lower);
    ::SafeArrayGetUBound(V_ARRAY(&value), 1, &upper);
    std::wstring texts;
    for (LONG i = lower; i <= upper; ++i) {
        tol::variant element;
        ::SafeArrayGetElement(V_ARRAY(&value), &i, element.receive());
        texts += element.type() == VT_BSTR ? std::wstring(host::BstrView(V_BSTR(element.ptr()))) : L"(not a text)";
        texts += L"|";
    }
    return texts;
}

void FillWithGarbage(VARIANT& value) {
    std::memset(&value, 0xA5, sizeof value);
    V_VT(&value) = VT_I4;
}

BSTR Arg(const std::wstring& text) {
    static std::deque<tol::bstr> keep;
    keep.emplace_back(text);
    return keep.back().get();
}

} // namespace hosttest
