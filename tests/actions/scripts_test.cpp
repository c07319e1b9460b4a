// The actions end to end: scripts run by velmora-run.exe with the registered library, results read back with
// outside tools (reg.exe, sc.exe, the files' bytes), as a build engineer would check them.
#include "script_runner.h"
#include "testservice/installed.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <thread>

using test::Json;
using test::ProgramRun;

namespace {

class Scripts : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ASSERT_EQ(test::CallLibrary("DllRegisterServer"), S_OK);
        ASSERT_EQ(test::CallLibrary("DllRegisterServer", L"VelmoraComAdmin.dll"), S_OK);
        // The catalog stand-in starts empty: components left installed by an earlier run would refuse to install.
        ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, L"Software\\Tolvane\\VelmoraComPlus");
    }
    static void TearDownTestSuite() { test::CallLibrary("DllUnregisterServer"); }

    ProgramRun Run(const std::string& steps, const std::wstring& options = L"") {
        return test::RunScript("{\"steps\": [" + steps + "]}", folder.path(), options);
    }
    // Runs a Windows tool of the prefix (reg.exe, sc.exe) in a folder of its own and returns its output lines.
    ProgramRun Tool(const std::wstring& commandLine) { return test::RunProgram(commandLine, tools.path()); }

    static bool HasLine(const ProgramRun& run, const std::wstring& text) {
        return std::find(run.out.begin(), run.out.end(), text) != run.out.end();
    }
    static std::string Describe(const ProgramRun& run) {
        std::wstring all;
        for (const std::wstring& line : run.out) all += line + L"\n";
        return testing::PrintToString(all + L"stderr: " + run.err);
    }

    test::ScratchFolder folder{L"velmora-scripts"};
    test::ScratchFolder tools{L"velmora-tools"};
};

std::string Step(const char* action, const std::string& properties) {
    return std::string("{\"action\": \"") + action + "\", \"properties\": {" + properties + "}}";
}

} // namespace

TEST_F(Scripts, FileIniAndRegistryStepsLeaveExactlyWhatTheyPromise) {
    const std::wstring text = folder / L"notes.txt", ini = folder / L"app.ini";
    const std::wstring key = L"Software\\VelmoraScriptTests\\" + std::to_wstring(::GetCurrentProcessId());
    const ProgramRun run = Run(
        Step("Write File", "\"Filename\": \"" + Json(text) + "\", \"Text\": \"v=0.0\\nend\", \"Encoding\": 1200") + "," +
        Step("Replace in File", "\"FileIn\": \"" + Json(text) + "\", \"FileOut\": \"" + Json(text) +
                                    "\", \"Find\": \"v=[0-9.]+\", \"Replace\": \"v=2.5\", \"Encoding\": 1200") + "," +
        Step("Write INI", "\"Filename\": \"" + Json(ini) + "\", \"Section\": \"S\", \"ValueName\": \"k\", \"ValueData\": \"1\"") +
        "," +
        Step("Write Registry", "\"RootKey\": -2147483647, \"SubKey\": \"" + Json(key + L"\\inner") +
                                   "\", \"ValueName\": \"Build\", \"ValueData\": \" -7x\", \"ValueType\": 4") + "," +
        Step("Write Registry", "\"RootKey\": -2147483647, \"SubKey\": \"" + Json(key) +
                                   "\", \"ValueName\": \"Name\", \"ValueData\": \"caf\u00e9\"") );
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_TRUE(HasLine(run, L"Replacement(s) made in file")) << Describe(run);

    EXPECT_EQ(test::ReadFileBytes(text), std::string("\xFF\xFEv\0=\0002\0.\0005\0\r\0\n\0e\0n\0d\0", 22));
    EXPECT_EQ(test::ReadFileBytes(ini), "[S]\r\nk=1\r\n");

    const ProgramRun query = Tool(L"reg.exe query \"HKCU\\" + key + L"\" /s");
    ASSERT_EQ(query.exitCode, 0u) << Describe(query);
    EXPECT_TRUE(HasLine(query, L"    Build    REG_DWORD    0xfffffff9")) << Describe(query);
    EXPECT_TRUE(HasLine(query, L"    Name    REG_SZ    caf\u00e9")) << Describe(query);

    const ProgramRun removal = Run(Step("Write Registry", "\"RootKey\": -2147483647, \"SubKey\": \"" + Json(key) +
                                                              "\", \"ValueName\": \"*****\", \"DeleteValue\": true"));
    EXPECT_EQ(removal.exitCode, 0u) << Describe(removal);
    EXPECT_EQ(Tool(L"reg.exe query \"HKCU\\" + key + L"\"").exitCode, 1u);
    EXPECT_EQ(Tool(L"reg.exe query \"HKCU\\Software\\VelmoraScriptTests\"").exitCode, 0u) << "the parent stays";
}

TEST_F(Scripts, ElapsedWaitTakesItsTimeAndNoMore) {
    const ProgramRun baseline = Run(Step("Wait", "\"WaitFor\": 0, \"Criteria\": \"00:00:00\""));
    const ProgramRun wait = Run(Step("Wait", "\"WaitFor\": 0, \"Criteria\": \"00:00:02\""));
    ASSERT_EQ(wait.exitCode, 0u) << Describe(wait);
    EXPECT_TRUE(HasLine(wait, L"Elapsed time has passed"));
    EXPECT_GE(wait.seconds, 2.0);
    // The start of a Wine process varies with the machine's load; the wait itself is the difference.
    EXPECT_LE(wait.seconds - baseline.seconds, 2.3) << wait.seconds << " s against " << baseline.seconds << " s";
}

TEST_F(Scripts, FileWaitEndsSoonAfterTheFileAppears) {
    const std::wstring flag = folder / L"drop\\ready.flag";
    ::CreateDirectoryW((folder / L"drop").c_str(), nullptr);
    ULONGLONG written = 0;
    std::thread writer([&] {
        ::Sleep(2500); // long enough for the step to be waiting
        test::WriteFileBytes(flag, "go");
        written = ::GetTickCount64();
    });
    const ULONGLONG start = ::GetTickCount64();
    const ProgramRun run = Run(Step("Wait", "\"WaitFor\": 2, \"Criteria\": \"" + Json(flag) + "\""));
    const ULONGLONG end = start + static_cast<ULONGLONG>(run.seconds * 1000);
    writer.join();
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_TRUE(HasLine(run, L"File has been created or modified"));
    EXPECT_LT(end - written, 500u) << "ended " << (end - written) << " ms after the file was written";
}

TEST_F(Scripts, TimeoutStopsEveryKindOfWaitWithoutALogLine) {
    const std::string waits[] = {
        Step("Wait", "\"WaitFor\": 0, \"Criteria\": \"01:00:00\""),
        Step("Wait", "\"WaitFor\": 1, \"Criteria\": \"12/31/9999 23:59\""),
        Step("Wait", "\"WaitFor\": 2, \"Criteria\": \"" + Json(folder / L"never.flag") + "\""),
    };
    for (const std::string& wait : waits) {
        const ProgramRun run = Run(wait, L"--timeout 1");
        EXPECT_EQ(run.exitCode, 2u) << wait << Describe(run);
        EXPECT_LT(run.seconds, 10.0) << wait;
        EXPECT_TRUE(HasLine(run, L"== Step 1 stopped")) << Describe(run);
        for (const std::wstring& line : run.out) EXPECT_EQ(line.rfind(L"==", 0), 0u) << "a log line: " << Describe(run);
    }
}

TEST_F(Scripts, ServiceStepsLeaveTheServiceInTheReportedState) {
    testservice::InstalledService service(L"normal");
    ASSERT_TRUE(service.installed());
    const std::wstring query = L"sc.exe query \"" + service.keyName() + L"\"";
    const auto step = [&](int action) {
        return Step("Service", "\"Service\": \"" + Json(service.displayName()) + "\", \"Action\": " + std::to_string(action));
    };
    const auto state = [&] {
        const ProgramRun sc = Tool(query);
        for (const std::wstring& line : sc.out)
            if (line.find(L"STATE") != std::wstring::npos) return line.substr(line.find(L':') + 1);
        return L"(no state) exit " + std::to_wstring(sc.exitCode);
    };

    ProgramRun run = Run(step(0));
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_TRUE(HasLine(run, L"Starting service '" + service.displayName() + L"'...")) << Describe(run);
    EXPECT_NE(state().find(L"RUNNING"), std::wstring::npos) << testing::PrintToString(state());

    run = Run(step(1));
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_NE(state().find(L"STOPPED"), std::wstring::npos) << testing::PrintToString(state());

    run = Run(step(0) + "," + step(2));
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_TRUE(HasLine(run, L"Deleting service '" + service.displayName() + L"'...")) << Describe(run);
    EXPECT_TRUE(service.Deleted());
}

TEST_F(Scripts, TheDemoRunsToTheEnd) {
    const ProgramRun run = test::RunProgram(L"\"" + test::BinFolder() + L"\\velmora-run.exe\" \"" VELMORA_DEMO_SCRIPT "\"",
                                            folder.path());
    EXPECT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_FALSE(HasLine(run, L"== Step 1 failed"));
}

TEST_F(Scripts, ComPlusStateOutlivesTheRunAndThePasswordStaysOutOfTheLog) {
    const std::wstring app = L"Velmora Script Test " + std::to_wstring(::GetCurrentProcessId());
    const std::string application = "\"Application\": \"" + Json(app) + "\"";
    const std::string dll = Json(test::BinFolder() + L"\\VelmoraExt.dll");
    ProgramRun run = Run(
        Step("COM+ Application", application + ", \"Op\": 0, \"Activation\": 1, \"Identity\": \"ci\\\\builder\", "
                                               "\"Password\": \"s3cret-pw\", \"RunForever\": 0, \"ShutdownAfter\": 7") + "," +
        Step("COM+ Component", application + ", \"Component\": \"" + dll + "\", \"Op\": 0, \"Transaction\": 5, "
                                             "\"Synchronization\": 5, \"JustInTimeActivation\": false"));
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);

    run = Run(Step("COM+ Component", application + ", \"Component\": \"VelmoraExt.WaitAction\", \"Op\": 3") + "," +
              Step("COM+ Application", application + ", \"Op\": 3"));
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_TRUE(HasLine(run, L"        ProgID = VelmoraExt.WaitAction")) << Describe(run);
    EXPECT_TRUE(HasLine(run, L"    ShutdownAfter = 7")) << Describe(run);
    EXPECT_TRUE(HasLine(run, L"Starting application '" + app + L"'...")) << Describe(run);
    for (const std::wstring& line : run.out) EXPECT_EQ(line.find(L"s3cret"), std::wstring::npos) << "password logged";

    const ProgramRun query = Tool(L"reg.exe query HKLM\\Software\\Tolvane\\VelmoraComPlus /s");
    EXPECT_TRUE(std::any_of(query.out.begin(), query.out.end(), [&](const std::wstring& line) {
        return line.find(L"REG_SZ    " + app) != std::wstring::npos;
    })) << Describe(query);

    run = Run(Step("COM+ Application", application + ", \"Op\": 1"));
    EXPECT_EQ(run.exitCode, 0u) << Describe(run);
    run = Run(Step("COM+ Component", application + ", \"Component\": \"*\", \"Op\": 3"));
    EXPECT_EQ(run.exitCode, 1u) << Describe(run);
    EXPECT_TRUE(HasLine(run, L"error 0x80004005: Item '" + app + L"' not found in Applications collection.")) << Describe(run);
}

TEST_F(Scripts, GacInstallRecordsTheAssemblyFolderOnlyWhileInstalled) {
    const std::wstring folders = L"HKLM\\SOFTWARE\\Microsoft\\.NETFramework\\AssemblyFolders";
    ASSERT_EQ(Tool(L"reg.exe add \"" + folders + L"\" /f").exitCode, 0u);
    const std::wstring entry = L"VelmoraScriptTest" + std::to_wstring(::GetCurrentProcessId());
    const std::string common = "\"Filename\": \"" + Json(test::BinFolder() + L"\\VelmoraExt.dll") +
                               "\", \"AssemblyFolder\": \"" + Json(entry) + "\"";

    ProgramRun run = Run(Step("GAC Install", common));
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    const ProgramRun query = Tool(L"reg.exe query \"" + folders + L"\\" + entry + L"\"");
    EXPECT_TRUE(HasLine(query, L"    (Default)    REG_SZ    " + test::BinFolder())) << Describe(query);

    run = Run(Step("GAC Install", common + ", \"Unregister\": true"));
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_EQ(Tool(L"reg.exe query \"" + folders + L"\\" + entry + L"\"").exitCode, 1u);

    // The tool fails for an assembly that is not installed: the step fails and the registry is not touched.
    run = Run(Step("GAC Install", common + ", \"Unregister\": true"));
    EXPECT_EQ(run.exitCode, 1u) << Describe(run);
}
