#include "fileutil/fileops.h"
#include "fileutil/paths.h"
#include "scratch.h"
#include <gtest/gtest.h>

using namespace tol;

TEST(PathText, DirectoryPartCombinePathAndRootLength) {
    EXPECT_EQ(DirectoryPart(L"C:\\a/b.txt", true), L"C:\\a/");
    EXPECT_EQ(DirectoryPart(L"C:/a\\b.txt", false), L"C:/a");
    EXPECT_EQ(DirectoryPart(L"\\x", false), L"");
    EXPECT_EQ(DirectoryPart(L"b.txt", true), L"");
    EXPECT_EQ(CombinePath(L"C:\\a", L"b"), L"C:\\a\\b");
    EXPECT_EQ(CombinePath(L"C:/a/", L"b"), L"C:/a/b");
    EXPECT_EQ(CombinePath(L"", L"b"), L"b");
    const std::pair<const wchar_t*, size_t> roots[] = {
        {L"C:\\a", 3}, {L"C:a\\b", 0}, {L"\\a\\b", 0}, {L"\\\\", 0}, {L"\\\\srv\\share\\x", 6}, {L"\\\\srv", 5},
        {L"\\\\?\\C:\\x", 7}, {L"\\\\?\\C:", 6}, {L"\\\\?\\unc/srv/share", 12}, {L"\\\\.\\Volume{1}\\a", 14},
    };
    for (const auto& [path, length] : roots) EXPECT_EQ(PathRootLength(path), length) << testing::PrintToString(path);
}

// Only components followed by a separator are folders; existing ones count as present; a file on the way fails
// with the error of creating the folder in its place.
TEST(CreatePath, CreatesEveryFolderFollowedByASeparator) {
    test::ScratchFolder folder;
    test::WriteFileBytes(folder / L"file", "x");
    EXPECT_TRUE(CreatePath(folder / L"x\\y\\") && CreatePath(folder / L"p/q") && CreatePath(folder / L"d1\\\\d2\\"));
    EXPECT_TRUE(CreatePath(folder / L"x\\") && CreatePath(folder / L"x", L"k\\"));
    for (const wchar_t* made : {L"x\\y", L"p", L"d1\\d2", L"x\\k"}) EXPECT_TRUE(IsExistingFolder(folder / made)) << made;
    EXPECT_FALSE(IsExistingFolder(folder / L"p\\q"));
    const std::wstring deep = L"\\\\?\\" + folder.path() + L"\\" + std::wstring(120, L'a') + L"\\" + std::wstring(200, L'b');
    EXPECT_TRUE(CreatePath(deep + L"\\") && IsExistingFolder(deep)) << "a path of " << deep.size() << " characters";

    EXPECT_FALSE(CreatePath(folder / L"file\\sub\\deeper\\"));
    const DWORD code = ::GetLastError();
    EXPECT_FALSE(::CreateDirectoryW((folder / L"file\\sub").c_str(), nullptr));
    EXPECT_EQ(code, ::GetLastError());
    EXPECT_EQ(test::ReadFileBytes(folder / L"file"), "x");
}
