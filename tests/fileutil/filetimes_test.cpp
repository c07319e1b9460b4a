#include "fileutil/filetimes.h"
#include "frame/handles.h"
#include "scratch.h"
#include <gtest/gtest.h>
#include <cstring>

using namespace tol;

namespace {

constexpr long long kTicksPerSecond = 10000000;
constexpr FILETIME kGarbage = {0xCDCDCDCD, 0xCDCDCDCD};

unsigned long long Ticks(const FILETIME& time) {
    return (static_cast<unsigned long long>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

FILETIME FromTicks(unsigned long long ticks) {
    return FILETIME{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// 15 June 2023, 12:00:00 UTC, plus some seconds.
FILETIME BaseTimePlus(double seconds) {
    SYSTEMTIME base{2023, 6, 0, 15, 12, 0, 0, 0};
    FILETIME time{};
    ::SystemTimeToFileTime(&base, &time);
    return FromTicks(Ticks(time) + static_cast<long long>(seconds * kTicksPerSecond));
}

// The file time whose local time is the given one.
FILETIME FromLocal(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second, WORD ms) {
    SYSTEMTIME local{year, month, 0, day, hour, minute, second, ms}, utc{};
    FILETIME time{};
    EXPECT_TRUE(::TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc));
    EXPECT_TRUE(::SystemTimeToFileTime(&utc, &time));
    return time;
}

void MakeFile(const std::wstring& path, size_t size, const FILETIME& written) {
    test::WriteFileBytes(path, std::string(size, 'x'));
    unique_file file(::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(file);
    ASSERT_TRUE(::SetFileTime(file.get(), nullptr, nullptr, &written));
}

} // namespace

TEST(FileTimes, GetFileTimesFillsWhatIsAskedAndClearsItOnFailure) {
    test::ScratchFolder folder;
    const std::wstring file = folder / L"timed.txt";
    test::WriteFileBytes(file, "x");
    const FILETIME written = BaseTimePlus(0), accessed = BaseTimePlus(3600);
    {
        unique_file handle(::CreateFileW(file.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(::SetFileTime(handle.get(), nullptr, &accessed, &written));
    }
    FILETIME lastWrite = kGarbage, creation = kGarbage, lastAccess = kGarbage;
    ASSERT_TRUE(GetFileTimes(file, &lastWrite, &creation, &lastAccess));
    EXPECT_EQ(Ticks(lastWrite), Ticks(written));
    EXPECT_EQ(Ticks(lastAccess), Ticks(accessed));
    EXPECT_NE(Ticks(creation), Ticks(kGarbage));

    lastWrite = kGarbage;
    EXPECT_TRUE(GetFileTimes(file, &lastWrite)) << "the other outputs may be left out";
    EXPECT_EQ(Ticks(lastWrite), Ticks(written));

    lastWrite = creation = lastAccess = kGarbage;
    ::SetLastError(0xDEAD);
    EXPECT_FALSE(GetFileTimes(folder / L"missing.txt", &lastWrite, &creation, &lastAccess));
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(Ticks(lastWrite), 0u);
    EXPECT_EQ(Ticks(creation), 0u);
    EXPECT_EQ(Ticks(lastAccess), 0u);
}

TEST(FileTimes, LocalDatesInWholeSeconds) {
    struct {
        const char* name;
        FILETIME time;
        double expected;
    } rows[] = {
        {"day zero", FromLocal(1899, 12, 30, 0, 0, 0, 0), 0.0},
        {"1 January 1900", FromLocal(1900, 1, 1, 0, 0, 0, 0), 2.0},
        {"noon", FromLocal(2000, 1, 1, 12, 0, 0, 0), 36526.5},
        {"milliseconds dropped", FromLocal(2024, 3, 5, 14, 30, 15, 750), 45356.0 + (14 * 3600 + 30 * 60 + 15) / 86400.0},
        {"before day zero: time as a positive fraction", FromLocal(1899, 12, 29, 6, 0, 0, 0), -1.25},
        {"earliest file time", FromLocal(1601, 1, 2, 0, 0, 0, 0), -109204.0},
        {"last second of 9999", FromLocal(9999, 12, 31, 23, 59, 59, 0), 2958465.0 + 86399 / 86400.0},
        {"not a time", FILETIME{0xFFFFFFFF, 0xFFFFFFFF}, kInvalidLocalDate},
        {"after 9999", FILETIME{0xFFFFFFFF, 0x7FFFFFFF}, kInvalidLocalDate},
    };
    for (const auto& row : rows) EXPECT_NEAR(FileTimeToLocalDate(row.time), row.expected, 1e-9) << row.name;
}

TEST(FileTimes, CompareFilesByTimeAndSize) {
    constexpr double kMissing = -1;
    struct {
        const char* name;
        size_t firstSize, secondSize;
        double firstTime, secondTime;  // seconds after the base time; kMissing: no second file
        bool byTime, bySize, same;
    } rows[] = {
        {"equal", 3, 3, 0, 0, true, true, true},
        {"2 s apart", 3, 3, 0, 2, true, true, true},
        {"3 s apart", 3, 3, 0, 3, true, true, false},
        {"3 s apart, second older", 3, 3, 3, 0, true, true, false},
        {"2 s apart across a minute", 3, 3, 59, 61, true, true, true},
        {"whole seconds: 10.9 and 13.0 are 3 apart", 3, 3, 10.9, 13.0, true, true, false},
        {"whole seconds: 10.0 and 12.9 are 2 apart", 3, 3, 10.0, 12.9, true, true, true},
        {"sizes differ", 3, 4, 0, 0, true, true, false},
        {"sizes differ, times only", 3, 4, 0, 0, true, false, true},
        {"times differ, sizes only", 3, 3, 0, 100, false, true, true},
        {"neither flag", 1, 5, 0, 1000, false, false, true},
        {"missing second file", 3, 0, 0, kMissing, true, true, false},
        {"missing second file, times only", 3, 0, 0, kMissing, true, false, false},
        {"missing second file, sizes only", 3, 0, 0, kMissing, false, true, false},
        {"missing second file counts as empty", 0, 0, 0, kMissing, false, true, true},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        const std::wstring first = folder / L"first.bin", second = folder / L"second.bin";
        MakeFile(first, row.firstSize, BaseTimePlus(row.firstTime));
        if (row.secondTime != kMissing) MakeFile(second, row.secondSize, BaseTimePlus(row.secondTime));
        EXPECT_EQ(CompareFiles(first, second, row.byTime, row.bySize), row.same) << row.name;
    }
}
