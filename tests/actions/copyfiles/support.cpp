#include "support.h"
#include "fileutil/scratch.h"
#include "frame/component.h"
#include "frame/messages.h"
#include "VelmoraExt.h"
#include <algorithm>
#include <cwctype>
#include <stdexcept>

namespace copytest {
namespace {

void WriteBytes(const std::wstring& path, std::string_view bytes) {
    const tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    const FILETIME time{0x69050000, 0x01D5C036};  // 2020-01-01, the same for every file
    if (!file || !::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
        !::SetFileTime(file.get(), nullptr, nullptr, &time))
        throw std::runtime_error("cannot write a test file");
}

// Calls visit(relative path, find data) for every item below root, parents before children, in name order.
template <class Visit>
void ForEachItem(const std::wstring& root, const std::wstring& relative, Visit&& visit) {
    std::map<std::wstring, WIN32_FIND_DATAW> entries;
    WIN32_FIND_DATAW entry;
    const tol::unique_find find(::FindFirstFileW((root + L"\\" + relative + L"*").c_str(), &entry));
    if (!find) return;
    do {
        const std::wstring name = entry.cFileName;
        if (name != L"." && name != L"..") entries[name] = entry;
    } while (::FindNextFileW(find.get(), &entry));
    for (const auto& [name, data] : entries) {
        const bool folder = data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
        visit(relative + name + (folder ? L"\\" : L""), data);
        if (folder) ForEachItem(root, relative + name + L"\\", visit);
    }
}

std::string Narrow(std::wstring_view text) {
    std::string narrow;
    for (const wchar_t c : text) narrow += c < 128 ? static_cast<char>(c) : '?';
    return narrow;
}

ULONGLONG Ticks(const FILETIME& time) { return (ULONGLONG{time.dwHighDateTime} << 32) | time.dwLowDateTime; }

// One option in the notation of SetCopyStep.
void SetOption(test::TestStep& step, std::wstring option) {
    const size_t equals = option.find(L'=');
    VARIANT v;
    if (equals == std::wstring::npos) {
        V_VT(&v) = VT_BOOL;
        V_BOOL(&v) = option[0] == L'-' ? VARIANT_FALSE : VARIANT_TRUE;
        step.Set(option.substr(option[0] == L'-' ? 1 : 0), v);
    } else if (std::iswdigit(option[equals + 1])) {
        V_VT(&v) = VT_I4;
        V_I4(&v) = std::stol(option.substr(equals + 1));
        step.Set(option.substr(0, equals), v);
    } else {
        std::replace(option.begin(), option.end(), L';', L'\n');
        step.SetText(option.substr(0, equals), option.substr(equals + 1));
    }
}

} // namespace

void MakeTree(const std::wstring& root, std::string_view items) {
    ::CreateDirectoryW(root.c_str(), nullptr);
    for (const std::wstring& item : tol::SplitTokens(tol::Widen(items, CP_UTF8), L" ")) {
        const size_t equals = item.find(L'=');
        const std::wstring path = root + L"\\" + item.substr(0, equals);
        for (size_t slash = path.find(L'\\', root.size() + 1); slash != std::wstring::npos; slash = path.find(L'\\', slash + 1))
            ::CreateDirectoryW(path.substr(0, slash).c_str(), nullptr);
        if (equals != std::wstring::npos) WriteBytes(path, Narrow(item.substr(equals + 1)));
    }
}

std::string TreeText(const std::wstring& root, bool details) {
    if (::GetFileAttributesW(root.c_str()) == INVALID_FILE_ATTRIBUTES) return "<missing>";
    std::string text;
    ForEachItem(root, L"", [&](const std::wstring& relative, const WIN32_FIND_DATAW& data) {
        if (!text.empty()) text += details ? "\n" : " ";
        text += Narrow(relative);
        if (details)
            text += " attributes " + std::to_string(data.dwFileAttributes) + " created " +
                    std::to_string(Ticks(data.ftCreationTime)) + " written " + std::to_string(Ticks(data.ftLastWriteTime));
        if (!(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) text += "=" + test::ReadFileBytes(root + L"\\" + relative);
    });
    return text;
}

void ShiftWriteTime(const std::wstring& path, long long seconds) {
    const tol::unique_file file(::CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, 0, nullptr,
                                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    FILETIME time{};
    ULARGE_INTEGER value{};
    if (file && ::GetFileTime(file.get(), nullptr, nullptr, &time)) {
        value = {{time.dwLowDateTime, time.dwHighDateTime}};
        value.QuadPart += seconds * 10000000LL;
        time = {value.LowPart, value.HighPart};
    }
    if (!file || !::SetFileTime(file.get(), nullptr, nullptr, &time)) throw std::runtime_error("cannot set a file time");
}

void SetCopyStep(test::TestStep& step, const std::wstring& source, const std::wstring& dest, std::wstring_view options) {
    step.SetText(L"SourceDir", source);
    step.SetText(L"DestDir", dest);
    const std::wstring defaults = L"Incremental LogCopied Restartable ReadOnly TBD -Recurse -Empty -Flat -Purge -Move "
                                  L"-MoveDirs -NoCopy -LogUpToDate -IgnoreSrc -ShortNames -Archive -ClearArchive -Hidden "
                                  L"Retries=10 Delay=15 ";
    for (const std::wstring& option : tol::SplitTokens(defaults + std::wstring(options), L" ")) SetOption(step, option);
}

Execution ExecuteCopyFiles(IBuildRun* build, test::TestStep& step) {
    Execution execution{E_UNEXPECTED, 0x5A5A};
    tol::com_ptr<IBuildAction> action;
    execution.hr = tol::CreateComponent(*tol::FindClass(CLSID_CopyFilesAction), IID_IBuildAction, action.put_void());
    if (SUCCEEDED(execution.hr)) execution.hr = action->Execute(build, &step, &execution.status);
    return execution;
}

std::wstring Joined(const std::vector<std::wstring>& lines) {
    std::wstring text;
    for (const std::wstring& line : lines) text += line + L"\n";
    return text;
}

std::vector<std::wstring> LinesStarting(const std::vector<std::wstring>& lines, std::wstring_view prefix) {
    std::vector<std::wstring> found;
    for (const std::wstring& line : lines)
        if (std::wstring_view(line).substr(0, prefix.size()) == prefix) found.push_back(line);
    return found;
}

HeldOpen::HeldOpen(const std::wstring& path, DWORD milliseconds) {
    static unsigned counter = 0;
    const std::wstring events = L"copyfiles-held-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++counter);
    const tol::unique_event ready(::CreateEventW(nullptr, TRUE, FALSE, (events + L"-ready").c_str()));
    go_.reset(::CreateEventW(nullptr, TRUE, FALSE, (events + L"-go").c_str()));
    std::wstring program(32768, L'\0');
    program.resize(::GetModuleFileNameW(nullptr, program.data(), static_cast<DWORD>(program.size())));
    program = program.substr(0, program.find_last_of(L'\\')) + L"\\copyfiles-holdopen.exe";
    std::wstring commandLine = L"\"" + program + L"\" \"" + path + L"\" " + std::to_wstring(milliseconds) + L" " + events;
    STARTUPINFOW startup{sizeof startup};
    PROCESS_INFORMATION info{};
    if (!ready || !go_ ||
        !::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &info))
        throw std::runtime_error("cannot start copyfiles-holdopen.exe");
    process_.reset(info.hProcess);
    const tol::unique_event thread(info.hThread);
    const HANDLE either[] = {ready.get(), process_.get()};
    if (::WaitForMultipleObjects(2, either, FALSE, 10000) != WAIT_OBJECT_0)
        throw std::runtime_error("copyfiles-holdopen.exe did not take the file");
}

DWORD HeldOpen::Release() {
    ::SetEvent(go_.get());
    ::WaitForSingleObject(process_.get(), 30000);
    DWORD code = 0xDEAD;
    ::GetExitCodeProcess(process_.get(), &code);
    return code;
}

} // namespace copytest
