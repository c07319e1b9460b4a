#include "log.h"
#include "text.h"
#include <string>

namespace host {

ConsoleLog::ConsoleLog(DWORD standardHandle) noexcept : handle_(::GetStdHandle(standardHandle)) {
    DWORD mode = 0;
    console_ = handle_ && handle_ != INVALID_HANDLE_VALUE && ::GetFileType(handle_) == FILE_TYPE_CHAR &&
               ::GetConsoleMode(handle_, &mode);
}

void ConsoleLog::Line(std::wstring_view text) {
    if (!handle_ || handle_ == INVALID_HANDLE_VALUE) return;
    std::wstring line(text);
    line += L'\n';
    std::lock_guard<std::mutex> lock(mutex_);
    if (console_) {
        DWORD written = 0;
        ::WriteConsoleW(handle_, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
        return;
    }
    const std::string bytes = Utf8(line);
    for (size_t done = 0; done < bytes.size();) {
        DWORD written = 0;
        if (!::WriteFile(handle_, bytes.data() + done, static_cast<DWORD>(bytes.size() - done), &written, nullptr) ||
            written == 0)
            return; // nobody reads the output any more: the run goes on without it
        done += written;
    }
}

} // namespace host
