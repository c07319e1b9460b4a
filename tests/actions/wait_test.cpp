// Wait: the criteria as the action reads them, and the action component waiting on the real clock, the real
// file system's change notifications and the build's stop event.
#include "actions/wait/elapsed.h"
#include "actions/wait/filewatch.h"
#include "actions/wait/target.h"
#include "fileutil/scratch.h"
#include "frame/component.h"
#include "frame/messages.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <atomic>
#include <thread>

namespace {

using Log = std::vector<std::wstring>;

const std::wstring kElapsedPassed = L"Elapsed time has passed";
const std::wstring kFileChanged = L"File has been created or modified";
const std::wstring kBadElapsed = L"Invalid amount of time specified, must be in format HH:MM:SS.";
const std::wstring kBadDateTime =
    L"Invalid date/time specified, must be a valid time (HH:MM) or date/time (MM/DD/YYYY HH:MM).";

// The Wait component run on a thread of its own, as the host would run it, so that the test can change files
// and set the stop event meanwhile. A run still going at the end is stopped, so that no test hangs.
// hr and status are the run's results once Finished has returned true.
class RunningWait {
public:
    RunningWait(long waitFor, const std::wstring& criteria) {
        step_.SetText(L"WaitFor", std::to_wstring(waitFor));
        step_.SetText(L"Criteria", criteria);
        thread_ = std::thread([this] { Run(); });
    }
    ~RunningWait() {
        Stop();
        thread_.join();
    }
    // True when the run has ended within the time.
    bool Finished(ULONGLONG ms) {
        const ULONGLONG deadline = ::GetTickCount64() + ms;
        while (!done_ && ::GetTickCount64() < deadline) ::Sleep(10);
        return done_;
    }
    void Stop() { ::SetEvent(build_.stopEvent()); }
    const Log& log() const { return build_.log; }
    // Checks that the run ends within the time with the status and the log line (none when empty).
    void ExpectEnd(ULONGLONG ms, long wantedStatus, const std::wstring& line, const char* name) {
        ASSERT_TRUE(Finished(ms)) << name;
        EXPECT_EQ(hr, S_OK) << name;
        EXPECT_EQ(status, wantedStatus) << name;
        EXPECT_EQ(log(), line.empty() ? Log{} : Log{line}) << name;
    }

    HRESULT hr = E_UNEXPECTED;
    long status = 0x5A5A; // garbage: a status that is not written stays so

private:
    void Run() {
        tol::com_ptr<IBuildAction> action;
        hr = tol::CreateComponent(*tol::FindClass(CLSID_WaitAction), IID_IBuildAction, action.put_void());
        if (SUCCEEDED(hr)) hr = action->Execute(&build_, &step_, &status);
        done_ = true;
    }

    test::TestBuild build_;
    test::TestStep step_;
    std::atomic<bool> done_{false};
    std::thread thread_;
};

// Sets the last-write time to 1 January 2001, 04:00:00 UTC (a whole second long past) plus the milliseconds.
void SetLastWrite(const std::wstring& path, long long plusMilliseconds) {
    const unsigned long long ticks = 126227952000000000ull + plusMilliseconds * 10000ull;
    const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    tol::unique_file file(::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(file && ::SetFileTime(file.get(), nullptr, nullptr, &time));
}

} // namespace

// What the action cannot show without waiting it out: the spans, in whole seconds from now and 64 bits wide, and
// the watched folder of a file in a root, which keeps its separator ("C:" alone names the drive's current folder).
TEST(WaitCriteria, SpansAndWatchedFolder) {
    EXPECT_EQ(tol::ElapsedMilliseconds(L"1193:02:48"), 4294968000ull);
    EXPECT_EQ(tol::PlanTimeWait(L"12-31-2099 23:59", {2030, 6, 15, 10, 30, 1}).milliseconds, 2194694939000ull);
    EXPECT_EQ(tol::PlanTimeWait(L"0:00", {2030, 12, 31, 23, 59, 59}).milliseconds, 1000ull); // tomorrow is next year
    EXPECT_EQ(tol::WatchedFolder(L"C:\\done.flag"), L"C:\\");
    EXPECT_EQ(tol::WatchedFolder(L"\\done.flag"), L"\\");
}

TEST(WaitAction, CriteriaThatEndAtOnceLogTheirMessage) {
    const struct {
        const char* name;
        long waitFor;
        std::wstring criteria;
        long status;
        std::wstring line;
    } rows[] = {
        {"zero time: letters read as 0, a fourth field ignored", 0, L"0:a:0:5", tol::StepSucceeded, kElapsedPassed},
        {"two fields: a run of ':' is one separator", 0, L"1::30", tol::StepFailed, kBadElapsed},
        {"negative seconds", 0, L"0:0:-1", tol::StepFailed, kBadElapsed},
        {"one field", 1, L"10", tol::StepFailed, kBadDateTime},
        {"hour 24", 1, L"24:00", tol::StepFailed, kBadDateTime},
        {"minute 60", 1, L"10:60", tol::StepFailed, kBadDateTime},
        {"29 February of a century", 1, L"2/29/2100 10:00", tol::StepFailed, kBadDateTime},
        {"month 13", 1, L"13/1/2031 10:00", tol::StepFailed, kBadDateTime},
        {"year 10000", 1, L"1/1/10000 10:00", tol::StepFailed, kBadDateTime},
        {"invalid before the year 100", 1, L"2/29/1 0:00", tol::StepFailed, kBadDateTime},
        {"WaitFor 7 reads as 1: past date", 7, L"1/1/2001 00:00", tol::StepFailed, L"Specified date is in the past."},
        {"no folder part", 2, L"done.flag", tol::StepFailed,
         L"Unable to monitor directory 'done.flag' for changes: " + tol::SystemErrorText(0x80070003)},
    };
    for (const auto& row : rows) {
        RunningWait run(row.waitFor, row.criteria);
        run.ExpectEnd(2000, row.status, row.line, row.name);
    }
    // A valid date before the year 100 is outside the date range: the host gets the error (its text reaching the
    // host is the frame's concern), and nothing is logged.
    RunningWait early(1, L"12/31/99 23:59");
    ASSERT_TRUE(early.Finished(2000));
    EXPECT_EQ(early.hr, E_FAIL);
    EXPECT_EQ(early.status, 0x5A5A);
    EXPECT_TRUE(early.log().empty());
}

TEST(WaitAction, ElapsedTimeWaitsThatLong) {
    RunningWait run(0, L"0:0:1");
    EXPECT_FALSE(run.Finished(970));
    run.ExpectEnd(600, tol::StepSucceeded, kElapsedPassed, "one second");
}

// Each kind of wait ends at once when the build is stopped, logging nothing, and not before: spans beyond 32 bits
// of milliseconds do not wrap (1193:02:48 would be 704 ms), hours beyond the 32-bit range saturate rather than
// wrap to 0, and changes to other files, or inside a watched folder, complete no file wait.
TEST(WaitAction, StopRequestEndsEveryKindOfWaitAtOnce) {
    test::ScratchFolder folder;
    test::MakeFolder(folder / L"sub");
    const struct {
        const char* name;
        long waitFor;
        std::wstring criteria;
    } rows[] = {
        {"elapsed time beyond 32 bits", 0, L"1193:02:48"},
        {"hours beyond 32 bits", 0, L"4294967296:0:0"},
        {"time of day passed today: tomorrow", 1, L"0:00"},
        {"leap day beyond 49.7 days", 1, L"2/29/2400 0:00"},
        {"missing file", 2, folder / L"never.flag"},
        {"folder", 2, folder / L"sub"},
    };
    for (const auto& row : rows) {
        RunningWait run(row.waitFor, row.criteria);
        EXPECT_FALSE(run.Finished(300)) << row.name;
        test::WriteFileBytes(folder / L"sibling.tmp", "x");
        test::WriteFileBytes(folder / L"sub\\inside.tmp", "x");
        EXPECT_FALSE(run.Finished(700)) << row.name;
        run.Stop();
        run.ExpectEnd(500, tol::StepStopped, L"", row.name);
    }
}

// A missing file completes the wait when created; an existing one once it is written in a later second than at the
// start, not within it. Changing only a time notifies nobody: writing another file then gives the notification.
TEST(WaitAction, FileWaitEndsOnCreationOrAWriteInALaterSecond) {
    test::ScratchFolder folder;
    const std::wstring target = folder / L"done.flag";
    RunningWait created(2, target);
    EXPECT_FALSE(created.Finished(300));
    test::WriteFileBytes(target, "built");
    created.ExpectEnd(3000, tol::StepSucceeded, kFileChanged, "created");
    SetLastWrite(target, 0);
    RunningWait written(2, target);
    EXPECT_FALSE(written.Finished(300));
    SetLastWrite(target, 900);
    test::WriteFileBytes(folder / L"other.tmp", "x");
    EXPECT_FALSE(written.Finished(400)) << "a time within the start second";
    test::WriteFileBytes(target, "more");
    written.ExpectEnd(3000, tol::StepSucceeded, kFileChanged, "written");
}
