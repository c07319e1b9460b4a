#include "fileutil/fileops.h"
#include "fileutil/finder.h"
#include "fileutil/paths.h"
#include "scratch.h"
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <vector>

using namespace tol;

namespace {

struct Visit {
    int count = 0;
    bool folder = false;
    bool dot = false;
    std::wstring fullPath;
    std::wstring shortName;
};

// Every entry the finder hands out, by long name.
std::map<std::wstring, Visit> VisitAll(DirectoryFinder& finder) {
    std::map<std::wstring, Visit> visits;
    while (finder.FindNext()) {
        Visit& visit = visits[finder.LongName()];
        ++visit.count;
        visit.folder = finder.IsFolder();
        visit.dot = finder.IsDotEntry();
        visit.fullPath = finder.FullPath();
        visit.shortName = finder.ShortName();
    }
    return visits;
}

// The names the platform itself lists, for folders whose content the test does not make.
std::multiset<std::wstring> PlatformNames(const std::wstring& pattern) {
    std::multiset<std::wstring> names;
    WIN32_FIND_DATAW entry{};
    unique_find find(::FindFirstFileW(pattern.c_str(), &entry));
    if (find) do names.insert(entry.cFileName); while (::FindNextFileW(find.get(), &entry));
    return names;
}

} // namespace

TEST(DirectoryFinder, VisitsEveryEntryOnceWithItsPathAndNames) {
    test::ScratchFolder folder;
    const std::vector<std::wstring> files = {L"a.txt", L"B.DAT", L"long file name.text", L"no extension"};
    const std::vector<std::wstring> folders = {L"sub", L".x"};
    for (const auto& name : files) test::WriteFileBytes(folder / name, "x");
    for (const auto& name : folders) test::MakeFolder(folder / name);

    DirectoryFinder finder;
    ASSERT_TRUE(finder.FindFirst(folder / L"*"));
    EXPECT_EQ(finder.Folder(), folder.path());
    auto visits = VisitAll(finder);
    for (const auto& name : files) {
        const Visit& visit = visits[name];
        EXPECT_EQ(visit.count, 1) << testing::PrintToString(name);
        EXPECT_FALSE(visit.folder || visit.dot) << testing::PrintToString(name);
        EXPECT_EQ(visit.fullPath, folder / name);
        EXPECT_TRUE(IsExistingFile(CombinePath(folder.path(), visit.shortName))) << testing::PrintToString(visit.shortName);
    }
    for (const auto& name : folders) {
        EXPECT_EQ(visits[name].count, 1) << testing::PrintToString(name);
        EXPECT_TRUE(visits[name].folder && !visits[name].dot) << testing::PrintToString(name);
    }
    EXPECT_EQ(visits[L"a.txt"].shortName, L"a.txt") << "an 8.3 name is its own short name";
    for (const auto& [name, visit] : visits) {
        const bool expectedDot = name == L"." || name == L"..";
        EXPECT_EQ(visit.dot, expectedDot) << testing::PrintToString(name);
        if (expectedDot) {
            EXPECT_EQ(visit.count, 1) << testing::PrintToString(name);
        }
    }
    EXPECT_EQ(visits.size(), files.size() + folders.size() + (visits.count(L".") ? 2 : 0));
    EXPECT_FALSE(finder.FindNext()) << "the end stays the end";
}

TEST(DirectoryFinder, PatternsAndTheFolderTheyName) {
    test::ScratchFolder folder;
    test::WriteFileBytes(folder / L"a.txt", "x");
    test::WriteFileBytes(folder / L"b.dat", "x");
    DirectoryFinder finder;
    ASSERT_TRUE(finder.FindFirst(folder / L"*.txt"));
    auto visits = VisitAll(finder);
    ASSERT_EQ(visits.size(), 1u);
    EXPECT_EQ(visits.begin()->first, L"a.txt");
    EXPECT_EQ(visits.begin()->second.fullPath, folder / L"a.txt");

    // Without a pattern the current folder is enumerated, and its absolute path is the folder.
    const DWORD length = ::GetCurrentDirectoryW(0, nullptr);
    std::wstring saved(length, L'\0');
    saved.resize(::GetCurrentDirectoryW(length, saved.data()));
    ASSERT_TRUE(::SetCurrentDirectoryW(folder.path().c_str()));
    const bool opened = finder.FindFirst();
    const std::wstring enumerated = finder.Folder();
    visits = VisitAll(finder);
    finder.Close();
    ::SetCurrentDirectoryW(saved.c_str());
    EXPECT_TRUE(opened);
    EXPECT_EQ(enumerated, folder.path());
    EXPECT_EQ(visits[L"b.dat"].count, 1);
    EXPECT_EQ(visits[L"b.dat"].fullPath, folder / L"b.dat");
}

TEST(DirectoryFinder, FailuresLeaveTheErrorOfFindFirstFile) {
    test::ScratchFolder folder;
    test::WriteFileBytes(folder / L"a.txt", "x");
    struct {
        const wchar_t* pattern;
        DWORD error;
    } rows[] = {
        {L"missing\\*", ERROR_PATH_NOT_FOUND},
        {L"*.none", ERROR_FILE_NOT_FOUND},
    };
    for (const auto& row : rows) {
        DirectoryFinder finder;
        ASSERT_TRUE(finder.FindFirst(folder / L"*"));  // an open enumeration is closed by the failing one
        ::SetLastError(0xDEAD);
        EXPECT_FALSE(finder.FindFirst(folder / row.pattern)) << testing::PrintToString(std::wstring(row.pattern));
        EXPECT_EQ(::GetLastError(), row.error) << testing::PrintToString(std::wstring(row.pattern));
        EXPECT_FALSE(finder.IsOpen());
        EXPECT_FALSE(finder.FindNext());
    }
    DirectoryFinder never;
    EXPECT_FALSE(never.FindNext());
}

TEST(DirectoryFinder, ReopeningStartsAfreshWithTheFirstEntry) {
    test::ScratchFolder folder;
    test::MakeFolder(folder / L"one");
    test::MakeFolder(folder / L"two");
    test::WriteFileBytes(folder / L"one\\only.txt", "x");
    test::WriteFileBytes(folder / L"two\\first.txt", "x");
    test::WriteFileBytes(folder / L"two\\second.txt", "x");
    DirectoryFinder finder;
    ASSERT_TRUE(finder.FindFirst(folder / L"one\\*.txt"));
    ASSERT_TRUE(finder.FindFirst(folder / L"two\\*.txt"));
    const auto visits = VisitAll(finder);
    EXPECT_EQ(visits.size(), 2u);
    EXPECT_EQ(visits.count(L"first.txt") + visits.count(L"second.txt"), 2u);
    EXPECT_EQ(finder.Folder(), folder / L"two");
}

// A volume root has no dot entries: its first entry is one like every other.
TEST(DirectoryFinder, AVolumeRootYieldsEveryEntryTheFirstIncluded) {
    DirectoryFinder finder;
    ASSERT_TRUE(finder.FindFirst(L"C:\\*"));
    EXPECT_EQ(finder.Folder(), L"C:");
    std::multiset<std::wstring> names;
    bool pathsRight = true;
    while (finder.FindNext()) {
        names.insert(finder.LongName());
        pathsRight = pathsRight && finder.FullPath() == std::wstring(L"C:\\") + finder.LongName();
    }
    EXPECT_EQ(names, PlatformNames(L"C:\\*"));
    EXPECT_FALSE(names.empty());
    EXPECT_TRUE(pathsRight);
}

TEST(DirectoryFinder, LongPathsBeyond260Characters) {
    test::ScratchFolder folder;
    std::wstring deep = L"\\\\?\\" + folder.path();
    for (wchar_t c : {L'a', L'b', L'c'}) {
        deep += L"\\" + std::wstring(120, c);
        test::MakeFolder(deep);
    }
    test::WriteFileBytes(deep + L"\\inside.txt", "x");
    DirectoryFinder finder;
    ASSERT_TRUE(finder.FindFirst(deep + L"\\*.txt")) << "error " << ::GetLastError();
    ASSERT_TRUE(finder.FindNext());
    EXPECT_EQ(finder.FullPath(), deep + L"\\inside.txt");
    EXPECT_TRUE(IsExistingFile(finder.FullPath()));
}
