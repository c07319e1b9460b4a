// Copy Files end to end: scripts run by velmora-run.exe with the registered library; the trees compared byte for
// byte, a stop made by velmora-run's time limit.
#include "script_runner.h"
#include "support.h"
#include <gtest/gtest.h>
#include <algorithm>

using copytest::MakeTree;
using copytest::TreeText;
using test::ProgramRun;

namespace {

class CopyFilesScripts : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(test::CallLibrary("DllRegisterServer"), S_OK); }
    static void TearDownTestSuite() { test::CallLibrary("DllUnregisterServer"); }

    // One Copy Files step from src to dst with the options of a new step and the given JSON properties; the lines
    // that the action logged, between the step's heading and its outcome, then the outcome and the exit code.
    std::vector<std::wstring> Copy(const std::string& properties, const std::wstring& options = L"") {
        const std::string step = "{\"action\": \"Copy Files\", \"properties\": {\"SourceDir\": \"" + test::Json(src) +
                                 "\", \"DestDir\": \"" + test::Json(dst) + "\", \"Incremental\": true, \"LogCopied\": true, "
                                 "\"Restartable\": true, \"ReadOnly\": true, \"TBD\": true, \"Retries\": 10, \"Delay\": 15, " +
                                 properties + "}}";
        const ProgramRun run = test::RunScript("{\"steps\": [" + step + "]}", folder.path(), options);
        const auto heading = [](const std::wstring& l) { return l.rfind(L"== Step 1", 0) == 0; };
        const auto first = std::find_if(run.out.begin(), run.out.end(), heading);
        std::vector<std::wstring> lines(first == run.out.end() ? first : first + 1, run.out.end());
        lines.push_back(L"exit " + std::to_wstring(run.exitCode));
        return lines;
    }

    test::ScratchFolder folder{L"velmora-copyfiles"};
    std::wstring src = folder / L"src";
    std::wstring dst = folder / L"dst";
};

} // namespace

TEST_F(CopyFilesScripts, CopiesWithMasksAndFindsEverythingUpToDateTheSecondTime) {
    MakeTree(src, "app.exe=MZ app.pdb=P lib\\core.dll=C obj\\t.exe=T");
    const std::string properties = R"("Recurse": true, "LogUpToDate": true, "Ext": "*.exe\n*.dll", "ExclExt": "/obj")";
    EXPECT_EQ(Copy(properties), (std::vector<std::wstring>{src + L"\\ -> " + dst + L"\\", L"        New File:     app.exe",
                                                           L"      New Folder:     lib\\", L"        New File:     lib\\core.dll",
                                                           L"2 file(s) copied", L"== Step 1 succeeded", L"exit 0"}));
    const std::string copied = TreeText(dst, true);
    EXPECT_EQ(TreeText(dst), "app.exe=MZ lib\\ lib\\core.dll=C");
    EXPECT_EQ(Copy(properties), (std::vector<std::wstring>{src + L"\\ -> " + dst + L"\\", L"          same:       app.exe",
                                                           L"          same:       lib\\core.dll", L"0 file(s) copied",
                                                           L"== Step 1 succeeded", L"exit 0"}));
    EXPECT_EQ(TreeText(dst, true), copied) << "an up-to-date run changed the destination";
}

TEST_F(CopyFilesScripts, ChangesNothingInDisplayOnlyMode) {
    MakeTree(src, "a.txt=new b.txt=B sub\\c.txt=C");
    MakeTree(dst, "a.txt=old extra.txt=E gone\\x.txt=X");
    ::SetFileAttributesW((dst + L"\\a.txt").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    const std::string before = TreeText(src, true) + TreeText(dst, true);
    const std::vector<std::wstring> lines = Copy(R"("Recurse": true, "Purge": true, "Move": true, "MoveDirs": true, )"
                                                 R"("Empty": true, "Incremental": false, "ReadOnly": false, "Hidden": true, )"
                                                 R"("NoCopy": true)");
    EXPECT_EQ(lines.end()[-3], L"3 file(s) would have been moved, 2 file(s) would have been deleted") << copytest::Joined(lines);
    EXPECT_EQ(lines.back(), L"exit 0");
    EXPECT_EQ(TreeText(src, true) + TreeText(dst, true), before);
    ::SetFileAttributesW((dst + L"\\a.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(CopyFilesScripts, StopsInARetryPauseWhenTheTimeLimitIsReached) {
    MakeTree(src, "a.txt=A b.txt=B");
    copytest::HeldOpen held(src + L"\\a.txt", 20000);
    const ULONGLONG start = ::GetTickCount64();
    const std::vector<std::wstring> lines = Copy(R"("Delay": 30)", L"--timeout 1");
    EXPECT_LT(::GetTickCount64() - start, 10000u) << "the 30-second pause was waited out";
    held.Release();
    EXPECT_EQ(std::vector<std::wstring>(lines.end() - 3, lines.end()),
              (std::vector<std::wstring>{L"0 file(s) copied", L"== Step 1 stopped", L"exit 2"}))
        << copytest::Joined(lines);
    EXPECT_EQ(TreeText(dst), "");
}
