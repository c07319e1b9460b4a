// The retry rule and the stop: the rule's decisions one level down (the error codes set as a failing call
// leaves them), CopyProgress called as the platform calls it, and real faults made by another process.
#include "support.h"
#include "actions/copyfiles/progress.h"
#include "actions/copyfiles/retry.h"
#include "fileutil/scratch.h"
#include <gtest/gtest.h>
#include <optional>

namespace {

using copytest::LinesStarting;
using copytest::TreeText;

const std::wstring kPausing = L"Error processing '";
const std::wstring kCopyFailed = L"Error copying file '";

// A run of the rule with a negative Delay (no pause) unless given.
struct RuleRun {
    RuleRun(long retries, bool tbd, bool restartable = true, long delay = -15)
        : run(&build, [&] {
              tol::CopySettings settings{L"C:\\src\\", L"C:\\dst\\", tol::FileMaskFilter(L"", L"", true)};
              settings.retries = retries;
              settings.delay = delay;
              settings.tbd = tbd;
              settings.restartable = restartable;
              return settings;
          }()) {}
    test::TestBuild build;
    tol::CopyFilesRun run;
    const std::wstring path = L"C:\\dst\\a.txt";
    tol::RetryState state{63, path, run};
};

// A step from scratch\src to scratch\dst run through the component.
long RunStep(test::TestBuild& build, const test::ScratchFolder& scratch, std::wstring_view options) {
    test::TestStep step;
    copytest::SetCopyStep(step, scratch / L"src", scratch / L"dst", options);
    return copytest::ExecuteCopyFiles(&build, step).status;
}

} // namespace

TEST(CopyFilesRetry, RetriesPassingErrorsUpToTheAttemptsAllowedAndFailsOthersAtOnce) {
    const struct {
        DWORD code;  // every attempt fails with it
        long retries;
        bool tbd;
        long attempts;  // made before the outcome
        tol::RetryOutcome outcome;
    } rows[] = {
        {ERROR_SHARING_VIOLATION, 3, false, 3, tol::OutcomeFailed},
        {ERROR_BAD_NET_NAME, 3, true, 3, tol::OutcomeFailed},
        {ERROR_BAD_NET_NAME, 3, false, 1, tol::OutcomeFailed},
        {ERROR_ACCESS_DENIED, 10, true, 1, tol::OutcomeFailed},
        {ERROR_SHARING_VIOLATION, 0, true, 1, tol::OutcomeFailed},
        {ERROR_REQUEST_ABORTED, 10, true, 1, tol::OutcomeStopped},
    };
    for (const auto& row : rows) {
        RuleRun rule(row.retries, row.tbd);
        long attempts = 0;
        tol::RetryOutcome outcome = tol::OutcomeRetry;
        while (outcome == tol::OutcomeRetry && attempts < 100) {
            ++attempts;
            ::SetLastError(row.code);
            outcome = tol::ResolveFailure(rule.state, false);
        }
        const std::string name = "code " + std::to_string(row.code) + ", Retries " + std::to_string(row.retries);
        EXPECT_EQ(attempts, row.attempts) << name;
        EXPECT_EQ(outcome, row.outcome) << name;
        const std::wstring text = test::ErrorText(row.code);
        std::vector<std::wstring> expected(row.attempts - 1, L"Error processing 'C:\\dst\\a.txt': " + text +
                                                                 L", pausing 0 seconds before retry...");
        if (row.outcome == tol::OutcomeFailed) expected.push_back(L"Error copying file 'C:\\dst\\a.txt': " + text);
        EXPECT_EQ(rule.build.log, expected) << name;
    }
}

TEST(CopyFilesProgress, ContinuesUntilStoppedThenStopsRestartableCopiesAndCancelsOthers) {
    for (const bool restartable : {true, false}) {
        RuleRun rule(10, true, restartable);
        LARGE_INTEGER total{}, done{};
        total.QuadPart = 1 << 30;
        done.QuadPart = 1 << 20;
        for (const DWORD answer : {DWORD{PROGRESS_CONTINUE}, restartable ? DWORD{PROGRESS_STOP} : DWORD{PROGRESS_CANCEL}}) {
            for (int i = 0; i < 200 && answer != PROGRESS_CONTINUE && !rule.run.stop.IsStopped(); ++i) ::Sleep(10);
            EXPECT_EQ(tol::CopyProgress(total, done, total, done, 1, CALLBACK_CHUNK_FINISHED, INVALID_HANDLE_VALUE,
                                        INVALID_HANDLE_VALUE, &rule.run),
                      answer)
                << "restartable " << restartable;
            ::SetEvent(rule.build.stopEvent());
        }
    }
}

// Real faults: a file that another process holds open without sharing, a folder where a file goes.
TEST(CopyFilesFaults, RetriesALockedSourceAndCopiesItOnceReleased) {
    test::ScratchFolder scratch;
    copytest::MakeTree(scratch.path(), "src\\a.txt=A src\\b.txt=B");
    copytest::HeldOpen held(scratch / L"src\\a.txt", 1500);
    test::TestBuild build;
    EXPECT_EQ(RunStep(build, scratch, L"Delay=1"), 0) << copytest::Joined(build.log);
    EXPECT_EQ(held.Release(), 0u);
    const std::vector<std::wstring> pauses = LinesStarting(build.log, kPausing);
    ASSERT_GE(pauses.size(), 1u);
    EXPECT_EQ(pauses[0], L"Error processing '" + scratch / L"dst\\a.txt" + L"': " + test::ErrorText(ERROR_SHARING_VIOLATION) +
                             L", pausing 1 seconds before retry...");
    EXPECT_EQ(TreeText(scratch / L"dst"), "a.txt=A b.txt=B");
    EXPECT_EQ(build.log.back(), L"2 file(s) copied");
}

// The step fails with message 63 after the attempts allowed, and every file stays as it was.
TEST(CopyFilesFaults, GivesUpAndLeavesBothTreesAsTheyWere) {
    const struct {
        const char* tree;
        const wchar_t* locked;  // held open by another process; null: none
        const wchar_t* options;
        size_t pauses;
        DWORD error;
    } rows[] = {
        {"src\\a.txt=A dst\\", L"src\\a.txt", L"Retries=1 Move", 0, ERROR_SHARING_VIOLATION},
        {"src\\a.txt=A dst\\a.txt=old", L"dst\\a.txt", L"Retries=2 Delay=1 -Incremental", 1, ERROR_SHARING_VIOLATION},
        {"src\\a.txt=A dst\\a.txt=old", L"dst\\a.txt", L"Retries=2 Delay=1 -Incremental -Restartable Move", 1,
         ERROR_SHARING_VIOLATION},
        {"src\\a.txt=A src\\b.txt=B dst\\a.txt\\", nullptr, L"Move", 0, ERROR_ACCESS_DENIED},
        {"src\\a.txt=A src\\b.txt=B dst\\a.txt\\", nullptr, L"-Restartable Move", 0, ERROR_ACCESS_DENIED},
        {"src\\a.txt=new dst\\a.txt=old dst\\a.txt.velmora-partial\\", nullptr, L"-Restartable -Incremental Move", 0,
         ERROR_ACCESS_DENIED},
    };
    for (const auto& row : rows) {
        test::ScratchFolder scratch;
        copytest::MakeTree(scratch.path(), row.tree);
        const std::string before = TreeText(scratch.path());
        std::optional<copytest::HeldOpen> held;
        if (row.locked) held.emplace(scratch / row.locked, 8000);
        test::TestBuild build;
        const ULONGLONG start = ::GetTickCount64();
        EXPECT_EQ(RunStep(build, scratch, row.options), 1) << row.tree;
        EXPECT_LT(::GetTickCount64() - start, 10000u) << row.tree << ": a pause was waited out";
        EXPECT_EQ(LinesStarting(build.log, kPausing).size(), row.pauses) << row.tree << "\n" << copytest::Joined(build.log);
        EXPECT_EQ(LinesStarting(build.log, kCopyFailed),
                  std::vector<std::wstring>{kCopyFailed + scratch / L"dst\\a.txt" + L"': " + test::ErrorText(row.error)})
            << row.tree;
        held.reset();
        EXPECT_EQ(TreeText(scratch.path()), before) << row.tree;
    }
}
