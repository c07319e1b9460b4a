// Shared by the host's tests: COM for the test thread, a log that records, folders, and readers of results.
#pragma once
#include "log.h"
#include <oaidl.h>
#include <mutex>
#include <string>
#include <vector>

namespace hosttest {

// Records each line with the tick count at which it arrived.
class RecordingLog final : public host::Log {
public:
    void Line(std::wstring_view text) override;
    void clear();
    std::vector<std::wstring> lines();
    ULONGLONG firstLineTime();

private:
    std::mutex mutex_;
    std::vector<std::wstring> lines_;
    ULONGLONG first_ = 0;
};

std::wstring BinFolder();
// A new folder below the temp folder; its name starts with prefix.
std::wstring NewTempFolder(const std::wstring& prefix);
// The description of the thread's error information (taken), or "(none)".
std::wstring TakeErrorDescription();
// The elements of a one-dimensional array of VARIANT texts joined by "|" after each.
std::wstring ArrayTexts(const VARIANT& value);
// A VARIANT out parameter as a caller that forgot to initialise it would pass it.
void FillWithGarbage(VARIANT& value);
// A caller's BSTR argument, alive until the program ends.
BSTR Arg(const std::wstring& text);

} // namespace hosttest
