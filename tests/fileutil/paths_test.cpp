#include "fileutil/fileops.h"
#include "fileutil/paths.h"
#include "scratch.h"
#include <gtest/gtest.h>

using namespace tol;

TEST(PathText, DirectoryPartWithAndWithoutTheSeparator) {
    struct {
        const wchar_t* path;
        const wchar_t* kept;
        const wchar_t* dropped;
    } rows[] = {
        {L"C:\\a\\b.txt", L"C:\\a\\", L"C:\\a"},
        {L"C:/a/b.txt", L"C:/a/", L"C:/a"},
        {L"C:\\a/b\\c", L"C:\\a/b\\", L"C:\\a/b"},
        {L"b.txt", L"", L""},
        {L"", L"", L""},
        {L"a\\", L"a\\", L"a"},
        {L"\\\\srv\\share", L"\\\\srv\\", L"\\\\srv"},
        {L"\\x", L"\\", L""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(DirectoryPart(row.path, true), row.kept) << "path " << testing::PrintToString(std::wstring(row.path));
        EXPECT_EQ(DirectoryPart(row.path, false), row.dropped) << "path " << testing::PrintToString(std::wstring(row.path));
    }
}

TEST(PathText, CombinePathAddsOneBackslashAtMost) {
    struct {
        const wchar_t* folder;
        const wchar_t* name;
        const wchar_t* expected;
    } rows[] = {
        {L"C:\\a", L"b", L"C:\\a\\b"},
        {L"C:\\a\\", L"b", L"C:\\a\\b"},
        {L"C:/a/", L"b", L"C:/a/b"},
        {L"C:\\a", L"", L"C:\\a\\"},
        {L"C:\\a\\", L"", L"C:\\a\\"},
        {L"", L"b", L"b"},
        {L"", L"", L""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CombinePath(row.folder, row.name), row.expected)
            << testing::PrintToString(std::wstring(row.folder)) << " + " << testing::PrintToString(std::wstring(row.name));
    EXPECT_EQ(CombinePath(L"C:\\a"), L"C:\\a\\");
}

TEST(PathText, RootsThatPathCreationTakesWhole) {
    struct {
        const wchar_t* path;
        size_t expected;
    } rows[] = {
        {L"C:\\a\\b", 3},
        {L"c:/a", 3},
        {L"C:\\", 3},
        {L"C:a\\b", 0},
        {L"C:", 0},
        {L"\\\\srv\\share\\x", 6},
        {L"//srv/share", 6},
        {L"\\\\srv", 5},
        {L"\\\\?\\C:\\x", 7},
        {L"\\\\?\\UNC\\srv\\share\\x", 12},
        {L"\\\\?\\unc/srv/share", 12},
        {L"\\\\.\\Volume{1}\\a", 14},
        {L"\\\\?\\C:", 6},
        {L"\\a\\b", 0},
        {L"a\\b", 0},
        {L"\\\\", 0},
        {L"", 0},
    };
    for (const auto& row : rows)
        EXPECT_EQ(PathRootLength(row.path), row.expected) << testing::PrintToString(std::wstring(row.path));
}

TEST(CreatePath, CreatesEveryFolderFollowedByASeparator) {
    struct {
        const wchar_t* base;  // below the scratch folder when given
        const wchar_t* path;  // below the scratch folder unless a base is given
        const wchar_t* existing;
        const wchar_t* absent;
    } rows[] = {
        {nullptr, L"x\\y\\", L"x\\y", nullptr},
        {nullptr, L"p\\q", L"p", L"p\\q"},
        {nullptr, L"f1/f2/", L"f1\\f2", nullptr},
        {nullptr, L"d1\\\\d2\\", L"d1\\d2", nullptr},
        {nullptr, L"made\\", L"made", nullptr},
        {L"", L"m\\n\\", L"m\\n", nullptr},
        {L"m", L"k\\", L"m\\k", nullptr},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        test::MakeFolder(folder / L"made");
        const std::wstring base = row.base ? CombinePath(folder.path(), row.base) : std::wstring();
        const std::wstring path = row.base ? std::wstring(row.path) : folder / row.path;
        if (row.base && !IsExistingFolder(base)) test::MakeFolder(base);
        ::SetLastError(0xDEAD);
        EXPECT_TRUE(row.base ? CreatePath(base, path) : CreatePath(path)) << testing::PrintToString(path)
                                                                           << " error " << ::GetLastError();
        EXPECT_TRUE(IsExistingFolder(folder / row.existing)) << testing::PrintToString(path);
        if (row.absent) {
            EXPECT_FALSE(IsExistingFolder(folder / row.absent)) << testing::PrintToString(path);
        }
    }
}

TEST(CreatePath, AFileOnTheWayFailsAtTheNextComponentWithItsError) {
    test::ScratchFolder folder;
    test::WriteFileBytes(folder / L"file", "x");
    ::SetLastError(0xDEAD);
    EXPECT_FALSE(CreatePath(folder / L"file\\sub\\deeper\\"));
    const DWORD code = ::GetLastError();
    EXPECT_TRUE(IsExistingFile(folder / L"file"));
    EXPECT_FALSE(::CreateDirectoryW((folder / L"file\\sub").c_str(), nullptr));
    EXPECT_EQ(code, ::GetLastError()) << "the code is not that of creating file\\sub";
    EXPECT_NE(code, 0u);
}

TEST(CreatePath, LongPathsBeyond260Characters) {
    test::ScratchFolder folder;
    const std::wstring a(120, L'a'), b(120, L'b'), c(120, L'c');
    const std::wstring path = L"\\\\?\\" + folder.path() + L"\\" + a + L"\\" + b + L"\\" + c + L"\\";
    ASSERT_GT(path.size(), 400u);
    EXPECT_TRUE(CreatePath(path)) << "error " << ::GetLastError();
    EXPECT_TRUE(IsExistingFolder(path));
    EXPECT_TRUE(CreatePath(path)) << "a second time, everything present";
}

TEST(CreatePath, AMissingShareFailsWithTheErrorOfCreatingTheShare) {
    const std::wstring share = L"\\\\vlm-no-such-server\\share";
    ::SetLastError(0xDEAD);
    EXPECT_FALSE(CreatePath(share + L"\\x\\"));
    const DWORD code = ::GetLastError();
    EXPECT_FALSE(::CreateDirectoryW(share.c_str(), nullptr));
    EXPECT_EQ(code, ::GetLastError());
}
