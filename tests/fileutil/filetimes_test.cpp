#include "fileutil/filetimes.h"
#include "frame/handles.h"
#include "scratch.h"
#include <gtest/gtest.h>

using namespace tol;

namespace {

// A file of size bytes last written at the local time 15 June 2023 (date 45092) 12:00:00 plus some seconds.
void MakeFile(const std::wstring& path, size_t size, double seconds) {
    SYSTEMTIME local{2023, 6, 0, 15, 12, 0, 0, 0}, utc{};
    FILETIME time{};
    EXPECT_TRUE(::TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc) && ::SystemTimeToFileTime(&utc, &time));
    ULARGE_INTEGER ticks{{time.dwLowDateTime, time.dwHighDateTime}};
    ticks.QuadPart += static_cast<ULONGLONG>(seconds * 1e7);
    time = FILETIME{ticks.LowPart, ticks.HighPart};
    test::WriteFileBytes(path, std::string(size, 'x'));
    unique_file file(::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_TRUE(::SetFileTime(file.get(), nullptr, nullptr, &time));
}

} // namespace

TEST(FileTimes, TimesLocalDatesAndComparisonsInWholeSeconds) {
    test::ScratchFolder folder;
    MakeFile(folder / L"late", 3, 3600.75);
    FILETIME lastWrite{1, 1}, creation{1, 1}, lastAccess{1, 1};
    ASSERT_TRUE(GetFileTimes(folder / L"late", &lastWrite));
    EXPECT_DOUBLE_EQ(FileTimeToLocalDate(lastWrite), 45092.5 + 1 / 24.0) << "milliseconds are dropped";
    EXPECT_EQ(FileTimeToLocalDate(FILETIME{0xFFFFFFFF, 0xFFFFFFFF}), kInvalidLocalDate);
    EXPECT_FALSE(GetFileTimes(folder / L"missing", &lastWrite, &creation, &lastAccess));
    EXPECT_EQ(lastWrite.dwLowDateTime | creation.dwHighDateTime | lastAccess.dwLowDateTime, 0u) << "not cleared";

    const std::tuple<const wchar_t*, size_t, double> files[] = {
        {L"0s", 3, 0}, {L"2s", 3, 2}, {L"3s", 3, 3}, {L"10.9s", 3, 10.9}, {L"13s", 3, 13}, {L"4 bytes", 4, 0}, {L"empty", 0, 9},
    };
    for (const auto& [name, size, seconds] : files) MakeFile(folder / name, size, seconds);
    struct {
        const wchar_t* first;
        const wchar_t* second;
        bool byTime, bySize, same;
    } rows[] = {
        {L"0s", L"2s", true, true, true},          {L"3s", L"0s", true, true, false},
        {L"10.9s", L"13s", true, false, false},    {L"0s", L"4 bytes", true, true, false},
        {L"0s", L"4 bytes", true, false, true},    {L"0s", L"13s", false, true, true},
        {L"empty", L"13s", false, false, true},    {L"0s", L"missing", true, false, false},
        {L"0s", L"missing", false, true, false},   {L"empty", L"missing", false, true, true},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CompareFiles(folder / row.first, folder / row.second, row.byTime, row.bySize), row.same)
            << "row " << &row - rows;
    }
}
