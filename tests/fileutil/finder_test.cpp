#include "fileutil/fileops.h"
#include "fileutil/finder.h"
#include "scratch.h"
#include <gtest/gtest.h>
#include <set>

using namespace tol;

namespace {

// The names of the entries the finder hands out, folders with a trailing backslash; their paths are checked.
std::multiset<std::wstring> VisitAll(DirectoryFinder& finder, const std::wstring& folder) {
    std::multiset<std::wstring> names;
    while (finder.FindNext()) {
        const std::wstring name = finder.LongName();
        names.insert(name + (finder.IsFolder() ? L"\\" : L""));
        EXPECT_EQ(finder.IsDotEntry(), name == L"." || name == L"..") << testing::PrintToString(name);
        EXPECT_EQ(finder.FullPath(), folder + L"\\" + name);
        EXPECT_TRUE(finder.IsFolder() || IsExistingFile(folder + L"\\" + finder.ShortName())) << finder.ShortName();
    }
    return names;
}

} // namespace

TEST(DirectoryFinder, VisitsEveryEntryOnceWhateverThePattern) {
    test::ScratchFolder folder;
    test::WriteFileBytes(folder / L"a.txt", "x");
    test::WriteFileBytes(folder / L"long file name.text", "x");
    test::MakeFolder(folder / L".x");
    DirectoryFinder finder;
    ASSERT_TRUE(finder.FindFirst(folder / L"*"));
    EXPECT_EQ(VisitAll(finder, folder.path()),
              (std::multiset<std::wstring>{L".\\", L"..\\", L".x\\", L"a.txt", L"long file name.text"}));

    ASSERT_TRUE(::SetCurrentDirectoryW(folder.path().c_str()));
    EXPECT_TRUE(finder.FindFirst(L"*.txt"));
    EXPECT_EQ(VisitAll(finder, folder.path()), std::multiset<std::wstring>{L"a.txt"}) << "a relative pattern";
    ::SetCurrentDirectoryW((folder / L"..").c_str());

    const std::wstring deep = L"\\\\?\\" + folder.path() + L"\\" + std::wstring(150, L'a') + L"\\" + std::wstring(150, L'b');
    ASSERT_TRUE(CreatePath(deep + L"\\"));
    test::WriteFileBytes(deep + L"\\in.txt", "x");
    ASSERT_TRUE(finder.FindFirst(deep + L"\\*.txt"));
    EXPECT_EQ(VisitAll(finder, deep), std::multiset<std::wstring>{L"in.txt"});

    EXPECT_FALSE(finder.FindFirst(folder / L"missing\\*"));
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(finder.FindNext()) << "the enumeration before is closed";
}
