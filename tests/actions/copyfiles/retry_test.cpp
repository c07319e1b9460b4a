// The retry rule and the stop: the rule's decisions one level down (the error codes set as a failing call
// leaves them), CopyProgress called as the platform calls it, and real faults made by another process.
#include "support.h"
#include "actions/copyfiles/copyone.h"
#include "actions/copyfiles/progress.h"
#include "actions/copyfiles/retry.h"
#include "fileutil/scratch.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <thread>

namespace {

using copytest::ExecuteCopyFiles;
using copytest::Joined;
using copytest::LinesStarting;
using copytest::MakeTree;
using copytest::SetCopyStep;
using copytest::TreeText;

const std::wstring kPausing = L"Error processing '";
const std::wstring kCopyFailed = L"Error copying file '";

tol::CopySettings Settings(long retries, long delay, bool tbd, bool restartable = true) {
    tol::CopySettings settings{L"C:\\src\\", L"C:\\dst\\", tol::FileMaskFilter(L"", L"", true)};
    settings.retries = retries;
    settings.delay = delay;
    settings.tbd = tbd;
    settings.restartable = restartable;
    return settings;
}

// Waits until the run's stop watch has seen the build's event.
bool SeesStop(const tol::CopyFilesRun& run) {
    for (int i = 0; i < 200 && !run.stop.IsStopped(); ++i) ::Sleep(10);
    return run.stop.IsStopped();
}

ULONGLONG Elapsed(ULONGLONG since) { return ::GetTickCount64() - since; }

} // namespace

TEST(CopyFilesRetry, RetriesPassingErrorsUpToTheAttemptsAllowedAndFailsOthersAtOnce) {
    struct Row {
        const char* name;
        DWORD code;  // every attempt fails with it
        long retries;
        bool tbd;
        long attempts;  // made before the outcome
        tol::RetryOutcome outcome;
        size_t pauses;  // lines of message 38
        bool failureLine;
    } rows[] = {
        {"sharing violation", ERROR_SHARING_VIOLATION, 3, false, 3, tol::OutcomeFailed, 2, true},
        {"path not found", ERROR_PATH_NOT_FOUND, 10, false, 10, tol::OutcomeFailed, 9, true},
        {"network busy", ERROR_NETWORK_BUSY, 2, false, 2, tol::OutcomeFailed, 1, true},
        {"share not yet defined, TBD", ERROR_BAD_NET_NAME, 3, true, 3, tol::OutcomeFailed, 2, true},
        {"share not yet defined, no TBD", ERROR_BAD_NET_NAME, 3, false, 1, tol::OutcomeFailed, 0, true},
        {"network path not found, TBD", ERROR_BAD_NETPATH, 2, true, 2, tol::OutcomeFailed, 1, true},
        {"access denied", ERROR_ACCESS_DENIED, 10, true, 1, tol::OutcomeFailed, 0, true},
        {"file not found", ERROR_FILE_NOT_FOUND, 10, true, 1, tol::OutcomeFailed, 0, true},
        {"Retries 1", ERROR_SHARING_VIOLATION, 1, true, 1, tol::OutcomeFailed, 0, true},
        {"Retries 0", ERROR_SHARING_VIOLATION, 0, true, 1, tol::OutcomeFailed, 0, true},
        {"negative Retries", ERROR_SHARING_VIOLATION, -5, true, 1, tol::OutcomeFailed, 0, true},
        {"copy interrupted by a stop", ERROR_REQUEST_ABORTED, 10, true, 1, tol::OutcomeStopped, 0, false},
    };
    for (const Row& row : rows) {
        test::TestBuild build;
        tol::CopyFilesRun run(&build, Settings(row.retries, -15, row.tbd));  // a negative Delay: no pause
        const std::wstring path = L"C:\\dst\\a.txt";
        tol::RetryState state{63, path, run};
        long attempts = 0;
        tol::RetryOutcome outcome = tol::OutcomeRetry;
        while (outcome == tol::OutcomeRetry && attempts < 100) {
            ++attempts;
            ::SetLastError(row.code);
            outcome = tol::ResolveFailure(state, false);
        }
        EXPECT_EQ(attempts, row.attempts) << row.name;
        EXPECT_EQ(outcome, row.outcome) << row.name;
        EXPECT_EQ(state.failures, row.attempts) << row.name;
        const std::wstring text = test::ErrorText(row.code);
        const std::vector<std::wstring> pauses = LinesStarting(build.log, kPausing);
        ASSERT_EQ(pauses.size(), row.pauses) << row.name << "\n" << Joined(build.log);
        for (const std::wstring& line : pauses)
            EXPECT_EQ(line, L"Error processing 'C:\\dst\\a.txt': " + text + L", pausing 0 seconds before retry...") << row.name;
        const std::vector<std::wstring> last(build.log.end() - (row.failureLine ? 1 : 0), build.log.end());
        EXPECT_EQ(build.log.size(), row.pauses + last.size()) << row.name;
        if (row.failureLine) {
            EXPECT_EQ(last[0], L"Error copying file 'C:\\dst\\a.txt': " + text) << row.name;
        }
    }
}

TEST(CopyFilesRetry, EndsThePauseAtOnceWhenTheBuildIsStopped) {
    test::TestBuild build;
    tol::CopyFilesRun run(&build, Settings(10, 60, true));
    const std::wstring path = L"C:\\dst\\a.txt";
    tol::RetryState state{63, path, run};
    std::thread stopper([&build] {
        ::Sleep(300);
        ::SetEvent(build.stopEvent());
    });
    const ULONGLONG start = ::GetTickCount64();
    ::SetLastError(ERROR_SHARING_VIOLATION);
    const tol::RetryOutcome outcome = tol::ResolveFailure(state, false);
    stopper.join();
    EXPECT_EQ(outcome, tol::OutcomeStopped);
    EXPECT_LT(Elapsed(start), 10000u) << "the 60-second pause was waited out";
    EXPECT_TRUE(run.stop.IsStopped()) << "the stop seen in the pause is latched";
    EXPECT_EQ(LinesStarting(build.log, kCopyFailed).size(), 0u);
}

TEST(CopyFilesProgress, ContinuesUntilStoppedThenStopsRestartableCopiesAndCancelsOthers) {
    const struct {
        bool restartable;
        bool stopped;
        DWORD answer;
    } rows[] = {
        {true, false, PROGRESS_CONTINUE},
        {false, false, PROGRESS_CONTINUE},
        {true, true, PROGRESS_STOP},
        {false, true, PROGRESS_CANCEL},
    };
    for (const auto& row : rows) {
        test::TestBuild build;
        tol::CopyFilesRun run(&build, Settings(10, 15, true, row.restartable));
        if (row.stopped) {
            ::SetEvent(build.stopEvent());
            ASSERT_TRUE(SeesStop(run));
            ::ResetEvent(build.stopEvent());  // latched all the same
        }
        LARGE_INTEGER total, done, zero{};
        total.QuadPart = 1 << 30;
        done.QuadPart = 1 << 20;
        for (const DWORD reason : {CALLBACK_STREAM_SWITCH, CALLBACK_CHUNK_FINISHED})
            EXPECT_EQ(tol::CopyProgress(total, reason == CALLBACK_STREAM_SWITCH ? zero : done, total, done, 1, reason,
                                        INVALID_HANDLE_VALUE, INVALID_HANDLE_VALUE, &run),
                      row.answer)
                << "restartable " << row.restartable << ", stopped " << row.stopped << ", reason " << reason;
    }
}

// Real faults: a file that another process holds open without sharing.
TEST(CopyFilesFaults, RetriesALockedSourceAndCopiesItOnceReleased) {
    test::ScratchFolder scratch;
    MakeTree(scratch.path(), "src\\a.txt=A src\\b.txt=B");
    copytest::HeldOpen held(scratch / L"src\\a.txt", 1500);
    test::TestBuild build;
    test::TestStep step;
    SetCopyStep(step, scratch / L"src", scratch / L"dst", L"Retries=10 Delay=1");
    const copytest::Execution result = ExecuteCopyFiles(&build, step);
    EXPECT_EQ(held.Release(), 0u);
    EXPECT_EQ(result.status, 0) << Joined(build.log);
    const std::vector<std::wstring> pauses = LinesStarting(build.log, kPausing);
    ASSERT_GE(pauses.size(), 1u);
    EXPECT_EQ(pauses[0], L"Error processing '" + scratch / L"dst\\a.txt" + L"': " + test::ErrorText(ERROR_SHARING_VIOLATION) +
                             L", pausing 1 seconds before retry...");
    EXPECT_EQ(TreeText(scratch / L"dst"), "a.txt=A b.txt=B");
    EXPECT_EQ(build.log.back(), L"2 file(s) copied");
}

TEST(CopyFilesFaults, GivesUpOnALockedFileAfterTheAttemptsAllowed) {
    struct Row {
        const char* name;
        const wchar_t* locked;  // below the scratch folder
        const wchar_t* options;
        size_t pauses;
        const char* destAfter;
        const char* sourceAfter;
    } rows[] = {
        {"source, three attempts", L"src\\a.txt", L"Retries=3 Delay=1", 2, "", "a.txt=A"},
        {"source, Retries 1: at once", L"src\\a.txt", L"Retries=1", 0, "", "a.txt=A"},
        {"source of a move: it stays", L"src\\a.txt", L"Retries=1 Move", 0, "", "a.txt=A"},
        {"destination, restartable copy", L"dst\\a.txt", L"Retries=2 Delay=1 -Incremental", 1, "a.txt=old", "a.txt=A"},
        {"destination, copy through a temporary name", L"dst\\a.txt", L"Retries=2 Delay=1 -Incremental -Restartable Move", 1,
         "a.txt=old", "a.txt=A"},
    };
    for (const Row& row : rows) {
        test::ScratchFolder scratch;
        MakeTree(scratch.path(), "src\\a.txt=A dst\\a.txt=old");
        if (std::wstring(row.locked).find(L"dst") == std::wstring::npos) ::DeleteFileW((scratch / L"dst\\a.txt").c_str());
        copytest::HeldOpen held(scratch / row.locked, 8000);
        test::TestBuild build;
        test::TestStep step;
        SetCopyStep(step, scratch / L"src", scratch / L"dst", row.options);
        const copytest::Execution result = ExecuteCopyFiles(&build, step);
        EXPECT_EQ(result.status, 1) << row.name;
        EXPECT_EQ(LinesStarting(build.log, kPausing).size(), row.pauses) << row.name << "\n" << Joined(build.log);
        const std::vector<std::wstring> failed = LinesStarting(build.log, kCopyFailed);
        ASSERT_EQ(failed.size(), 1u) << row.name;
        EXPECT_EQ(failed[0], L"Error copying file '" + scratch / L"dst\\a.txt" + L"': " + test::ErrorText(ERROR_SHARING_VIOLATION))
            << row.name;
        EXPECT_EQ(build.log.back(), L"0 file(s) " + std::wstring(std::wstring(row.options).find(L"Move") != std::wstring::npos ? L"moved" : L"copied"))
            << row.name;
        held.Release();
        EXPECT_EQ(TreeText(scratch / L"dst"), row.destAfter) << row.name << ": the destination was changed";
        EXPECT_EQ(TreeText(scratch / L"src"), row.sourceAfter) << row.name;
    }
}

TEST(CopyFilesFaults, KeepsTheDestinationWhenACopyWithoutRestartableFails) {
    test::ScratchFolder scratch;
    // The temporary name that a copy without Restartable writes to is taken by a folder: that copy fails.
    MakeTree(scratch.path(), "src\\a.txt=new dst\\a.txt=old dst\\a.txt.velmora-partial\\");
    test::TestBuild build;
    test::TestStep step;
    SetCopyStep(step, scratch / L"src", scratch / L"dst", L"-Restartable -Incremental Move");
    const copytest::Execution result = ExecuteCopyFiles(&build, step);
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(LinesStarting(build.log, kCopyFailed),
              std::vector<std::wstring>{L"Error copying file '" + scratch / L"dst\\a.txt" + L"': " + test::ErrorText(ERROR_ACCESS_DENIED)});
    EXPECT_EQ(TreeText(scratch.path()), "dst\\ dst\\a.txt=old dst\\a.txt.velmora-partial\\ src\\ src\\a.txt=new");
}

TEST(CopyFilesFaults, FailsAtOnceWhenAccessIsDenied) {
    test::ScratchFolder scratch;
    MakeTree(scratch.path(), "src\\a.txt=A src\\b.txt=B dst\\a.txt\\");  // the destination's name is a folder's
    for (const wchar_t* options : {L"Retries=10 Delay=15", L"Retries=10 Delay=15 -Restartable"}) {
        test::TestBuild build;
        test::TestStep step;
        SetCopyStep(step, scratch / L"src", scratch / L"dst", std::wstring(options) + L" Move");
        const ULONGLONG start = ::GetTickCount64();
        const copytest::Execution result = ExecuteCopyFiles(&build, step);
        EXPECT_EQ(result.status, 1) << options;
        EXPECT_LT(Elapsed(start), 10000u) << options << ": a pause was waited";
        EXPECT_EQ(LinesStarting(build.log, kPausing).size(), 0u) << options;
        EXPECT_EQ(LinesStarting(build.log, kCopyFailed),
                  std::vector<std::wstring>{L"Error copying file '" + scratch / L"dst\\a.txt" + L"': " +
                                            test::ErrorText(ERROR_ACCESS_DENIED)})
            << options;
        EXPECT_EQ(TreeText(scratch.path()), "dst\\ dst\\a.txt\\ src\\ src\\a.txt=A src\\b.txt=B") << options;
    }
}

TEST(CopyFilesStop, EndsTheStepInARetryPauseWithoutWaitingOutTheDelay) {
    test::ScratchFolder scratch;
    MakeTree(scratch.path(), "src\\a.txt=A src\\b.txt=B");
    copytest::HeldOpen held(scratch / L"src\\a.txt", 8000);
    copytest::StoppingBuild build(kPausing);
    test::TestStep step;
    SetCopyStep(step, scratch / L"src", scratch / L"dst", L"Retries=10 Delay=30");
    const ULONGLONG start = ::GetTickCount64();
    const copytest::Execution result = ExecuteCopyFiles(&build, step);
    EXPECT_LT(Elapsed(start), 10000u);
    EXPECT_EQ(result.hr, S_OK);
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(LinesStarting(build.log, kCopyFailed).size(), 0u) << "a stop logs no error";
    EXPECT_EQ(build.log.back(), L"0 file(s) copied");
    held.Release();
    EXPECT_EQ(TreeText(scratch / L"dst"), "");
}

TEST(CopyFilesStop, StopsBetweenFilesAndEntriesAndStillSumsUp) {
    struct Row {
        const char* name;
        const wchar_t* stopAt;
        const wchar_t* options;
        const char* destBefore;
        const char* destAfter;  // the start of the tree: which extra file goes first is the platform's order
        const wchar_t* summary;
    } rows[] = {
        {"after the line of the second file", L"        New File:     b.txt", L"Recurse", "", "a.txt=A b.txt=B",
         L"2 file(s) copied"},
        {"after a folder's line", L"      New Folder:     sub\\", L"Recurse", "", "a.txt=A b.txt=B c.txt=C sub\\ sub\\d.txt=D",
         L"4 file(s) copied"},
        {"while purging: the folder is not removed", L"    *EXTRA File:      ", L"Recurse Purge", "x\\1.tmp=1 x\\2.tmp=2",
         "a.txt=A b.txt=B c.txt=C sub\\ sub\\d.txt=D sub\\e.txt=E x\\ x\\", L"5 file(s) copied, 1 file(s) deleted"},
    };
    for (const Row& row : rows) {
        test::ScratchFolder scratch;
        MakeTree(scratch.path(), "src\\a.txt=A src\\b.txt=B src\\c.txt=C src\\sub\\d.txt=D src\\sub\\e.txt=E dst\\");
        MakeTree(scratch / L"dst", row.destBefore);
        copytest::StoppingBuild build(row.stopAt);
        test::TestStep step;
        SetCopyStep(step, scratch / L"src", scratch / L"dst", row.options);
        const copytest::Execution result = ExecuteCopyFiles(&build, step);
        EXPECT_EQ(result.status, 2) << row.name << "\n" << Joined(build.log);
        EXPECT_EQ(build.log.back(), row.summary) << row.name;
        EXPECT_EQ(LinesStarting(build.log, L"  *EXTRA Folder:").size(), 0u) << row.name;
        const std::string after = TreeText(scratch / L"dst");
        EXPECT_EQ(after.substr(0, std::string(row.destAfter).size()), row.destAfter) << row.name << ": " << after;
        EXPECT_EQ(std::count(after.begin(), after.end(), '='), std::count(row.destAfter, row.destAfter + std::strlen(row.destAfter), '=') + (*row.destBefore ? 1 : 0)) << row.name << ": " << after;
    }
}
