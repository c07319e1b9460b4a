// Copy Files end to end: scripts run by velmora-run.exe with the registered library, the trees compared byte for
// byte with what the options promise, faults made by another process, stops made by velmora-run's time limit.
#include "script_runner.h"
#include "support.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <memory>

using copytest::MakeTree;
using copytest::TreeText;
using test::Json;
using test::ProgramRun;

namespace {

class CopyFilesScripts : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(test::CallLibrary("DllRegisterServer"), S_OK); }
    static void TearDownTestSuite() { test::CallLibrary("DllUnregisterServer"); }

    // One Copy Files step from src to dst: the options of a new step, then the given JSON properties.
    ProgramRun Copy(const std::string& properties, const std::wstring& options = L"") {
        const std::string step = "{\"action\": \"Copy Files\", \"properties\": {\"SourceDir\": \"" + Json(src) +
                                 "\", \"DestDir\": \"" + Json(dst) + "\", " + kNewStep + properties + "}}";
        return test::RunScript("{\"steps\": [" + step + "]}", folder.path(), options);
    }
    // The lines that the action logged: those between the step's heading and its outcome.
    static std::vector<std::wstring> ActionLines(const ProgramRun& run) {
        const auto first = std::find_if(run.out.begin(), run.out.end(), [](const std::wstring& l) { return l.rfind(L"== Step 1: ", 0) == 0; });
        const auto last = std::find_if(first, run.out.end(), [](const std::wstring& l) { return l.rfind(L"== Step 1 ", 0) == 0; });
        return first == run.out.end() ? std::vector<std::wstring>{} : std::vector<std::wstring>(first + 1, last);
    }
    static std::string Describe(const ProgramRun& run) {
        return testing::PrintToString(copytest::Joined(run.out) + L"stderr: " + run.err);
    }

    static constexpr const char* kNewStep =
        "\"Incremental\": true, \"LogCopied\": true, \"Restartable\": true, \"ReadOnly\": true, \"TBD\": true, "
        "\"Retries\": 10, \"Delay\": 15, ";

    test::ScratchFolder folder{L"velmora-copyfiles"};
    std::wstring src = folder / L"src";
    std::wstring dst = folder / L"dst";
};

} // namespace

TEST_F(CopyFilesScripts, CopiesIncrementallyWithMasksAndFindsEverythingUpToDateTheSecondTime) {
    MakeTree(src, "app.exe=MZ app.pdb=P lib\\core.dll=C lib\\core.pdb=P obj\\t.exe=T docs\\readme.txt=R");
    const std::string properties = "\"Recurse\": true, \"LogUpToDate\": true, \"Ext\": \"*.exe\\n*.dll\\n*.txt\", "
                                   "\"ExclExt\": \"/obj\"";
    ProgramRun run = Copy(properties);
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_EQ(ActionLines(run), (std::vector<std::wstring>{
                                    src + L"\\ -> " + dst + L"\\",
                                    L"        New File:     app.exe",
                                    L"      New Folder:     docs\\",
                                    L"        New File:     docs\\readme.txt",
                                    L"      New Folder:     lib\\",
                                    L"        New File:     lib\\core.dll",
                                    L"3 file(s) copied",
                                }));
    EXPECT_EQ(TreeText(dst), "app.exe=MZ docs\\ docs\\readme.txt=R lib\\ lib\\core.dll=C");
    const auto copied = copytest::Snapshot(dst);

    run = Copy(properties);
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_EQ(ActionLines(run), (std::vector<std::wstring>{
                                    src + L"\\ -> " + dst + L"\\",
                                    L"          same:       app.exe",
                                    L"          same:       docs\\readme.txt",
                                    L"          same:       lib\\core.dll",
                                    L"0 file(s) copied",
                                }));
    EXPECT_TRUE(copytest::Snapshot(dst) == copied) << "an up-to-date run changed the destination";
}

TEST_F(CopyFilesScripts, MovesTheSelectedFilesAndRemovesOnlyTheFoldersItEmptied) {
    MakeTree(src, "a.txt=A keep.cfg=K sub\\b.txt=B sub\\deep\\c.txt=C other\\d.cfg=D");
    const ProgramRun run = Copy("\"Recurse\": true, \"Move\": true, \"MoveDirs\": true, \"Ext\": \"*.txt\"");
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_EQ(run.out.size() >= 2 ? run.out[run.out.size() - 2] : L"", L"3 file(s) moved") << Describe(run);
    EXPECT_EQ(TreeText(src), "keep.cfg=K other\\ other\\d.cfg=D");
    EXPECT_EQ(TreeText(dst), "a.txt=A sub\\ sub\\b.txt=B sub\\deep\\ sub\\deep\\c.txt=C");
}

TEST_F(CopyFilesScripts, PurgesFromAMissingSourceOnlyWhatTheMasksSelect) {
    MakeTree(dst, "a.tmp=1 a.txt=2 bin\\b.tmp=3 bin\\keep.tmp=4 obj\\c.tmp=5 obj\\sub\\d.tmp=6 logs\\e.log=7");
    const ProgramRun run = Copy("\"Recurse\": true, \"Purge\": true, \"IgnoreSrc\": true, \"Ext\": \"*.tmp\\n/obj\", "
                                "\"ExclExt\": \"keep.*\"");
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_EQ(run.out.size() >= 2 ? run.out[run.out.size() - 2] : L"", L"0 file(s) copied, 2 file(s) deleted") << Describe(run);
    // The include folder mask /obj selects obj and everything below it; the root's and bin's files do not pass.
    EXPECT_EQ(TreeText(dst), "a.tmp=1 a.txt=2 bin\\ bin\\b.tmp=3 bin\\keep.tmp=4 logs\\ logs\\e.log=7");
    EXPECT_EQ(TreeText(src), "<missing>") << "nothing may be created for a missing source";
}

TEST_F(CopyFilesScripts, ChangesNothingInDisplayOnlyMode) {
    MakeTree(src, "a.txt=new b.txt=B sub\\c.txt=C");
    MakeTree(dst, "a.txt=old extra.txt=E gone\\x.txt=X");
    ::SetFileAttributesW((dst + L"\\a.txt").c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
    const auto before = copytest::Snapshot(dst);
    const auto sourceBefore = copytest::Snapshot(src);
    const ProgramRun run = Copy("\"Recurse\": true, \"Purge\": true, \"Move\": true, \"MoveDirs\": true, \"Empty\": true, "
                                "\"Incremental\": false, \"ReadOnly\": false, \"Hidden\": true, \"NoCopy\": true");
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    EXPECT_EQ(run.out.size() >= 2 ? run.out[run.out.size() - 2] : L"",
              L"3 file(s) would have been moved, 2 file(s) would have been deleted")
        << Describe(run);
    EXPECT_TRUE(copytest::Snapshot(dst) == before) << "the destination changed";
    EXPECT_TRUE(copytest::Snapshot(src) == sourceBefore) << "the source changed";
    ::SetFileAttributesW((dst + L"\\a.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(CopyFilesScripts, WaitsForAFileThatAnotherProcessHoldsAndCopiesItWhenReleased) {
    MakeTree(src, "a.txt=A b.txt=B");
    copytest::HeldOpen held(src + L"\\a.txt", 1500);
    const ProgramRun run = Copy("\"Delay\": 1");
    EXPECT_EQ(held.Release(), 0u);
    ASSERT_EQ(run.exitCode, 0u) << Describe(run);
    const std::wstring pause = L"Error processing '" + dst + L"\\a.txt': ";
    EXPECT_TRUE(std::any_of(run.out.begin(), run.out.end(), [&](const std::wstring& l) { return l.rfind(pause, 0) == 0; }))
        << Describe(run);
    EXPECT_EQ(TreeText(dst), "a.txt=A b.txt=B");
}

TEST_F(CopyFilesScripts, FailsAtOnceWhenNotToRetryOrWhenAccessIsDenied) {
    struct Row {
        const char* name;
        const char* tree;
        const char* properties;
        bool lockSource;
        DWORD error;
    } rows[] = {
        {"a locked file with Retries 1", "src\\a.txt=A", "\"Retries\": 1, \"Move\": true", true, ERROR_SHARING_VIOLATION},
        {"a folder where the copy goes", "src\\a.txt=A dst\\a.txt\\", "\"Move\": true", false, ERROR_ACCESS_DENIED},
    };
    for (const Row& row : rows) {
        MakeTree(folder.path(), row.tree);
        std::unique_ptr<copytest::HeldOpen> held;
        if (row.lockSource) held = std::make_unique<copytest::HeldOpen>(src + L"\\a.txt", 20000);
        const ProgramRun run = Copy(row.properties);
        EXPECT_EQ(run.exitCode, 1u) << row.name << Describe(run);
        EXPECT_LT(run.seconds, 10.0) << row.name;
        EXPECT_EQ(std::count_if(run.out.begin(), run.out.end(), [](const std::wstring& l) { return l.rfind(L"Error processing", 0) == 0; }), 0)
            << row.name;
        // The system text ends in CR LF and keeps its CR; velmora-run's line splitting takes it away.
        std::wstring expected = L"Error copying file '" + dst + L"\\a.txt': " + tol::SystemErrorText(HRESULT_FROM_WIN32(row.error));
        if (expected.back() == L'\r') expected.pop_back();
        EXPECT_NE(std::find(run.out.begin(), run.out.end(), expected), run.out.end()) << row.name << Describe(run);
        held.reset();
        EXPECT_EQ(test::ReadFileBytes(src + L"\\a.txt"), "A") << row.name << ": the source of a failed move is gone";
        ::RemoveDirectoryW((dst + L"\\a.txt").c_str());
    }
}

TEST_F(CopyFilesScripts, StopsInARetryPauseWhenTheTimeLimitIsReached) {
    MakeTree(src, "a.txt=A b.txt=B");
    copytest::HeldOpen held(src + L"\\a.txt", 20000);
    const ProgramRun run = Copy("\"Delay\": 30", L"--timeout 1");
    held.Release();
    EXPECT_EQ(run.exitCode, 2u) << Describe(run);
    EXPECT_LT(run.seconds, 10.0) << "the 30-second pause was waited out";
    EXPECT_NE(std::find(run.out.begin(), run.out.end(), L"== Step 1 stopped"), run.out.end()) << Describe(run);
    EXPECT_NE(std::find(run.out.begin(), run.out.end(), L"0 file(s) copied"), run.out.end()) << Describe(run);
    EXPECT_EQ(TreeText(dst), "");
}

// A stop during a large copy: the platform here never calls the progress routine, so the copy runs to its end and
// the stop is seen before the next file (b.txt, held open so that the run is still busy when the time is up).
// What must hold either way: the step is stopped, and the large file's destination holds nothing or all of it.
TEST_F(CopyFilesScripts, StopsDuringALargeCopyWithoutLeavingATruncatedFile) {
    MakeTree(src, "b.txt=B");
    const std::wstring large = src + L"\\a-large.bin";
    {
        const tol::unique_file file(::CreateFileW(large.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        std::string chunk(1 << 20, '\0');
        for (size_t i = 0; i < chunk.size(); ++i) chunk[i] = static_cast<char>(i * 7 + 3);
        DWORD written = 0;
        for (int i = 0; i < 256; ++i) ASSERT_TRUE(::WriteFile(file.get(), chunk.data(), static_cast<DWORD>(chunk.size()), &written, nullptr));
    }
    copytest::HeldOpen held(src + L"\\b.txt", 20000);
    const ProgramRun run = Copy("\"Restartable\": false, \"Delay\": 30", L"--timeout 1");
    held.Release();
    EXPECT_EQ(run.exitCode, 2u) << Describe(run);
    EXPECT_EQ(std::count_if(run.out.begin(), run.out.end(), [](const std::wstring& l) { return l.rfind(L"Error copying", 0) == 0; }), 0)
        << Describe(run);
    const std::string copy = test::ReadFileBytes(dst + L"\\a-large.bin");
    EXPECT_TRUE(copy == "<missing>" || copy == test::ReadFileBytes(large)) << "a truncated copy of " << copy.size() << " bytes";
    EXPECT_EQ(test::ReadFileBytes(dst + L"\\a-large.bin.velmora-partial"), "<missing>");
    EXPECT_EQ(test::ReadFileBytes(dst + L"\\b.txt"), "<missing>");
}
