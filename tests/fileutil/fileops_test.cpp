#include "fileutil/fileops.h"
#include "scratch.h"
#include <gtest/gtest.h>

using namespace tol;

TEST(FileOps, ExistenceReadOnlyAndForcedDeletesOfTheNamedItemOnly) {
    test::ScratchFolder folder;
    const std::wstring file = folder / L"file", full = folder / L"full", empty = folder / L"empty";
    test::MakeFolder(full);
    test::MakeFolder(empty);
    test::WriteFileBytes(full + L"\\x.txt", "x");
    test::WriteFileBytes(file, "x");
    EXPECT_TRUE(IsExistingFile(file) && !IsExistingFolder(file) && IsExistingFolder(empty) && !IsExistingFile(empty));
    EXPECT_FALSE(ClearReadOnly(file)) << "not read-only";
    const DWORD hidden = FILE_ATTRIBUTE_HIDDEN;
    ASSERT_TRUE(::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY | hidden));
    EXPECT_TRUE(ClearReadOnly(file));
    EXPECT_EQ(::GetFileAttributesW(file.c_str()) & (FILE_ATTRIBUTE_READONLY | hidden), hidden) << "only that bit cleared";
    ASSERT_TRUE(::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY));
    EXPECT_TRUE(DeleteFileForced(file));
    EXPECT_TRUE(RemoveFolderForced(empty));
    EXPECT_FALSE(RemoveFolderForced(full));
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));
    EXPECT_FALSE(IsExistingFile(file) || IsExistingFolder(empty));
    EXPECT_TRUE(IsExistingFile(full + L"\\x.txt"));
}
