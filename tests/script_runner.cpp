#include "script_runner.h"
#include "frame/handles.h"
#include "frame/messages.h"

namespace test {

std::wstring BinFolder() {
    std::wstring path(1024, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

namespace {
std::wstring Decode(const std::string& bytes) {
    if (bytes.empty()) return {};
    const bool utf8 = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()),
                                            nullptr, 0) > 0;
    return tol::Widen(bytes, utf8 ? CP_UTF8 : CP_OEMCP);
}
} // namespace

ProgramRun RunProgram(std::wstring commandLine, const std::wstring& folder, DWORD timeoutMs) {
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    const std::wstring outPath = folder + L"\\stdout.txt", errPath = folder + L"\\stderr.txt";
    ProgramRun run;
    {
        const auto create = [&](const std::wstring& path) {
            return tol::unique_file(
                ::CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS, 0, nullptr));
        };
        const tol::unique_file out = create(outPath), err = create(errPath);
        STARTUPINFOW startup{sizeof startup};
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = out.get();
        startup.hStdError = err.get();
        PROCESS_INFORMATION info{};
        const ULONGLONG start = ::GetTickCount64();
        if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &info)) {
            run.err = L"cannot start: " + tol::SystemErrorText(tol::HResultFromLastError());
            return run;
        }
        const tol::unique_process process(info.hProcess), thread(info.hThread);
        if (::WaitForSingleObject(process.get(), timeoutMs) != WAIT_OBJECT_0) ::TerminateProcess(process.get(), 0xDEAD);
        ::GetExitCodeProcess(process.get(), &run.exitCode);
        run.seconds = (::GetTickCount64() - start) / 1000.0;
    }
    run.out = tol::SplitTokens(Decode(ReadFileBytes(outPath)), L"\r\n");
    run.err = Decode(ReadFileBytes(errPath));
    return run;
}

ProgramRun RunScript(const std::string& script, const std::wstring& folder, const std::wstring& options) {
    const std::wstring scriptPath = folder + L"\\script.json";
    WriteFileBytes(scriptPath, script);
    return RunProgram(L"\"" + BinFolder() + L"\\velmora-run.exe\" " + options + L" \"" + scriptPath + L"\"", folder);
}

std::string Json(const std::wstring& text) {
    std::wstring escaped;
    for (const wchar_t c : text) {
        if (c == L'\\' || c == L'"') escaped += L'\\';
        escaped += c;
    }
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, escaped.data(), static_cast<int>(escaped.size()), nullptr, 0,
                                           nullptr, nullptr);
    std::string bytes(size, '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, escaped.data(), static_cast<int>(escaped.size()), bytes.data(), size, nullptr,
                          nullptr);
    return bytes;
}

HRESULT CallLibrary(const char* entry, const wchar_t* dll) {
    const tol::unique_module library(::LoadLibraryW((BinFolder() + L"\\" + dll).c_str()));
    const auto function = reinterpret_cast<HRESULT(WINAPI*)()>(::GetProcAddress(library.get(), entry));
    return function ? function() : E_FAIL;
}

} // namespace test
