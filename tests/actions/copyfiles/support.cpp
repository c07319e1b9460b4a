#include "support.h"
#include "frame/com_ptr.h"
#include "frame/component.h"
#include "frame/messages.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <stdexcept>

namespace copytest {
namespace {

constexpr long kUnwritten = 0x5A5A;

void WriteBytes(const std::wstring& path, std::string_view bytes) {
    const tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    DWORD written = 0;
    if (!file || !::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr))
        throw std::runtime_error("cannot write a test file");
}

std::string ReadBytes(const std::wstring& path) {
    const tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) return "<unreadable>";
    std::string bytes;
    char buffer[4096];
    DWORD read = 0;
    while (::ReadFile(file.get(), buffer, sizeof buffer, &read, nullptr) && read > 0) bytes.append(buffer, read);
    return bytes;
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

VARIANT Value(std::wstring_view text) {
    VARIANT v;
    if (!text.empty() && (std::iswdigit(text[0]) || text[0] == L'-')) {
        V_VT(&v) = VT_I4;
        V_I4(&v) = std::stol(std::wstring(text));
        return v;
    }
    std::wstring lines(text);
    for (wchar_t& c : lines)
        if (c == L';') c = L'\n';
    V_VT(&v) = VT_BSTR;
    V_BSTR(&v) = ::SysAllocStringLen(lines.data(), static_cast<UINT>(lines.size()));
    return v;
}

VARIANT Bool(bool on) {
    VARIANT v;
    V_VT(&v) = VT_BOOL;
    V_BOOL(&v) = on ? VARIANT_TRUE : VARIANT_FALSE;
    return v;
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

std::string TreeText(const std::wstring& root) {
    if (::GetFileAttributesW(root.c_str()) == INVALID_FILE_ATTRIBUTES) return "<missing>";
    std::string text;
    ForEachItem(root, L"", [&](const std::wstring& relative, const WIN32_FIND_DATAW& data) {
        if (!text.empty()) text += ' ';
        text += Narrow(relative);
        if (!(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) text += "=" + ReadBytes(root + L"\\" + relative);
    });
    return text;
}

bool ItemState::operator==(const ItemState& other) const {
    return attributes == other.attributes && ::CompareFileTime(&created, &other.created) == 0 &&
           ::CompareFileTime(&written, &other.written) == 0 && bytes == other.bytes;
}

std::map<std::wstring, ItemState> Snapshot(const std::wstring& root) {
    std::map<std::wstring, ItemState> items;
    ForEachItem(root, L"", [&](const std::wstring& relative, const WIN32_FIND_DATAW& data) {
        const std::wstring path = root + L"\\" + relative;
        ItemState& state = items[relative];
        state.attributes = ::GetFileAttributesW(path.c_str());
        state.created = data.ftCreationTime;
        state.written = data.ftLastWriteTime;
        if (!(data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)) state.bytes = ReadBytes(path);
    });
    return items;
}

FILETIME WriteTime(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    ::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data);
    return data.ftLastWriteTime;
}

void SetWriteTime(const std::wstring& path, const FILETIME& time) {
    const tol::unique_file file(::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!file || !::SetFileTime(file.get(), nullptr, nullptr, &time)) throw std::runtime_error("cannot set a file time");
}

FILETIME AddSeconds(const FILETIME& time, long long seconds) {
    ULARGE_INTEGER value{{time.dwLowDateTime, time.dwHighDateTime}};
    value.QuadPart += seconds * 10000000LL;
    return FILETIME{value.LowPart, value.HighPart};
}

void SetCopyStep(test::TestStep& step, const std::wstring& source, const std::wstring& dest, std::wstring_view options) {
    step.SetText(L"SourceDir", source);
    step.SetText(L"DestDir", dest);
    for (const wchar_t* on : {L"Incremental", L"LogCopied", L"Restartable", L"ReadOnly", L"TBD"}) step.Set(on, Bool(true));
    for (const wchar_t* off : {L"Recurse", L"Empty", L"Flat", L"Purge", L"Move", L"MoveDirs", L"NoCopy", L"LogUpToDate",
                               L"IgnoreSrc", L"ShortNames", L"Archive", L"ClearArchive", L"Hidden"})
        step.Set(off, Bool(false));
    step.Set(L"Retries", Value(L"10"));
    step.Set(L"Delay", Value(L"15"));
    for (const std::wstring& option : tol::SplitTokens(options, L" ")) {
        const size_t equals = option.find(L'=');
        if (equals != std::wstring::npos)
            step.Set(option.substr(0, equals), Value(std::wstring_view(option).substr(equals + 1)));
        else if (option[0] == L'-')
            step.Set(option.substr(1), Bool(false));
        else
            step.Set(option, Bool(true));
    }
}

Execution ExecuteCopyFiles(IBuildRun* build, test::TestStep& step) {
    tol::com_ptr<IBuildAction> action;
    const HRESULT created = tol::CreateComponent(*tol::FindClass(CLSID_CopyFilesAction), IID_IBuildAction, action.put_void());
    if (FAILED(created)) return {created, kUnwritten};
    Execution execution{E_UNEXPECTED, kUnwritten};
    execution.hr = action->Execute(build, &step, &execution.status);
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

StoppingBuild::StoppingBuild(std::wstring stopAt)
    : stopAt_(std::move(stopAt)), stop_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

STDMETHODIMP StoppingBuild::QueryInterface(REFIID iid, void** object) {
    *object = iid == IID_IUnknown || iid == IID_IBuildRun ? static_cast<IBuildRun*>(this) : nullptr;
    return *object ? S_OK : E_NOINTERFACE;
}

STDMETHODIMP StoppingBuild::GetTextExpander(ITextExpander** expander) {
    *expander = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP StoppingBuild::RunCommandLine(BSTR, BSTR, VARIANT*, long, BSTR, long, long, VARIANT_BOOL, BSTR, long*) {
    return E_NOTIMPL;
}

// The run sees the stop through a wait that the platform completes on another thread: it is given time to.
STDMETHODIMP StoppingBuild::LogMessage(BSTR text, VARIANT_BOOL) {
    log.emplace_back(text ? text : L"");
    if (!stopAt_.empty() && log.back().compare(0, stopAt_.size(), stopAt_) == 0) {
        ::SetEvent(stop_.get());
        ::Sleep(300);
    }
    return S_OK;
}

STDMETHODIMP StoppingBuild::GetStopEvent(long* event) {
    *event = ::HandleToLong(stop_.get());
    return S_OK;
}

std::wstring BinFolder() {
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

HeldOpen::HeldOpen(const std::wstring& path, DWORD milliseconds) {
    static unsigned counter = 0;
    const std::wstring events = L"copyfiles-held-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++counter);
    const tol::unique_event ready(::CreateEventW(nullptr, TRUE, FALSE, (events + L"-ready").c_str()));
    go_.reset(::CreateEventW(nullptr, TRUE, FALSE, (events + L"-go").c_str()));
    std::wstring commandLine = L"\"" + BinFolder() + L"\\copyfiles-holdopen.exe\" \"" + path + L"\" " +
                               std::to_wstring(milliseconds) + L" " + events;
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

HeldOpen::~HeldOpen() {
    if (process_) (void)Release();
}

DWORD HeldOpen::Release() {
    ::SetEvent(go_.get());
    ::WaitForSingleObject(process_.get(), 30000);
    DWORD code = 0xDEAD;
    ::GetExitCodeProcess(process_.get(), &code);
    return code;
}

} // namespace copytest
