// velmora-run.exe end to end: the real VelmoraExt.dll registered in the prefix, scripts in a folder whose name is
// not ASCII, and the program's stdout and stderr captured in files.
#include "host_test_support.h"
#include "text.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <gtest/gtest.h>

namespace {

std::string ReadBytes(const std::wstring& path) {
    const tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    std::string bytes(1 << 20, '\0');
    DWORD read = 0;
    ::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    return bytes.substr(0, read);
}

struct Output {
    DWORD exitCode = 0xDEAD;
    std::vector<std::wstring> out; // lines of stdout
    std::wstring err;
};

class HostRunTool : public testing::Test {
protected:
    // Like the registration tests, the suite leaves the shared registry without the library.
    static void SetUpTestSuite() { ASSERT_EQ(CallLibrary("DllRegisterServer"), S_OK); }
    static void TearDownTestSuite() { CallLibrary("DllUnregisterServer"); }
    static HRESULT CallLibrary(const char* entry) {
        const tol::unique_module library(::LoadLibraryW((hosttest::BinFolder() + L"\\VelmoraExt.dll").c_str()));
        const auto function = reinterpret_cast<HRESULT(WINAPI*)()>(::GetProcAddress(library.get(), entry));
        return function ? function() : E_FAIL;
    }
    void TearDown() override {
        for (const wchar_t* name : {L"script.json", L"out.txt", L"err.txt", L"written.txt"})
            ::DeleteFileW((folder + L"\\" + name).c_str());
        ::RemoveDirectoryW(folder.c_str());
    }

    // Runs velmora-run with the arguments, after them the script when one is given.
    Output Run(std::wstring arguments, const std::string& script = {}) {
        if (!script.empty()) {
            const tol::unique_file file(::CreateFileW(scriptPath.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
            DWORD written = 0;
            ::WriteFile(file.get(), script.data(), static_cast<DWORD>(script.size()), &written, nullptr);
            arguments += L" \"" + scriptPath + L"\"";
        }
        Output output;
        output.exitCode = Start(L"\"" + hosttest::BinFolder() + L"\\velmora-run.exe\" " + arguments);
        const std::string out = ReadBytes(folder + L"\\out.txt"), err = ReadBytes(folder + L"\\err.txt");
        const std::wstring text = tol::Widen(out, CP_UTF8);
        EXPECT_EQ(host::Utf8(text), out) << "stdout is not UTF-8";
        EXPECT_EQ(text.find(L'\r'), std::wstring::npos) << "lines end in LF alone";
        output.out = tol::SplitTokens(text, L"\n");
        output.err = tol::Widen(err, CP_UTF8);
        return output;
    }

    DWORD Start(std::wstring commandLine) {
        SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
        const auto create = [&](const wchar_t* name) {
            return tol::unique_file(::CreateFileW((folder + L"\\" + name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit,
                                                  CREATE_ALWAYS, 0, nullptr));
        };
        const tol::unique_file out = create(L"out.txt"), err = create(L"err.txt");
        STARTUPINFOW startup{sizeof startup};
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = out.get();
        startup.hStdError = err.get();
        PROCESS_INFORMATION info{};
        if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &info))
            return ::GetLastError();
        const tol::unique_process process(info.hProcess), thread(info.hThread);
        DWORD exitCode = 0xDEAD;
        if (::WaitForSingleObject(process.get(), 60000) == WAIT_OBJECT_0) ::GetExitCodeProcess(process.get(), &exitCode);
        return exitCode;
    }

    std::wstring folder = hosttest::NewTempFolder(L"velmora-run \u00fc\u20ac");
    std::wstring scriptPath = folder + L"\\script.json";
};

} // namespace

TEST_F(HostRunTool, HelpAndList) {
    const Output help = Run(L"--help");
    EXPECT_EQ(help.exitCode, 0u);
    EXPECT_EQ(help.out.at(0), L"usage: velmora-run [options] SCRIPT.json");

    const Output list = Run(L"--list"); // twelve records of two lines, sorted by name
    EXPECT_EQ(list.exitCode, 0u);
    EXPECT_EQ(list.err, L"");
    ASSERT_EQ(list.out.size(), 24u);
    EXPECT_EQ(list.out[0], L"COM+ Application (Server): Create, modify, delete, shutdown, and start COM+ applications");
    EXPECT_EQ(list.out[18], L"Write INI (Files): Create, update, or delete a value in an INI file");
    EXPECT_EQ(list.out[19], L"    VelmoraExt.WriteINIAction, VelmoraExt.WriteINIUI");
    EXPECT_EQ(list.out[23], L"    VelmoraExt.ZipFilesAction, VelmoraExt.ZipFilesUI, VelmoraExt.ZipFilesOptUI");
}

TEST_F(HostRunTool, ScriptsEndWithTheirExitCodes) {
    std::string dir = host::Utf8(folder); // for JSON: every backslash doubled
    for (size_t at = 0; (at = dir.find('\\', at)) != std::string::npos; at += 2) dir.insert(at, 1, '\\');
    const std::string variables = R"({"variables": {"DIR": ")" + dir + R"("}, "steps": [)";
    const std::wstring missing = folder + L"\\missing.json";
    const struct {
        const char* name;
        std::wstring options;
        std::string script; // empty: none is written
        DWORD exitCode;
        std::vector<std::wstring> out; // the start of each line
        std::wstring err;              // a part of stderr; empty: stderr is empty
    } rows[] = {
        {"no steps", L"", R"({"steps": []})", 0, {}, L""},
        {"disabled steps",
         L"",
         "{\"steps\": [{\"name\": \"\xC3\x9C"
         "berschrift \xE2\x9C\x93\", \"action\": \"Write File\", \"disabled\": true},"
         " {\"action\": \"No Such Action\", \"disabled\": true}]}",
         0,
         {L"== Step 1: Write File (\u00dcberschrift \u2713) skipped", L"== Step 2: No Such Action skipped"},
         L""},
        {"written file",
         L"--var WHO=velmora",
         variables + R"({"name": "greeting", "action": "Write File", "properties": {"Filename": "%DIR%\\written.txt",
             "Text": "hello from %WHO%", "Append": false}}]})",
         0,
         {L"== Step 1: Write File (greeting)", L"== Step 1 succeeded"},
         L""},
        {"failing step",
         L"",
         variables + R"({"action": "Write File", "properties": {"Filename": "%DIR%\\none\\a.txt", "Text": "x", "Append": false}},
             {"action": "Write File"}]})",
         1,
         {L"== Step 1: Write File", L"error 0x", L"== Step 1 failed"},
         L""},
        {"time limit",
         L"--timeout 1",
         R"({"steps": [{"action": "Wait", "properties": {"WaitFor": 0, "Criteria": "00:00:30"}}]})",
         2,
         {L"== Step 1: Wait", L"== Time limit of 1 s reached: stopping", L"== Step 1 stopped"},
         L""},
        {"unknown action",
         L"",
         R"({"steps": [{"action": "Write Fil"}]})",
         64,
         {},
         L"script.json: step 1: unknown action \"Write Fil\"; the known actions are: COM+ Application, COM+ Component, "
         L"Copy Files, GAC Install, Replace in File, Service, UNZIP Files, Wait, Write File, Write INI, Write Registry, ZIP "
         L"Files"},
        {"bad JSON", L"", "{\"steps\": [\n  {\"action\": \"Write File\",, }]}", 64, {}, L"script.json: line 2, column 27: "},
        {"missing script",
         L"\"" + missing + L"\"",
         "",
         64,
         {},
         missing + L": " + host::SystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))},
        {"bad option", L"--timeout 0", R"({"steps": []})", 64, {}, L"--timeout needs a whole number of seconds"},
    };
    for (const auto& row : rows) {
        const ULONGLONG start = ::GetTickCount64();
        const Output output = Run(row.options, row.script);
        EXPECT_LT(::GetTickCount64() - start, 10000u) << row.name;
        EXPECT_EQ(output.exitCode, row.exitCode) << row.name << "; stderr: " << testing::PrintToString(output.err);
        EXPECT_EQ(output.out.size(), row.out.size()) << row.name << ": " << testing::PrintToString(output.out);
        for (size_t i = 0; i < std::min(output.out.size(), row.out.size()); ++i)
            EXPECT_EQ(output.out[i].rfind(row.out[i], 0), 0u) << row.name << ": " << testing::PrintToString(output.out[i]);
        if (row.err.empty())
            EXPECT_EQ(output.err, L"") << row.name;
        else
            EXPECT_NE(output.err.find(row.err), std::wstring::npos)
                << row.name << "; stderr: " << testing::PrintToString(output.err);
    }
    EXPECT_EQ(ReadBytes(folder + L"\\written.txt").substr(0, 18), "hello from velmora");
}
