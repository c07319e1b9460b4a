#include "command.h"
#include "output_pipe.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <cwctype>

namespace host {
namespace {

using unique_job = tol::unique_handle<tol::null_handle_traits>;

struct Child {
    tol::unique_process process;
    unique_job job; // null when the process could not be put in a job
};

tol::unique_file OpenNul() {
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    return tol::unique_file(::CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherit,
                                          OPEN_EXISTING, 0, nullptr));
}

// Exactly the handles a child inherits, rather than every inheritable handle of the host: a command that leaves a
// process running must not keep the host's own stdout open for whoever reads it.
class InheritedHandles {
public:
    explicit InheritedHandles(std::vector<HANDLE> handles) : handles_(std::move(handles)) {
        SIZE_T size = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
        buffer_.resize(size);
        THROW_LAST_ERROR_IF(!::InitializeProcThreadAttributeList(list(), 1, 0, &size));
        initialized_ = true;
        THROW_LAST_ERROR_IF(!::UpdateProcThreadAttribute(list(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, handles_.data(),
                                                         handles_.size() * sizeof(HANDLE), nullptr, nullptr));
    }
    ~InheritedHandles() {
        if (initialized_) ::DeleteProcThreadAttributeList(list());
    }
    InheritedHandles(const InheritedHandles&) = delete;
    InheritedHandles& operator=(const InheritedHandles&) = delete;
    LPPROC_THREAD_ATTRIBUTE_LIST list() noexcept { return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(buffer_.data()); }

private:
    std::vector<HANDLE> handles_;
    std::vector<char> buffer_;
    bool initialized_ = false;
};

// Starts the command suspended, puts it in a job and lets it run; output null sends its output to NUL.
Child StartChild(const CommandRequest& request, HANDLE output, DWORD& error) {
    const tol::unique_file nul = OpenNul();
    InheritedHandles inherited(output ? std::vector<HANDLE>{nul.get(), output} : std::vector<HANDLE>{nul.get()});
    STARTUPINFOEXW startup{};
    startup.StartupInfo.cb = sizeof startup;
    startup.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    startup.StartupInfo.hStdInput = nul.get();
    startup.StartupInfo.hStdOutput = startup.StartupInfo.hStdError = output ? output : nul.get();
    startup.lpAttributeList = inherited.list();
    std::wstring commandLine = request.commandLine; // CreateProcessW may write to it
    const DWORD flags = CREATE_SUSPENDED | CREATE_UNICODE_ENVIRONMENT | EXTENDED_STARTUPINFO_PRESENT |
                        (::GetConsoleWindow() ? 0 : CREATE_NO_WINDOW);
    PROCESS_INFORMATION info{};
    if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, flags, nullptr,
                          request.startFolder.empty() ? nullptr : request.startFolder.c_str(), &startup.StartupInfo, &info)) {
        error = ::GetLastError();
        return Child{tol::unique_process(), unique_job()};
    }
    Child child{tol::unique_process(info.hProcess), unique_job(::CreateJobObjectW(nullptr, nullptr))};
    const tol::unique_process thread(info.hThread);
    if (child.job && !::AssignProcessToJobObject(child.job.get(), child.process.get())) child.job.reset();
    ::ResumeThread(thread.get());
    return child;
}

void EndChild(const Child& child) {
    if (!child.job || !::TerminateJobObject(child.job.get(), kEndedExitCode))
        ::TerminateProcess(child.process.get(), kEndedExitCode);
    ::WaitForSingleObject(child.process.get(), 10000);
}

DWORD MillisecondsUntil(ULONGLONG deadline) {
    if (!deadline) return INFINITE;
    const ULONGLONG now = ::GetTickCount64();
    return now >= deadline ? 0 : static_cast<DWORD>(std::min<ULONGLONG>(deadline - now, INFINITE - 1));
}

CommandEnd WaitForEnd(const Child& child, PipeReader& reader, HANDLE stopEvent, long timeoutSeconds) {
    const ULONGLONG deadline = timeoutSeconds > 0 ? ::GetTickCount64() + timeoutSeconds * 1000ULL : 0;
    for (;;) {
        // The stop event comes first: when it and the process are both signalled, the command counts as stopped.
        const HANDLE handles[] = {stopEvent, child.process.get(), reader.event()};
        const DWORD count = reader.closed() ? 2 : 3;
        const DWORD result = ::WaitForMultipleObjects(count, handles, FALSE, MillisecondsUntil(deadline));
        if (result == WAIT_OBJECT_0) return CommandEnd::Stopped;
        if (result == WAIT_OBJECT_0 + 1) return CommandEnd::Exited;
        if (result == WAIT_OBJECT_0 + 2) {
            reader.Complete();
        } else if (result == WAIT_TIMEOUT) {
            if (MillisecondsUntil(deadline) == 0) return CommandEnd::TimedOut;
        } else {
            tol::ThrowLastError();
        }
    }
}

// Output the command wrote just before it ended, or that processes it started still write.
void Drain(PipeReader& reader) {
    const ULONGLONG limit = ::GetTickCount64() + kDrainLimitMilliseconds;
    while (!reader.closed()) {
        const DWORD left = MillisecondsUntil(limit);
        if (left == 0 || ::WaitForSingleObject(reader.event(), std::min(left, kQuietMilliseconds)) != WAIT_OBJECT_0) return;
        reader.Complete();
    }
}

std::optional<long> ParseCode(const std::wstring& code) {
    const bool hex = code.size() > 2 && code[0] == L'0' && (code[1] == L'x' || code[1] == L'X');
    const wchar_t* digits = code.c_str() + (hex ? 2 : 0);
    if (hex && (code.size() > 10 || !std::all_of(code.begin() + 2, code.end(), [](wchar_t c) { return std::iswxdigit(c); })))
        return std::nullopt;
    wchar_t* end = nullptr;
    errno = 0;
    const long long value = hex ? static_cast<long long>(std::wcstoull(digits, &end, 16)) : std::wcstoll(digits, &end, 10);
    if (end == digits || *end != L'\0' || errno == ERANGE) return std::nullopt;
    if (value < -2147483648LL || value > 0xFFFFFFFFLL) return std::nullopt;
    return static_cast<long>(static_cast<DWORD>(value));
}

} // namespace

CommandOutcome RunCommand(const CommandRequest& request, HANDLE stopEvent, const LineSink& sink) {
    CommandOutcome outcome;
    if (!request.wait) {
        const Child child = StartChild(request, nullptr, outcome.startError);
        outcome.end = child.process ? CommandEnd::NotWaited : CommandEnd::NotStarted;
        return outcome;
    }
    OutputPipe pipe = CreateOutputPipe();
    const Child child = StartChild(request, pipe.write.get(), outcome.startError);
    pipe.write.reset(); // the child holds the only write ends now: the pipe closes when they are gone
    if (!child.process) return outcome;
    LineSplitter lines(sink);
    PipeReader reader(pipe.read.get(), lines);
    reader.Start();
    try {
        outcome.end = WaitForEnd(child, reader, stopEvent, request.timeoutSeconds);
    } catch (...) {
        EndChild(child); // a wait that failed leaves nothing running
        throw;
    }
    if (outcome.end != CommandEnd::Exited) EndChild(child);
    Drain(reader);
    lines.Finish();
    ::GetExitCodeProcess(child.process.get(), &outcome.exitCode);
    return outcome;
}

std::optional<std::vector<long>> ParseSuccessCodes(std::wstring_view text) {
    std::vector<long> codes;
    for (const std::wstring& token : tol::SplitTokens(text, L",;")) {
        const size_t first = token.find_first_not_of(L" \t");
        if (first == std::wstring::npos) continue;
        const std::optional<long> code = ParseCode(token.substr(first, token.find_last_not_of(L" \t") - first + 1));
        if (!code) return std::nullopt;
        codes.push_back(*code);
    }
    if (codes.empty()) codes.push_back(0);
    return codes;
}

} // namespace host
