// GAC Install through its action component: the gacutil command line, the host call that runs it, and the
// AssemblyFolders entries it leaves in a scratch key that stands in for HKEY_LOCAL_MACHINE.
#include "frame/component.h"
#include "frame/handles.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <map>
#include <tuple>

namespace {

const std::wstring kFolders = L"SOFTWARE\\Microsoft\\.NETFramework\\AssemblyFolders";
const std::wstring kLib = L"C:\\libs\\My.Lib.dll";
constexpr long kNoStatus = 0x5A5A; // the status out parameter as the action is handed it

std::wstring Text(BSTR text) { return text ? std::wstring(text, ::SysStringLen(text)) : L"<null>"; }

// The host and the step at once. The step's properties are texts converted to the type asked for; the expander
// turns %DOTNETSDK_DIR% into C:\SDK\; the command reports status; each log line and command is written down.
class GacHost final : public test::StackObject<IBuildRun, ITextExpander, IBuildStep> {
public:
    std::map<std::wstring, std::wstring> properties;
    long status = tol::StepSucceeded; // kNoStatus: none is written
    std::vector<std::wstring> calls;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        *object = iid == IID_IUnknown || iid == IID_IBuildRun ? static_cast<void*>(static_cast<IBuildRun*>(this))
                  : iid == IID_ITextExpander ? static_cast<void*>(static_cast<ITextExpander*>(this))
                  : iid == IID_IBuildStep    ? static_cast<void*>(static_cast<IBuildStep*>(this)) : nullptr;
        return *object ? S_OK : E_NOINTERFACE;
    }
    STDMETHODIMP GetStoredProperty(BSTR, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP GetEvaluatedProperty(IBuildRun*, BSTR name, VARTYPE wanted, VARIANT* value) override {
        V_VT(value) = VT_BSTR;
        V_BSTR(value) = ::SysAllocString(properties.at(Text(name)).c_str());
        return ::VariantChangeType(value, value, 0, wanted);
    }
    STDMETHODIMP GetTextExpander(ITextExpander** out) override { return QueryInterface(IID_ITextExpander, (void**)out); }
    STDMETHODIMP ExpandText(BSTR text, long, BSTR* out, VARIANT_BOOL, long, long*) override {
        *out = ::SysAllocString((L"\"C:\\SDK\\" + Text(text).substr(16)).c_str()); // after "%DOTNETSDK_DIR%
        return S_OK;
    }
    STDMETHODIMP ExpandForDisplay(BSTR, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP RunCommandLine(BSTR command, BSTR folder, VARIANT* exitCode, long logOutput, BSTR account, long timeout,
                                long reserved, VARIANT_BOOL wait, BSTR codes, long* result) override {
        calls.push_back(L"run " + Text(command) + L"|" + Text(folder) + L"|" + std::to_wstring(logOutput) + L"|" +
                        Text(account) + L"|" + std::to_wstring(timeout) + L"|" + std::to_wstring(reserved) + L"|" +
                        std::to_wstring(wait) + L"|" + Text(codes) + (exitCode ? L"" : L"|no exit code"));
        if (status != kNoStatus) *result = status;
        return S_OK;
    }
    STDMETHODIMP LogMessage(BSTR text, VARIANT_BOOL) override {
        calls.push_back(L"log " + Text(text));
        return S_OK;
    }
    STDMETHODIMP GetStopEvent(long*) override { return E_NOTIMPL; }
};

// A value below HKEY_LOCAL_MACHINE: its text when it is a REG_SZ that ends in its NUL, else "?"; "~" when the key
// has no such value, "-" when the key is missing.
std::wstring Read(const std::wstring& path, const wchar_t* name = nullptr) {
    tol::unique_hkey key;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return L"-";
    wchar_t data[256];
    DWORD type = 0, size = sizeof data;
    if (::RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size)) return L"~";
    return type == REG_SZ && size % 2 == 0 && size > 0 && data[size / 2 - 1] == L'\0' ? data : L"?";
}

// While it lives, HKEY_LOCAL_MACHINE of this process is an empty key of its own below HKEY_CURRENT_USER.
struct ScratchMachine {
    ScratchMachine() {
        ::RegCreateKeyExW(HKEY_CURRENT_USER, kPath, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr);
        ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, key.get());
    }
    ~ScratchMachine() {
        ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        ::RegDeleteTreeW(HKEY_CURRENT_USER, kPath);
    }
    static constexpr wchar_t kPath[] = L"Software\\VelmoraTests-gac";
    tol::unique_hkey key;
};

} // namespace

// Each row: the switches, the command's arguments, the file name; whether the AssemblyFolders key is there (with a
// "guard" value, the entry old with a value "Keep", the entry parent with a subkey child); the entry; the status the
// command reports; what Execute answers; and the state afterwards: the default values of the key, old, parent, child
// and new, then old's Keep ("-": no such key, "~": no such value).
TEST(GacInstall, CommandAndAssemblyFoldersEntry) {
    const ScratchMachine machine;
    ASSERT_EQ(Read(L"SOFTWARE"), L"-") << "HKEY_LOCAL_MACHINE could not be replaced";
    const std::tuple<const wchar_t*, const wchar_t*, const wchar_t*> before[] = {
        {L"", nullptr, L"guard"},      {L"\\old", nullptr, L"C:\\old"},       {L"\\old", L"Keep", L"kept"},
        {L"\\parent", nullptr, L"C:\\parent"}, {L"\\parent\\child", nullptr, L"x"}};
    const std::wstring unchanged = L"guard|C:\\old|C:\\parent|x|-|kept", none = L"-|-|-|-|-|-";
    const struct {
        const wchar_t *switches, *arguments; // Unregister, NGEN and Force; the command's arguments after "/nologo"
        std::wstring filename;
        bool key;
        const wchar_t* entry;
        long command, status; // what the command reports; what Execute answers
        HRESULT hr;
        std::wstring state;
    } rows[] = {
        // No entry: the missing key is not opened.
        {L"---", L"/i", kLib, false, L"", 0, 0, S_OK, none},     {L"--f", L"/if", kLib, false, L"", 0, 0, S_OK, none},
        {L"-n-", L"/i", kLib, false, L"", 0, 0, S_OK, none},     {L"-nf", L"/if", kLib, false, L"", 0, 0, S_OK, none},
        {L"u--", L"/u", L"C:\\Program Files\\My Lib.dll", false, L"", 0, 0, S_OK, none}, // quoted as it is
        {L"u-f", L"/uf", L"  padded  ", false, L"", 0, 0, S_OK, none},
        {L"un-", L"/ungen", kLib, false, L"", 0, 0, S_OK, none}, {L"unf", L"/ungen", kLib, false, L"", 0, 0, S_OK, none},
        {L"---", L"/i", L"My.Lib.dll", true, L"new", 0, 0, S_OK, L"guard|C:\\old|C:\\parent|x||kept"},
        {L"---", L"/i", kLib, true, L"old", 0, 0, S_OK, L"guard|C:\\libs|C:\\parent|x|-|kept"},
        {L"u--", L"/u", kLib, true, L"old", 0, 0, S_OK, L"guard|-|C:\\parent|x|-|-"},
        {L"u--", L"/u", kLib, true, L"parent", 0, 0, S_OK, L"guard|C:\\old|~|x|-|kept"}, // kept for its subkey
        {L"---", L"/i", kLib, true, L"old", 1, 1, S_OK, unchanged},
        {L"---", L"/i", kLib, true, L"new", kNoStatus, 1, S_OK, unchanged}, // only a reported success is one
        {L"---", L"/i", kLib, true, L"\\", 0, kNoStatus, HRESULT_FROM_WIN32(ERROR_BAD_PATHNAME), unchanged},
        {L"u--", L"/u", kLib, true, L"\\\\", 0, 0, S_OK, unchanged}, // backslashes alone would name the key itself
        {L"---", L"/i", kLib, false, L"new", 0, kNoStatus, HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), none},
        {L"u--", L"/u", kLib, false, L"new", 0, 0, S_OK, none},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        const auto& row = rows[i];
        SCOPED_TRACE("row " + std::to_string(i));
        ::RegDeleteTreeW(machine.key.get(), nullptr);
        if (row.key)
            for (const auto& [path, name, text] : before)
                ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, (kFolders + path).c_str(), name, REG_SZ, text, (::lstrlenW(text) + 1) * 2);
        GacHost host;
        const auto flag = [&](size_t at) { return row.switches[at] == L'-' ? L"0" : L"1"; };
        host.properties = {{L"Unregister", flag(0)}, {L"NGEN", flag(1)},         {L"Force", flag(2)},
                           {L"Filename", row.filename}, {L"ShowCmd", i % 2 ? L"1" : L"0"}, {L"AssemblyFolder", row.entry}};
        host.status = row.command;
        tol::com_ptr<IBuildAction> action;
        ASSERT_EQ(tol::CreateComponent(*tol::FindClass(CLSID_GACInstallAction), IID_IBuildAction, action.put_void()), S_OK);
        long status = kNoStatus;
        EXPECT_EQ(action->Execute(&host, &host, &status), row.hr);
        EXPECT_EQ(status, row.status);
        // No start folder or account, the output logged, no time limit, waiting, 0 the one success; with ShowCmd the
        // command line is logged before it runs. The command runs before the registry is touched, and once.
        const std::wstring command =
            L"\"C:\\SDK\\bin\\gacutil.exe\" /nologo " + std::wstring(row.arguments) + L" \"" + row.filename + L"\"";
        const std::vector<std::wstring> run{L"run " + command + L"||1||0|0|-1|0"}, logged{L"log " + command, run[0]};
        EXPECT_EQ(host.calls, i % 2 ? logged : run);
        std::wstring state;
        for (const wchar_t* entry : {L"", L"\\old", L"\\parent", L"\\parent\\child", L"\\new"})
            state += Read(kFolders + entry) + L"|";
        EXPECT_EQ(state + Read(kFolders + L"\\old", L"Keep"), row.state);
    }
}
