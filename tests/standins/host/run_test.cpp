// velmora-run.exe end to end: the real VelmoraExt.dll registered in the prefix, scripts in a folder whose name is
// not ASCII, and the program's stdout and stderr captured in files.
#include "script_runner.h"
#include "text.h"
#include "frame/messages.h"
#include <gtest/gtest.h>

namespace {

class HostRunTool : public testing::Test {
protected:
    // Like the registration tests, the suite leaves the shared registry without the library.
    static void SetUpTestSuite() { ASSERT_EQ(test::CallLibrary("DllRegisterServer"), S_OK); }
    static void TearDownTestSuite() { test::CallLibrary("DllUnregisterServer"); }

    // Runs velmora-run with the options and, unless it is empty, the script; stdout must be UTF-8 lines ended by LF.
    test::ProgramRun Run(const std::wstring& options, const std::string& script = {}) {
        const std::wstring program = L"\"" + test::BinFolder() + L"\\velmora-run.exe\" ";
        const test::ProgramRun run = script.empty() ? test::RunProgram(program + options, folder.path())
                                                    : test::RunScript(script, folder.path(), options);
        const std::string out = test::ReadFileBytes(folder / L"stdout.txt");
        EXPECT_EQ(host::Utf8(tol::Widen(out, CP_UTF8)), out) << "stdout is not UTF-8";
        EXPECT_EQ(out.find('\r'), std::string::npos) << "lines end in LF alone";
        return run;
    }

    test::ScratchFolder folder{L"velmora-run \u00fc\u20ac"};
};

} // namespace

TEST_F(HostRunTool, ListsTheCatalogSortedByName) {
    const test::ProgramRun list = Run(L"--list"); // twelve records of two lines
    EXPECT_EQ(list.exitCode, 0u);
    ASSERT_EQ(list.out.size(), 24u);
    EXPECT_EQ(list.out[0], L"COM+ Application (Server): Create, modify, delete, shutdown, and start COM+ applications");
    EXPECT_EQ(list.out[19], L"    VelmoraExt.WriteINIAction, VelmoraExt.WriteINIUI");
    EXPECT_EQ(list.out[23], L"    VelmoraExt.ZipFilesAction, VelmoraExt.ZipFilesUI, VelmoraExt.ZipFilesOptUI");
}

TEST_F(HostRunTool, ScriptsEndWithTheirExitCodes) {
    const std::string variables = R"({"variables": {"DIR": ")" + test::Json(folder.path()) + R"("}, "steps": [)";
    const std::wstring missing = folder / L"missing.json";
    const struct {
        const char* name;
        std::wstring options;
        std::string script; // empty: none is written
        DWORD exitCode;
        std::vector<std::wstring> out; // the start of each line
        std::wstring err;              // a part of stderr; empty: stderr is empty
    } rows[] = {
        {"written file", L"--var WHO=velmora",
         variables + "{\"name\": \"\xC3\x9C" "berschrift \xE2\x9C\x93\", \"action\": \"No Such Action\", \"disabled\": true}," +
             R"({"name": "greeting", "action": "Write File", "properties": {"Filename": "%DIR%\\written.txt",
             "Text": "hello from %WHO%", "Append": false}}]})",
         0,
         {L"== Step 1: No Such Action (\u00dcberschrift \u2713) skipped", L"== Step 2: Write File (greeting)",
          L"== Step 2 succeeded"},
         L""},
        {"failing step", L"",
         variables + R"({"action": "Write File", "properties": {"Filename": "%DIR%\\none\\a.txt", "Text": "x", "Append": false}},
             {"action": "Write File"}]})",
         1, {L"== Step 1: Write File", L"error 0x", L"== Step 1 failed"}, L""},
        {"time limit", L"--timeout 1", R"({"steps": [{"action": "Wait", "properties": {"WaitFor": 0, "Criteria": "00:00:30"}}]})",
         2, {L"== Step 1: Wait", L"== Time limit of 1 s reached: stopping", L"== Step 1 stopped"}, L""},
        {"unknown action", L"", R"({"steps": [{"action": "Write Fil"}]})", 64, {},
         L"script.json: step 1: unknown action \"Write Fil\"; the known actions are: COM+ Application, COM+ Component, "
         L"Copy Files, GAC Install, Replace in File, Service, UNZIP Files, Wait, Write File, Write INI, Write Registry, ZIP "
         L"Files"},
        {"bad JSON", L"", "{\"steps\": [\n  {\"action\": \"Write File\",, }]}", 64, {}, L"script.json: line 2, column 27: "},
        {"missing script", L"\"" + missing + L"\"", "", 64, {},
         missing + L": " + host::SystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))},
        {"bad option", L"--timeout 0", R"({"steps": []})", 64, {}, L"--timeout needs a whole number of seconds"},
    };
    for (const auto& row : rows) {
        const test::ProgramRun run = Run(row.options, row.script);
        EXPECT_LT(run.seconds, 10.0) << row.name;
        EXPECT_EQ(run.exitCode, row.exitCode) << row.name << "; stderr: " << testing::PrintToString(run.err);
        EXPECT_EQ(run.out.size(), row.out.size()) << row.name << ": " << testing::PrintToString(run.out);
        for (size_t i = 0; i < std::min(run.out.size(), row.out.size()); ++i)
            EXPECT_EQ(run.out[i].rfind(row.out[i], 0), 0u) << row.name << ": " << testing::PrintToString(run.out[i]);
        if (row.err.empty())
            EXPECT_EQ(run.err, L"") << row.name;
        else
            EXPECT_NE(run.err.find(row.err), std::wstring::npos) << row.name << "; stderr: " << testing::PrintToString(run.err);
    }
    EXPECT_EQ(test::ReadFileBytes(folder / L"written.txt").substr(0, 18), "hello from velmora");
}
