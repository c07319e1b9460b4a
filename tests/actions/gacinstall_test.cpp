// GAC Install through its action component: the host calls it makes, in order and with their arguments, and the
// AssemblyFolders entries it leaves in the registry.
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include "frame/component.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace {

constexpr wchar_t kSdk[] = L"C:\\Program Files\\Velmora SDK\\";
constexpr wchar_t kTool[] = L"\"C:\\Program Files\\Velmora SDK\\bin\\gacutil.exe\" /nologo";
constexpr wchar_t kFoldersKey[] = L"SOFTWARE\\Microsoft\\.NETFramework\\AssemblyFolders";
constexpr long kGarbage = 0x5A5A;

// Every host call and property read of one run, in order: "expand", "read Name/vt", "log text", "run".
using Journal = std::vector<std::wstring>;

struct CommandCall {
    std::wstring commandLine, startFolder, account, successCodes;
    bool startFolderNull = true, accountNull = true, exitCodeGiven = false, statusGiven = false;
    long logOutput = kGarbage, timeout = kGarbage, reserved = kGarbage;
    VARIANT_BOOL wait = 0x5A;
};

struct ExpandCall {
    std::wstring text;
    long options = kGarbage, reserved = kGarbage;
    VARIANT_BOOL interactive = 0x5A;
    bool outsGiven = false;
};

HRESULT FailWith(HRESULT hr, const std::wstring& description) {
    tol::SetErrorDescription(description);
    return hr;
}

// The build: its text expander knows only DOTNETSDK_DIR, and its command runner reports the status it is given.
// runForReal starts the command line as a process and reports success for exit code 0.
class GacBuild final : public test::StackObject<IBuildRun, ITextExpander, ISupportErrorInfo> {
public:
    explicit GacBuild(Journal& journal) : journal_(journal) {}
    std::optional<std::wstring> sdk = kSdk; // none: the reference stays unresolved
    long status = tol::StepSucceeded;
    bool writeStatus = true;
    bool runForReal = false;
    HRESULT expanderFailure = S_OK, expandFailure = S_OK, runFailure = S_OK;
    std::vector<ExpandCall> expands;
    std::vector<CommandCall> commands;
    std::vector<std::wstring> log;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (iid == IID_IUnknown || iid == IID_IBuildRun) *object = static_cast<IBuildRun*>(this);
        else if (iid == IID_ITextExpander) *object = static_cast<ITextExpander*>(this);
        else if (iid == IID_ISupportErrorInfo) *object = static_cast<ISupportErrorInfo*>(this);
        else return *object = nullptr, E_NOINTERFACE;
        return S_OK;
    }
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID) override { return S_OK; }
    STDMETHODIMP GetTextExpander(ITextExpander** expander) override {
        journal_.push_back(L"expander");
        *expander = nullptr;
        if (FAILED(expanderFailure)) return FailWith(expanderFailure, L"no expander today");
        *expander = this;
        return S_OK;
    }
    STDMETHODIMP ExpandText(BSTR text, long options, BSTR* expanded, VARIANT_BOOL interactive, long reserved,
                            long* unresolved) override {
        journal_.push_back(L"expand");
        expands.push_back({text ? text : L"<null>", options, reserved, interactive, expanded && unresolved});
        if (FAILED(expandFailure)) return FailWith(expandFailure, L"the expander broke");
        std::wstring out = text ? text : L"";
        const size_t at = out.find(L"%DOTNETSDK_DIR%");
        if (sdk && at != std::wstring::npos) out.replace(at, 15, *sdk);
        *unresolved = sdk ? 0 : 1;
        *expanded = ::SysAllocString(out.c_str());
        return S_OK;
    }
    STDMETHODIMP ExpandForDisplay(BSTR, BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP RunCommandLine(BSTR commandLine, BSTR startFolder, VARIANT* exitCode, long logOutput, BSTR account,
                                long timeout, long reserved, VARIANT_BOOL wait, BSTR successCodes, long* result) override {
        journal_.push_back(L"run");
        commands.push_back({Text(commandLine), Text(startFolder), Text(account), Text(successCodes), !startFolder,
                            !account, exitCode != nullptr, result != nullptr, logOutput, timeout, reserved, wait});
        if (FAILED(runFailure)) return FailWith(runFailure, L"the command could not be started");
        V_VT(exitCode) = VT_BSTR; // the action clears what it is handed
        V_BSTR(exitCode) = ::SysAllocString(L"exit code");
        if (writeStatus) *result = runForReal ? RunProcess(Text(commandLine)) : status;
        return S_OK;
    }
    STDMETHODIMP LogMessage(BSTR text, VARIANT_BOOL flag) override {
        journal_.push_back(L"log " + Text(text));
        log.push_back(Text(text));
        return flag == VARIANT_TRUE ? S_OK : E_INVALIDARG;
    }
    STDMETHODIMP GetStopEvent(long*) override {
        journal_.push_back(L"stop event");
        return E_NOTIMPL;
    }

private:
    static std::wstring Text(BSTR text) { return text ? std::wstring(text, ::SysStringLen(text)) : std::wstring(); }
    static long RunProcess(std::wstring commandLine) {
        STARTUPINFOW startup{sizeof startup};
        PROCESS_INFORMATION process{};
        if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
            return tol::StepFailed;
        tol::unique_process owner(process.hProcess), thread(process.hThread);
        DWORD code = 1;
        if (::WaitForSingleObject(process.hProcess, 60000) != WAIT_OBJECT_0 || !::GetExitCodeProcess(process.hProcess, &code))
            return tol::StepFailed;
        return code == 0 ? tol::StepSucceeded : tol::StepFailed;
    }
    Journal& journal_;
};

// The step: booleans and texts by name; each read goes into the journal with the type asked for.
class GacStep final : public test::StackObject<IBuildStep> {
public:
    GacStep(Journal& journal, IBuildRun* build) : journal_(journal), build_(build) {}
    std::map<std::wstring, std::variant<bool, std::wstring>> values;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (iid != IID_IUnknown && iid != IID_IBuildStep) return *object = nullptr, E_NOINTERFACE;
        *object = static_cast<IBuildStep*>(this);
        return S_OK;
    }
    STDMETHODIMP GetStoredProperty(BSTR name, VARIANT* value) override {
        journal_.push_back(L"stored " + std::wstring(name));
        ::VariantInit(value);
        return S_OK;
    }
    STDMETHODIMP GetEvaluatedProperty(IBuildRun* build, BSTR name, VARTYPE wanted, VARIANT* value) override {
        journal_.push_back(L"read " + std::wstring(name) + L"/" + std::to_wstring(wanted) +
                           (build == build_ ? L"" : L" foreign"));
        ::VariantInit(value);
        const auto found = values.find(name);
        if (found == values.end()) return S_OK; // VT_EMPTY, as a host answers for a property the step lacks
        if (const bool* on = std::get_if<bool>(&found->second)) {
            V_VT(value) = VT_BOOL;
            V_BOOL(value) = *on ? VARIANT_TRUE : VARIANT_FALSE;
        } else {
            V_VT(value) = VT_BSTR;
            V_BSTR(value) = ::SysAllocString(std::get<std::wstring>(found->second).c_str());
        }
        return S_OK;
    }

private:
    Journal& journal_;
    IBuildRun* build_;
};

struct Settings {
    bool unregister = false, ngen = false, force = false, showCmd = false;
    std::wstring filename = L"C:\\libs\\My.Lib.dll";
    std::wstring assemblyFolder;
};

struct Outcome {
    HRESULT hr = E_UNEXPECTED;
    long status = kGarbage;
    std::wstring description;
};

std::wstring ThreadErrorDescription() {
    tol::com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"<none>";
    tol::bstr text;
    info->GetDescription(text.receive());
    return text.str();
}

// One run through the GACInstallAction component, as the host makes it.
class GacRun {
public:
    explicit GacRun(const Settings& s) : step_(journal, &build) {
        step_.values = {{L"Unregister", s.unregister}, {L"NGEN", s.ngen},         {L"Force", s.force},
                        {L"Filename", s.filename},     {L"ShowCmd", s.showCmd},   {L"AssemblyFolder", s.assemblyFolder}};
    }
    Outcome Execute() {
        tol::com_ptr<IBuildAction> action;
        EXPECT_EQ(tol::CreateComponent(*tol::FindClass(CLSID_GACInstallAction), IID_IBuildAction, action.put_void()), S_OK);
        ::SetErrorInfo(0, nullptr);
        Outcome outcome;
        outcome.hr = action->Execute(&build, &step_, &outcome.status);
        outcome.description = ThreadErrorDescription();
        return outcome;
    }
    std::wstring CommandLine() const { return build.commands.empty() ? L"<not run>" : build.commands[0].commandLine; }

    Journal journal;
    GacBuild build{journal};

private:
    GacStep step_;
};

// The reads of a run whose command succeeds, from the switch reads on.
Journal ExpectedJournal(const std::vector<std::wstring>& switchReads, bool showCmd, const std::wstring& commandLine) {
    Journal journal{L"expander", L"expand", L"read Unregister/11"};
    journal.insert(journal.end(), switchReads.begin(), switchReads.end());
    journal.insert(journal.end(), {L"read Filename/8", L"read ShowCmd/11"});
    if (showCmd) journal.push_back(L"log " + commandLine);
    journal.insert(journal.end(), {L"run", L"read AssemblyFolder/8"});
    return journal;
}

std::string Narrow(const std::wstring& text) { return testing::PrintToString(text); }

} // namespace

TEST(GacInstallCommand, SwitchFollowsUnregisterNgenAndForce) {
    const struct Row {
        bool unregister, ngen, force;
        const wchar_t* expectedSwitch;
        std::vector<std::wstring> reads;
    } rows[] = {
        {false, false, false, L"/i", {L"read Force/11"}},
        {false, false, true, L"/if", {L"read Force/11"}},
        {false, true, false, L"/i", {L"read Force/11"}}, // NGEN means nothing for an install and is not read
        {false, true, true, L"/if", {L"read Force/11"}},
        {true, false, false, L"/u", {L"read NGEN/11", L"read Force/11"}},
        {true, false, true, L"/uf", {L"read NGEN/11", L"read Force/11"}},
        {true, true, false, L"/ungen", {L"read NGEN/11"}},
        {true, true, true, L"/ungen", {L"read NGEN/11"}}, // Force is then not read
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        Settings settings;
        settings.unregister = row.unregister, settings.ngen = row.ngen, settings.force = row.force;
        settings.showCmd = i % 2 == 1; // the log line is the command line, written before it runs
        GacRun run(settings);
        const Outcome outcome = run.Execute();
        ASSERT_EQ(outcome.hr, S_OK) << "row " << i << ": " << Narrow(outcome.description);
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << "row " << i;
        const std::wstring expected = std::wstring(kTool) + L" " + row.expectedSwitch + L" \"C:\\libs\\My.Lib.dll\"";
        EXPECT_EQ(run.CommandLine(), expected) << "row " << i;
        EXPECT_EQ(run.journal, ExpectedJournal(row.reads, settings.showCmd, expected)) << "row " << i;
    }
}

TEST(GacInstallCommand, HostCallsCarryTheirArguments) {
    GacRun run(Settings{});
    ASSERT_EQ(run.Execute().hr, S_OK);
    ASSERT_EQ(run.build.expands.size(), 1u);
    const ExpandCall& expand = run.build.expands[0];
    EXPECT_EQ(expand.text, L"\"%DOTNETSDK_DIR%bin\\gacutil.exe\" /nologo");
    EXPECT_EQ(expand.options, 3);
    EXPECT_EQ(expand.interactive, VARIANT_FALSE);
    EXPECT_EQ(expand.reserved, 0);
    EXPECT_TRUE(expand.outsGiven);
    ASSERT_EQ(run.build.commands.size(), 1u);
    const CommandCall& command = run.build.commands[0];
    EXPECT_EQ(command.startFolder, L"");
    EXPECT_EQ(command.account, L"");
    EXPECT_TRUE(command.exitCodeGiven);
    EXPECT_EQ(command.logOutput, 1);
    EXPECT_EQ(command.timeout, 0);
    EXPECT_EQ(command.reserved, 0);
    EXPECT_EQ(command.wait, VARIANT_TRUE);
    EXPECT_EQ(command.successCodes, L"0");
    EXPECT_TRUE(command.statusGiven);
    EXPECT_TRUE(run.build.log.empty()) << "without ShowCmd the action writes nothing";
}

TEST(GacInstallCommand, AssemblyPathIsQuotedWholeAndUnchanged) {
    const std::wstring rows[] = {
        L"C:\\Program Files\\My Company\\My Lib.dll", L"relative name.dll", L"", L"\\\\server\\share\\lib\\x.dll",
        L"C:/forward/slashes.dll", L"  padded  ", L"C:\\\u00dcnic\u00f8de\\\u65e5\u672c.dll",
        L"\\\\?\\C:\\" + std::wstring(300, L'a') + L"\\long.dll",
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        Settings settings;
        settings.filename = rows[i];
        GacRun run(settings);
        ASSERT_EQ(run.Execute().hr, S_OK) << "row " << i;
        EXPECT_EQ(run.CommandLine(), std::wstring(kTool) + L" /i \"" + rows[i] + L"\"") << "row " << i;
    }
}

TEST(GacInstallCommand, UnresolvedSdkFolderIsRunAsTheExpanderLeftIt) {
    GacRun run(Settings{});
    run.build.sdk.reset();
    const Outcome outcome = run.Execute();
    ASSERT_EQ(outcome.hr, S_OK);
    EXPECT_EQ(run.CommandLine(), L"\"%DOTNETSDK_DIR%bin\\gacutil.exe\" /nologo /i \"C:\\libs\\My.Lib.dll\"");
}

TEST(GacInstallCommand, StatusOtherThanSucceededIsHandedOnAndEndsTheRun) {
    const struct Row {
        long status;
        bool written;
        long expected;
    } rows[] = {{tol::StepFailed, true, tol::StepFailed},
                {tol::StepStopped, true, tol::StepStopped},
                {7, true, 7},
                {-1, true, -1},
                {tol::StepSucceeded, false, tol::StepFailed}}; // a host that reports nothing reports no success
    for (size_t i = 0; i < std::size(rows) * 2; ++i) {
        const Row& row = rows[i / 2];
        Settings settings;
        settings.unregister = i % 2 == 1;
        settings.assemblyFolder = L"never read";
        GacRun run(settings);
        run.build.status = row.status;
        run.build.writeStatus = row.written;
        const Outcome outcome = run.Execute();
        ASSERT_EQ(outcome.hr, S_OK) << "row " << i;
        EXPECT_EQ(outcome.status, row.expected) << "row " << i;
        EXPECT_EQ(run.journal.back(), L"run") << "row " << i << ": nothing after a failed command";
    }
}

TEST(GacInstallCommand, HostFailuresEndTheRunWithTheHostsError) {
    const struct Row {
        const char* name;
        HRESULT GacBuild::*failure;
        HRESULT hr;
        const wchar_t* description;
        const wchar_t* lastCall;
    } rows[] = {
        {"GetTextExpander", &GacBuild::expanderFailure, E_ACCESSDENIED, L"no expander today", L"expander"},
        {"ExpandText", &GacBuild::expandFailure, E_OUTOFMEMORY, L"the expander broke", L"expand"},
        {"RunCommandLine", &GacBuild::runFailure, static_cast<HRESULT>(0x80070002), L"the command could not be started",
         L"run"},
    };
    for (const Row& row : rows) {
        Settings settings;
        settings.assemblyFolder = L"never read";
        GacRun run(settings);
        run.build.*row.failure = row.hr;
        const Outcome outcome = run.Execute();
        EXPECT_EQ(outcome.hr, row.hr) << row.name;
        EXPECT_EQ(outcome.status, kGarbage) << row.name << ": no status on failure";
        EXPECT_EQ(outcome.description, row.description) << row.name;
        EXPECT_EQ(run.journal.back(), row.lastCall) << row.name;
    }
}

namespace {

struct StoredText {
    LONG status = ERROR_GEN_FAILURE;
    DWORD type = 0xDEADBEEF;
    std::vector<BYTE> data;
};

StoredText ReadValue(HKEY root, const std::wstring& path, const wchar_t* name) {
    StoredText stored;
    tol::unique_hkey key;
    stored.status = ::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put());
    if (stored.status != ERROR_SUCCESS) return stored;
    DWORD size = 0;
    stored.status = ::RegQueryValueExW(key.get(), name, nullptr, &stored.type, nullptr, &size);
    if (stored.status != ERROR_SUCCESS) return stored;
    stored.data.assign(size, 0xCD);
    stored.status = ::RegQueryValueExW(key.get(), name, nullptr, &stored.type, stored.data.data(), &size);
    stored.data.resize(size);
    return stored;
}

std::vector<BYTE> TextBytes(const std::wstring& text) {
    const BYTE* p = reinterpret_cast<const BYTE*>(text.c_str());
    return {p, p + (text.size() + 1) * sizeof(wchar_t)};
}

bool KeyExists(HKEY root, const std::wstring& path) {
    tol::unique_hkey key;
    return ::RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

void MakeKey(HKEY root, const std::wstring& path, const wchar_t* name = nullptr, const std::wstring& text = L"") {
    tol::unique_hkey key;
    ASSERT_EQ(::RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(), nullptr), ERROR_SUCCESS);
    if (name || !text.empty()) {
        const std::vector<BYTE> bytes = TextBytes(text);
        ASSERT_EQ(::RegSetValueExW(key.get(), name, 0, REG_SZ, bytes.data(), static_cast<DWORD>(bytes.size())), ERROR_SUCCESS);
    }
}

std::wstring ProcessTag() { return std::to_wstring(::GetCurrentProcessId()); }

// The real AssemblyFolders key of the prefix: created for the test when missing and removed again afterwards;
// every entry a test makes has a name of its own and is removed.
class GacAssemblyFolders : public ::testing::Test {
protected:
    void SetUp() override {
        for (const std::wstring key : {L"SOFTWARE\\Microsoft\\.NETFramework", kFoldersKey}) {
            if (KeyExists(HKEY_LOCAL_MACHINE, key)) continue;
            MakeKey(HKEY_LOCAL_MACHINE, key);
            created_.push_back(key);
        }
    }
    void TearDown() override {
        for (const std::wstring& entry : entries_) {
            ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, Path(entry).c_str());
            ::RegDeleteKeyW(HKEY_LOCAL_MACHINE, Path(entry).c_str());
        }
        for (auto key = created_.rbegin(); key != created_.rend(); ++key) ::RegDeleteKeyW(HKEY_LOCAL_MACHINE, key->c_str());
    }
    std::wstring Entry(const std::wstring& name) {
        entries_.push_back(L"VelmoraTest-" + ProcessTag() + L"-" + name);
        return entries_.back();
    }
    static std::wstring Path(const std::wstring& entry) { return std::wstring(kFoldersKey) + L"\\" + entry; }

private:
    std::vector<std::wstring> created_, entries_;
};

// While it lives, HKEY_LOCAL_MACHINE of this process is an empty key of its own below HKEY_CURRENT_USER.
class ScratchMachineKey {
public:
    ScratchMachineKey() : path_(L"Software\\VelmoraTests\\gac-" + ProcessTag()) {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
        EXPECT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, path_.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key_.put(),
                                    nullptr),
                  ERROR_SUCCESS);
        EXPECT_EQ(::RegOverridePredefKey(HKEY_LOCAL_MACHINE, key_.get()), ERROR_SUCCESS);
        MakeKey(HKEY_LOCAL_MACHINE, L"probe");
        isolated_ = KeyExists(key_.get(), L"probe"); // else a test would write to the real machine key
        ::RegDeleteKeyW(key_.get(), L"probe");
    }
    ~ScratchMachineKey() {
        ::RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        key_.reset();
        ::RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
        ::RegDeleteKeyW(HKEY_CURRENT_USER, path_.c_str());
        ::RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\VelmoraTests"); // only when no other test is using it
    }
    bool isolated() const { return isolated_; }
    bool Empty() const {
        DWORD subkeys = 1, values = 1;
        ::RegQueryInfoKeyW(key_.get(), nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, &values, nullptr, nullptr,
                           nullptr, nullptr);
        return subkeys == 0 && values == 0;
    }

private:
    std::wstring path_;
    tol::unique_hkey key_;
    bool isolated_ = false;
};

Settings EntrySettings(bool unregister, const std::wstring& entry, const std::wstring& filename = L"C:\\libs\\My.Lib.dll") {
    Settings settings;
    settings.unregister = unregister;
    settings.assemblyFolder = entry;
    settings.filename = filename;
    return settings;
}

} // namespace

TEST_F(GacAssemblyFolders, InstallSetsTheEntryToTheAssemblysFolder) {
    const struct Row {
        const wchar_t* filename;
        const wchar_t* folder;
        bool existing; // the entry is there already, with a default value and a named value of its own
    } rows[] = {
        {L"C:\\libs\\My.Lib.dll", L"C:\\libs", false},
        {L"My.Lib.dll", L"", false}, // a bare file name: an empty text
        {L"C:\\My.Lib.dll", L"C:", false},
        {L"\\\\server\\share\\lib\\x.dll", L"\\\\server\\share\\lib", false},
        {L"C:\\mixed/separators/x.dll", L"C:\\mixed/separators", false},
        {L"D:\\new place\\x.dll", L"D:\\new place", true},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        const std::wstring entry = Entry(std::to_wstring(i));
        if (rows[i].existing) {
            MakeKey(HKEY_LOCAL_MACHINE, Path(entry), nullptr, L"C:\\old");
            MakeKey(HKEY_LOCAL_MACHINE, Path(entry), L"Keep", L"kept");
        }
        GacRun run(EntrySettings(false, entry, rows[i].filename));
        const Outcome outcome = run.Execute();
        ASSERT_EQ(outcome.hr, S_OK) << "row " << i << ": " << Narrow(outcome.description);
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << "row " << i;
        const StoredText stored = ReadValue(HKEY_LOCAL_MACHINE, Path(entry), nullptr);
        EXPECT_EQ(stored.status, ERROR_SUCCESS) << "row " << i;
        EXPECT_EQ(stored.type, static_cast<DWORD>(REG_SZ)) << "row " << i;
        EXPECT_EQ(stored.data, TextBytes(rows[i].folder)) << "row " << i << ": the text with its NUL";
        if (rows[i].existing) {
            EXPECT_EQ(ReadValue(HKEY_LOCAL_MACHINE, Path(entry), L"Keep").data, TextBytes(L"kept")) << "row " << i;
        }
    }
}

TEST_F(GacAssemblyFolders, UninstallRemovesTheEntryUnlessItHasSubkeys) {
    const std::wstring sibling = Entry(L"sibling");
    MakeKey(HKEY_LOCAL_MACHINE, Path(sibling), nullptr, L"C:\\sibling");
    const struct Row {
        const char* name;
        bool defaultValue, namedValue, subkey, entryStays;
    } rows[] = {
        {"default value only", true, false, false, false},
        {"default and named value", true, true, false, false},
        {"with a subkey", true, false, true, true},
        {"subkey without default value", false, false, true, true},
        {"no entry at all", false, false, false, false},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        const std::wstring entry = Entry(std::to_wstring(i));
        if (row.defaultValue) MakeKey(HKEY_LOCAL_MACHINE, Path(entry), nullptr, L"C:\\libs");
        if (row.namedValue) MakeKey(HKEY_LOCAL_MACHINE, Path(entry), L"Other", L"x");
        if (row.subkey) MakeKey(HKEY_LOCAL_MACHINE, Path(entry) + L"\\child", nullptr, L"child value");
        GacRun run(EntrySettings(true, entry));
        const Outcome outcome = run.Execute();
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << Narrow(outcome.description);
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        EXPECT_EQ(KeyExists(HKEY_LOCAL_MACHINE, Path(entry)), row.entryStays) << row.name;
        EXPECT_EQ(ReadValue(HKEY_LOCAL_MACHINE, Path(entry), nullptr).status, ERROR_FILE_NOT_FOUND) << row.name;
        if (row.subkey) {
            const StoredText child = ReadValue(HKEY_LOCAL_MACHINE, Path(entry) + L"\\child", nullptr);
            EXPECT_EQ(child.data, TextBytes(L"child value")) << row.name;
        }
        EXPECT_EQ(ReadValue(HKEY_LOCAL_MACHINE, Path(sibling), nullptr).data, TextBytes(L"C:\\sibling")) << row.name;
    }
}

TEST_F(GacAssemblyFolders, FailedCommandLeavesTheEntriesUntouched) {
    for (const bool unregister : {false, true}) {
        const std::wstring existing = Entry(unregister ? L"u" : L"i"), fresh = Entry(unregister ? L"u-new" : L"i-new");
        MakeKey(HKEY_LOCAL_MACHINE, Path(existing), nullptr, L"C:\\old");
        for (const std::wstring& entry : {existing, fresh}) {
            GacRun run(EntrySettings(unregister, entry, L"D:\\new\\x.dll"));
            run.build.status = tol::StepFailed;
            const Outcome outcome = run.Execute();
            EXPECT_EQ(outcome.hr, S_OK) << "unregister " << unregister;
            EXPECT_EQ(outcome.status, tol::StepFailed) << "unregister " << unregister;
        }
        EXPECT_EQ(ReadValue(HKEY_LOCAL_MACHINE, Path(existing), nullptr).data, TextBytes(L"C:\\old"))
            << "unregister " << unregister;
        EXPECT_FALSE(KeyExists(HKEY_LOCAL_MACHINE, Path(fresh))) << "unregister " << unregister;
    }
}

TEST(GacAssemblyFoldersKey, MissingKeyFailsOnlyAnInstallAndAnEmptyEntryTouchesNothing) {
    const struct Row {
        bool unregister;
        const wchar_t* entry;
        HRESULT hr;
        long status;
    } rows[] = {
        {false, L"entry", static_cast<HRESULT>(0x80070002), kGarbage}, // ERROR_FILE_NOT_FOUND, after the command ran
        {true, L"entry", S_OK, tol::StepSucceeded},
        {false, L"", S_OK, tol::StepSucceeded}, // opening the missing key would have failed
        {true, L"", S_OK, tol::StepSucceeded},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        ScratchMachineKey machine;
        ASSERT_TRUE(machine.isolated()) << "HKEY_LOCAL_MACHINE could not be replaced";
        GacRun run(EntrySettings(rows[i].unregister, rows[i].entry));
        const Outcome outcome = run.Execute();
        EXPECT_EQ(outcome.hr, rows[i].hr) << "row " << i << ": " << Narrow(outcome.description);
        EXPECT_EQ(outcome.status, rows[i].status) << "row " << i;
        EXPECT_EQ(run.journal.back(), L"read AssemblyFolder/8") << "row " << i << ": the command ran first";
        EXPECT_TRUE(machine.Empty()) << "row " << i << ": nothing is created";
    }
}

TEST(GacAssemblyFoldersKey, EntryOfBackslashesNeverReachesTheKeyItself) {
    const struct Row {
        bool unregister;
        const wchar_t* entry;
        HRESULT hr;
    } rows[] = {
        {false, L"\\", static_cast<HRESULT>(0x800700A1)}, // ERROR_BAD_PATHNAME
        {false, L"\\\\\\", static_cast<HRESULT>(0x800700A1)},
        {true, L"\\", S_OK},
        {true, L"\\\\", S_OK},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        ScratchMachineKey machine;
        ASSERT_TRUE(machine.isolated()) << "HKEY_LOCAL_MACHINE could not be replaced";
        MakeKey(HKEY_LOCAL_MACHINE, kFoldersKey, nullptr, L"guard");
        GacRun run(EntrySettings(rows[i].unregister, rows[i].entry));
        EXPECT_EQ(run.Execute().hr, rows[i].hr) << "row " << i;
        EXPECT_EQ(ReadValue(HKEY_LOCAL_MACHINE, kFoldersKey, nullptr).data, TextBytes(L"guard")) << "row " << i;
    }
}

namespace {

std::wstring ProgramFolder() {
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\') + 1);
}

} // namespace

// The action with a host that really runs its command: the gacutil stand-in built into bin\sdk\bin.
TEST_F(GacAssemblyFolders, InstallsAndUninstallsThroughTheStandInTool) {
    namespace fs = std::filesystem;
    const fs::path temp = fs::temp_directory_path() / (L"velmora-gacinstall-" + ProcessTag());
    fs::remove_all(temp);
    fs::create_directories(temp / L"assembly dir");
    std::ofstream(temp / L"assembly dir" / L"My Lib.dll") << "assembly bytes";
    ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", (temp / L"store").c_str());
    const std::wstring entry = Entry(L"tool"), assembly = (temp / L"assembly dir" / L"My Lib.dll").wstring();
    const struct Row {
        bool unregister;
        std::wstring filename;
        long status;
        bool installed;
    } rows[] = {
        {false, assembly, tol::StepSucceeded, true},
        {true, L"My Lib", tol::StepSucceeded, false},
        {true, L"My Lib", tol::StepFailed, false}, // no longer installed: the tool fails
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        GacRun run(EntrySettings(rows[i].unregister, entry, rows[i].filename));
        run.build.sdk = ProgramFolder() + L"sdk\\";
        run.build.runForReal = true;
        const Outcome outcome = run.Execute();
        ASSERT_EQ(outcome.hr, S_OK) << "row " << i << ": " << Narrow(outcome.description);
        EXPECT_EQ(outcome.status, rows[i].status) << "row " << i << ": " << Narrow(run.CommandLine());
        EXPECT_EQ(fs::exists(temp / L"store" / L"My Lib" / L"My Lib.dll"), rows[i].installed) << "row " << i;
        EXPECT_EQ(KeyExists(HKEY_LOCAL_MACHINE, Path(entry)), rows[i].installed) << "row " << i;
    }
    ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", nullptr);
    fs::remove_all(temp);
}
