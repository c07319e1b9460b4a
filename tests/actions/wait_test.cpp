// Wait: the criteria as the action reads them, and the action component waiting on the real clock, the real
// file system's change notifications and the build's stop event.
#include "actions/wait/elapsed.h"
#include "actions/wait/fields.h"
#include "actions/wait/filewatch.h"
#include "actions/wait/target.h"
#include "frame/com_ptr.h"
#include "frame/component.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

const std::wstring kElapsedPassed = L"Elapsed time has passed";
const std::wstring kFileChanged = L"File has been created or modified";
const std::wstring kInPast = L"Specified date is in the past.";
const std::wstring kBadElapsed = L"Invalid amount of time specified, must be in format HH:MM:SS.";
const std::wstring kBadDateTime =
    L"Invalid date/time specified, must be a valid time (HH:MM) or date/time (MM/DD/YYYY HH:MM).";

std::string Narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

long long Since(Clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start).count();
}

// The Wait component run on a thread of its own, as the host would run it, so that the test can change files
// and set the stop event meanwhile. A run still going at the end is stopped, so that no test hangs.
class RunningWait {
public:
    RunningWait(long waitFor, const std::wstring& criteria) {
        step_.SetText(L"Criteria", criteria);
        VARIANT value;
        V_VT(&value) = VT_I4;
        V_I4(&value) = waitFor;
        step_.Set(L"WaitFor", value);
        thread_ = std::thread([this] { Run(); });
    }
    ~RunningWait() {
        ::SetEvent(build_.stopEvent());
        thread_.join();
    }
    // True when the run has ended within the time.
    bool Finished(long long ms) {
        const Clock::time_point deadline = Clock::now() + milliseconds(ms);
        while (!done_ && Clock::now() < deadline) std::this_thread::sleep_for(milliseconds(10));
        return done_;
    }
    void Stop() { ::SetEvent(build_.stopEvent()); }
    HRESULT hr() const { return hr_; }
    long status() const { return status_; }
    const std::vector<std::wstring>& log() const { return build_.log; }
    std::vector<VARTYPE> requested() const { return step_.requested; }
    // The thread's error information after a failed Execute.
    const std::wstring& description() const { return description_; }

private:
    void Run() {
        tol::com_ptr<IBuildAction> action;
        hr_ = tol::CreateComponent(*tol::FindClass(CLSID_WaitAction), IID_IBuildAction, action.put_void());
        if (SUCCEEDED(hr_)) hr_ = action->Execute(&build_, &step_, &status_);
        if (FAILED(hr_)) description_ = ThreadErrorDescription();
        done_ = true;
    }
    static std::wstring ThreadErrorDescription() {
        tol::com_ptr<IErrorInfo> info;
        if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"<none>";
        tol::bstr text;
        info->GetDescription(text.receive());
        return text.str();
    }

    test::TestBuild build_;
    test::TestStep step_;
    std::wstring description_;
    HRESULT hr_ = E_UNEXPECTED;
    long status_ = 0x5A5A; // garbage: a status that is not written stays so
    std::atomic<bool> done_{false};
    std::thread thread_;
};

// A fresh folder below the temporary folder, emptied and removed afterwards.
class TempFolder {
public:
    TempFolder() {
        std::wstring temp(::GetTempPathW(0, nullptr), L'\0');
        temp.resize(::GetTempPathW(static_cast<DWORD>(temp.size()), temp.data()));
        path_ = temp + L"velmora-wait-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
                std::to_wstring(::GetTickCount64());
        EXPECT_TRUE(::CreateDirectoryW(path_.c_str(), nullptr));
    }
    ~TempFolder() {
        WIN32_FIND_DATAW entry;
        tol::unique_find find(::FindFirstFileW((path_ + L"\\*").c_str(), &entry));
        if (find) {
            do {
                const std::wstring item = path_ + L"\\" + entry.cFileName;
                if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) ::RemoveDirectoryW(item.c_str());
                else ::DeleteFileW(item.c_str());
            } while (::FindNextFileW(find.get(), &entry));
        }
        ::RemoveDirectoryW(path_.c_str());
    }
    std::wstring operator/(const wchar_t* name) const { return path_ + L"\\" + name; }
    const std::wstring& path() const { return path_; }

private:
    std::wstring path_;
};

void WriteText(const std::wstring& path, const char* text, DWORD disposition = CREATE_ALWAYS) {
    tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, disposition, 0, nullptr));
    ASSERT_TRUE(file) << Narrow(path);
    ::SetFilePointer(file.get(), 0, nullptr, FILE_END);
    DWORD written = 0;
    ASSERT_TRUE(::WriteFile(file.get(), text, static_cast<DWORD>(strlen(text)), &written, nullptr));
}

// A whole-second UTC time long past: 1 January 2001, 04:00:00, plus a part of a second or more.
FILETIME PastSecond(long long plusMilliseconds) {
    const unsigned long long ticks = 126227952000000000ull + plusMilliseconds * 10000ull;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

void SetLastWrite(const std::wstring& path, const FILETIME& time) {
    tol::unique_file file(::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                        nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(file) << Narrow(path);
    ASSERT_TRUE(::SetFileTime(file.get(), nullptr, nullptr, &time));
}

std::wstring Format(const wchar_t* pattern, int a, int b, int c = 0, int d = 0, int e = 0) {
    wchar_t text[64];
    std::swprintf(text, 64, pattern, a, b, c, d, e);
    return text;
}

// The local wall-clock time a number of seconds from now (negative: ago).
SYSTEMTIME LocalTimeFromNow(long long seconds) {
    SYSTEMTIME now;
    ::GetLocalTime(&now);
    FILETIME asFileTime;
    ::SystemTimeToFileTime(&now, &asFileTime);
    ULARGE_INTEGER ticks{{asFileTime.dwLowDateTime, asFileTime.dwHighDateTime}};
    ticks.QuadPart += seconds * 10000000ll;
    asFileTime = {ticks.LowPart, ticks.HighPart};
    SYSTEMTIME moved;
    ::FileTimeToSystemTime(&asFileTime, &moved);
    return moved;
}

} // namespace

TEST(WaitCriteria, FieldValueReadsLikeTheCRuntime) {
    const struct {
        const wchar_t* field;
        long value;
    } rows[] = {
        {L"42", 42}, {L"007", 7}, {L"+5", 5}, {L"-5", -5}, {L"\t 9", 9}, {L"12ab", 12}, {L"ab12", 0},
        {L"-", 0}, {L"+-3", 0}, {L"2147483647", LONG_MAX}, {L"2147483648", LONG_MAX}, {L"-2147483648", LONG_MIN},
        {L"-99999999999999999999", LONG_MIN}, {L"99999999999999999999", LONG_MAX},
    };
    for (const auto& row : rows) EXPECT_EQ(tol::FieldValue(row.field), row.value) << Narrow(row.field);
}

TEST(WaitCriteria, ElapsedTimeIsHoursMinutesSecondsWithoutUpperBounds) {
    const struct {
        const wchar_t* criteria;
        std::optional<std::uint64_t> milliseconds;
    } rows[] = {
        {L"0:0:0", 0},
        {L"00:00:30", 30000},
        {L"1:2:3:4", 3723000},  // further fields ignored
        {L"0:90:0", 5400000},   // no upper bounds
        {L"a:b:c", 0},          // three fields worth 0
        {L"::1:::2::3::", 3723000}, // runs of separators are one separator
        {L"+1:0:0", 3600000},
        {L"1193:02:48", 4294968000ull}, // beyond 32 bits of milliseconds
        {L"2147483647:0:0", 2147483647ull * 3600000},
        {L"99999999999:0:0", 2147483647ull * 3600000}, // saturates
        {L"1:30", std::nullopt},
        {L"::5", std::nullopt},
        {L"", std::nullopt},
        {L"1 2 3", std::nullopt}, // only ":" separates
        {L"0:0:-1", std::nullopt},
        {L"-1:90:0", std::nullopt},
        {L"0:-1:3600", std::nullopt},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(tol::ElapsedMilliseconds(row.criteria), row.milliseconds) << Narrow(row.criteria);
    }
}

TEST(WaitCriteria, TimeOrDateGivesTheWaitFromNow) {
    const tol::WallTime at103000{2030, 6, 15, 10, 30, 0};
    const tol::WallTime at103001{2030, 6, 15, 10, 30, 1};
    const tol::WallTime at235959{2030, 12, 31, 23, 59, 59};
    using W = tol::TimeWait;
    const struct {
        const wchar_t* criteria;
        tol::WallTime now;
        W::Outcome outcome;
        std::uint64_t seconds;
    } rows[] = {
        {L"10:30", at103000, W::Wait, 0},
        {L"10:30", at103001, W::Wait, 86399}, // passed: the same time tomorrow
        {L"10:31", at103001, W::Wait, 59},
        {L"9:00", at103001, W::Wait, 80999},
        {L"10 30", at103001, W::Wait, 86399},
        {L"10:31:59:59", at103001, W::Wait, 59}, // third and fourth fields ignored, second 0
        {L"0:00", at235959, W::Wait, 1},         // tomorrow is next year
        {L"12/31/2099 23:59", at103001, W::Wait, 2194694939},
        {L"12-31-2099 23:59", at103001, W::Wait, 2194694939},
        {L"12/31/2099 23:59:30 7", at103001, W::Wait, 2194694939},
        {L"6/15/2030 10:30", at103000, W::Wait, 0},
        {L"2/29/2032 0:00", at103001, W::Wait, 53875799},
        {L"2/29/2400 0:00", at103001, W::Wait, 11666813399},   // every 400th year is a leap year
        {L"12/31/9999 23:59", at103001, W::Wait, 251494550939}, // the last date
        {L"6/15/2030 10:30", at103001, W::InPast, 0},
        {L"6/15/2030 10:29", at103000, W::InPast, 0},
        {L"1/1/100 0:00", at103001, W::InPast, 0},
        {L"", at103001, W::Invalid, 0},
        {L"10", at103001, W::Invalid, 0},
        {L"24:00", at103001, W::Invalid, 0},
        {L"10:60", at103001, W::Invalid, 0},
        {L"-1:00", at103001, W::Wait, 52199},  // "-" separates: no field of this criterion is negative
        {L"10:-1", at103001, W::Wait, 84659},
        {L"2099-12-31 23:59", at103001, W::Invalid, 0}, // month 2099
        {L"2/30/2030 10:00", at103001, W::Invalid, 0},
        {L"2/29/2031 10:00", at103001, W::Invalid, 0},
        {L"2/29/2100 10:00", at103001, W::Invalid, 0}, // a century that is not a leap year
        {L"4/31/2031 10:00", at103001, W::Invalid, 0},
        {L"13/1/2031 10:00", at103001, W::Invalid, 0},
        {L"1/0/2031 10:00", at103001, W::Invalid, 0},
        {L"1/1/10000 10:00", at103001, W::Invalid, 0},
        {L"1/1/-2031 10:00", at103001, W::Wait, 17278199},
    };
    for (const auto& row : rows) {
        const W plan = tol::PlanTimeWait(row.criteria, row.now);
        EXPECT_EQ(plan.outcome, row.outcome) << Narrow(row.criteria);
        if (row.outcome == W::Wait) {
            EXPECT_EQ(plan.milliseconds, row.seconds * 1000) << Narrow(row.criteria);
        }
    }
}

TEST(WaitCriteria, WatchedFolderIsTheFileFolderAndRootsKeepTheirSeparator) {
    const struct {
        const wchar_t* path;
        const wchar_t* folder;
    } rows[] = {
        {L"C:\\build\\out\\done.flag", L"C:\\build\\out"},
        {L"C:/build/out/done.flag", L"C:/build/out"},
        {L"\\\\server\\share\\done.flag", L"\\\\server\\share"},
        {L"C:\\done.flag", L"C:\\"},
        {L"\\\\?\\C:\\done.flag", L"\\\\?\\C:\\"},
        {L"\\done.flag", L"\\"},
        {L"done.flag", L""},
        {L"", L""},
    };
    for (const auto& row : rows) EXPECT_EQ(tol::WatchedFolder(row.path), row.folder) << Narrow(row.path);
}

TEST(WaitAction, CriteriaThatEndAtOnceLogTheirMessage) {
    TempFolder folder;
    const SYSTEMTIME ago = LocalTimeFromNow(-60);
    const std::wstring minuteAgo = Format(L"%d/%d/%d %d:%02d", ago.wMonth, ago.wDay, ago.wYear, ago.wHour, ago.wMinute);
    const std::wstring noSuchFolder = folder / L"missing\\done.flag";
    const struct {
        const char* name;
        long waitFor;
        std::wstring criteria;
        long status;
        std::wstring line;
    } rows[] = {
        {"zero elapsed time", 0, L"0:0:0", tol::StepSucceeded, kElapsedPassed},
        {"letters are zeros", 0, L"a:b:c", tol::StepSucceeded, kElapsedPassed},
        {"two fields", 0, L"1:30", tol::StepFailed, kBadElapsed},
        {"one field", 0, L"::5", tol::StepFailed, kBadElapsed},
        {"negative seconds", 0, L"0:0:-1", tol::StepFailed, kBadElapsed},
        {"hour 25", 1, L"25:00", tol::StepFailed, kBadDateTime},
        {"30 February", 1, L"2/30/2030 10:00", tol::StepFailed, kBadDateTime},
        {"year first", 1, L"2099-12-31 23:59", tol::StepFailed, kBadDateTime},
        {"one field", 1, L"10", tol::StepFailed, kBadDateTime},
        {"a minute ago", 1, minuteAgo, tol::StepFailed, kInPast},
        {"long past", 1, L"1/1/2001 00:00", tol::StepFailed, kInPast},
        {"WaitFor 7 is the time criterion", 7, L"1/1/2001 00:00", tol::StepFailed, kInPast},
        {"WaitFor -1 is the time criterion", -1, L"25:00", tol::StepFailed, kBadDateTime},
        {"no folder part", 2, L"done.flag", tol::StepFailed,
         L"Unable to monitor directory 'done.flag' for changes: " + tol::SystemErrorText(0x80070003)},
        {"missing folder", 2, noSuchFolder, tol::StepFailed,
         L"Unable to monitor directory '" + noSuchFolder + L"' for changes: " + tol::SystemErrorText(0x80070002)},
    };
    for (const auto& row : rows) {
        RunningWait run(row.waitFor, row.criteria);
        ASSERT_TRUE(run.Finished(2000)) << row.name;
        EXPECT_EQ(run.hr(), S_OK) << row.name;
        EXPECT_EQ(run.status(), row.status) << row.name;
        EXPECT_EQ(run.log(), std::vector<std::wstring>{row.line}) << row.name << ": " << Narrow(row.criteria);
        EXPECT_EQ(run.requested(), (std::vector<VARTYPE>{VT_BSTR, VT_I4})) << row.name;
    }
}

// Valid dates before 1 January 100 are outside the date range: the host gets the error, and nothing is logged.
// A date that is not valid at all gets the invalid date/time message instead.
TEST(WaitAction, DatesBeforeTheYear100ReachTheHostAsAnError) {
    for (const wchar_t* criteria : {L"1/2/03 10:00", L"2/29/0 0:00", L"12/31/99 23:59"}) {
        RunningWait run(1, criteria);
        ASSERT_TRUE(run.Finished(2000)) << Narrow(criteria);
        EXPECT_EQ(run.hr(), E_FAIL) << Narrow(criteria);
        EXPECT_EQ(run.description(), L"operation on invalid date") << Narrow(criteria);
        EXPECT_EQ(run.status(), 0x5A5A) << Narrow(criteria);
        EXPECT_TRUE(run.log().empty()) << Narrow(criteria);
    }
    RunningWait invalid(1, L"2/29/1 0:00");
    ASSERT_TRUE(invalid.Finished(2000));
    EXPECT_EQ(invalid.log(), std::vector<std::wstring>{kBadDateTime});
}

TEST(WaitAction, ElapsedTimeWaitsThatLong) {
    const Clock::time_point start = Clock::now();
    RunningWait run(0, L"0:0:1");
    EXPECT_FALSE(run.Finished(800));
    ASSERT_TRUE(run.Finished(1500));
    const long long spent = Since(start);
    EXPECT_GE(spent, 990);
    EXPECT_LT(spent, 1600);
    EXPECT_EQ(run.status(), tol::StepSucceeded);
    EXPECT_EQ(run.log(), std::vector<std::wstring>{kElapsedPassed});
}

// Each kind of wait ends at once when the build is stopped, with no log line. Waits beyond 49.7 days do not
// wrap around: 1193:02:48 would be 704 ms in 32 bits.
TEST(WaitAction, StopRequestEndsEveryKindOfWaitAtOnce) {
    TempFolder folder;
    const SYSTEMTIME ago = LocalTimeFromNow(-60);
    const struct {
        const char* name;
        long waitFor;
        std::wstring criteria;
        long long stopAfter;
    } rows[] = {
        {"elapsed time", 0, L"1:0:0", 300},
        {"elapsed time beyond 32 bits", 0, L"1193:02:48", 1500},
        {"time of day passed a minute ago", 1, Format(L"%d:%02d", ago.wHour, ago.wMinute), 300},
        {"date/time beyond 49.7 days", 1, L"12/31/2099 23:59", 1500},
        {"missing file", 2, folder / L"never.flag", 300},
    };
    for (const auto& row : rows) {
        RunningWait run(row.waitFor, row.criteria);
        EXPECT_FALSE(run.Finished(row.stopAfter)) << row.name;
        const Clock::time_point stopped = Clock::now();
        run.Stop();
        ASSERT_TRUE(run.Finished(1000)) << row.name;
        EXPECT_LT(Since(stopped), 500) << row.name;
        EXPECT_EQ(run.hr(), S_OK) << row.name;
        EXPECT_EQ(run.status(), tol::StepStopped) << row.name;
        EXPECT_TRUE(run.log().empty()) << row.name;
    }
}

TEST(WaitAction, FileCreatedOrWrittenCompletesTheWait) {
    TempFolder folder;
    const std::wstring target = folder / L"done.flag";
    const std::wstring other = folder / L"other.tmp";
    using Change = void (*)(const std::wstring& target, const std::wstring& other);
    const Change none = [](const std::wstring&, const std::wstring&) {};
    // prepare runs before the wait begins; change is the one change in the folder while it waits.
    const struct {
        const char* name;
        Change prepare;
        Change change;
    } rows[] = {
        {"created", none, [](const std::wstring& t, const std::wstring&) { WriteText(t, "built"); }},
        {"another file moved to its name",
         [](const std::wstring&, const std::wstring& o) {
             WriteText(o, "built");
             SetLastWrite(o, PastSecond(0));
         },
         [](const std::wstring& t, const std::wstring& o) { EXPECT_TRUE(::MoveFileW(o.c_str(), t.c_str())); }},
        {"existing file written",
         [](const std::wstring& t, const std::wstring&) {
             WriteText(t, "old");
             SetLastWrite(t, PastSecond(0));
         },
         [](const std::wstring& t, const std::wstring&) { WriteText(t, "more", OPEN_EXISTING); }},
    };
    for (const auto& row : rows) {
        ::DeleteFileW(target.c_str());
        row.prepare(target, other);
        RunningWait run(2, target);
        EXPECT_FALSE(run.Finished(300)) << row.name;
        row.change(target, other);
        ASSERT_TRUE(run.Finished(3000)) << row.name;
        EXPECT_EQ(run.status(), tol::StepSucceeded) << row.name;
        EXPECT_EQ(run.log(), std::vector<std::wstring>{kFileChanged}) << row.name;
    }
}

// The start time is never renewed, and only a later whole second counts. Another file written in the folder
// ("poke") gives the action its notification after each change, since changing only a time notifies nobody.
TEST(WaitAction, ExistingFileCountsOnlyOnceItsTimeMovesPastTheStartSecond) {
    TempFolder folder;
    const std::wstring target = folder / L"done.flag";
    const std::wstring spare = folder / L"spare.tmp";
    const std::wstring poke = folder / L"poke.tmp";
    WriteText(target, "old");
    SetLastWrite(target, PastSecond(0));
    WriteText(spare, "new");
    SetLastWrite(spare, PastSecond(500));
    RunningWait run(2, target);
    EXPECT_FALSE(run.Finished(300));
    const struct {
        const char* name;
        void (*change)(const std::wstring& target, const std::wstring& spare);
        bool completes;
    } steps[] = {
        {"rewritten within the same second",
         [](const std::wstring& t, const std::wstring&) { SetLastWrite(t, PastSecond(900)); }, false},
        {"deleted", [](const std::wstring& t, const std::wstring&) { EXPECT_TRUE(::DeleteFileW(t.c_str())); }, false},
        {"created again within the start second",
         [](const std::wstring& t, const std::wstring& s) { EXPECT_TRUE(::MoveFileW(s.c_str(), t.c_str())); }, false},
        {"written a second later",
         [](const std::wstring& t, const std::wstring&) { SetLastWrite(t, PastSecond(1000)); }, true},
    };
    for (const auto& step : steps) {
        step.change(target, spare);
        WriteText(poke, "x");
        EXPECT_EQ(run.Finished(step.completes ? 3000 : 400), step.completes) << step.name;
    }
    EXPECT_EQ(run.status(), tol::StepSucceeded);
    EXPECT_EQ(run.log(), std::vector<std::wstring>{kFileChanged});
}

TEST(WaitAction, FolderPathNeverCompletes) {
    TempFolder folder;
    const std::wstring watched = folder / L"sub";
    ASSERT_TRUE(::CreateDirectoryW(watched.c_str(), nullptr));
    RunningWait run(2, watched);
    EXPECT_FALSE(run.Finished(300));
    WriteText(folder / L"sibling.tmp", "x");
    const std::wstring inside = watched + L"\\inside.tmp";
    WriteText(inside, "x");
    EXPECT_FALSE(run.Finished(500));
    run.Stop();
    ASSERT_TRUE(run.Finished(1000));
    EXPECT_EQ(run.status(), tol::StepStopped);
    EXPECT_TRUE(run.log().empty());
    ::DeleteFileW(inside.c_str());
}

// "C:" alone would name the drive's current folder; the file in the root must be watched in the root.
TEST(WaitAction, FileInADriveRootIsWatchedInTheRoot) {
    std::wstring previous(::GetCurrentDirectoryW(0, nullptr), L'\0');
    previous.resize(::GetCurrentDirectoryW(static_cast<DWORD>(previous.size()), previous.data()));
    ASSERT_TRUE(::SetCurrentDirectoryW(L"C:\\windows"));
    const std::wstring target = L"C:\\velmora-wait-" + std::to_wstring(::GetCurrentProcessId()) + L".flag";
    {
        RunningWait run(2, target);
        EXPECT_FALSE(run.Finished(300));
        WriteText(target, "built");
        EXPECT_TRUE(run.Finished(3000));
        EXPECT_EQ(run.status(), tol::StepSucceeded);
        EXPECT_EQ(run.log(), std::vector<std::wstring>{kFileChanged});
    }
    ::DeleteFileW(target.c_str());
    ::SetCurrentDirectoryW(previous.c_str());
}
