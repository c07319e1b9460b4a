#include "fileutil/fileops.h"
#include "scratch.h"
#include <gtest/gtest.h>

using namespace tol;

namespace {

constexpr DWORD kNoError = 0;
// The archive bit is always reported set under Wine: compare only the bits that mean something here.
constexpr DWORD kCompared = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DIRECTORY;

DWORD Attributes(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) & kCompared; }

} // namespace

TEST(FileOps, ExistenceTestsAndTheErrorTheyLeave) {
    test::ScratchFolder folder;
    test::WriteFileBytes(folder / L"file.txt", "x");
    test::MakeFolder(folder / L"sub");
    struct {
        const wchar_t* name;
        bool file;
        bool isFolder;
        DWORD error;  // left when both tests fail
    } rows[] = {
        {L"file.txt", true, false, kNoError},
        {L"FILE.TXT", true, false, kNoError},
        {L"sub", false, true, kNoError},
        {L"sub\\", false, true, kNoError},
        {L"missing", false, false, ERROR_FILE_NOT_FOUND},
        {L"missing\\x", false, false, ERROR_PATH_NOT_FOUND},
    };
    for (const auto& row : rows) {
        const std::wstring path = folder / row.name;
        ::SetLastError(0xDEAD);
        EXPECT_EQ(IsExistingFile(path), row.file) << testing::PrintToString(path);
        if (row.error) {
            EXPECT_EQ(::GetLastError(), row.error) << testing::PrintToString(path);
        }
        ::SetLastError(0xDEAD);
        EXPECT_EQ(IsExistingFolder(path), row.isFolder) << testing::PrintToString(path);
        if (row.error) {
            EXPECT_EQ(::GetLastError(), row.error) << testing::PrintToString(path);
        }
    }
}

TEST(FileOps, ClearReadOnlyClearsOnlyThatBit) {
    struct {
        const char* name;
        DWORD before;
        bool result;
        DWORD after;
    } rows[] = {
        {"read-only file", FILE_ATTRIBUTE_READONLY, true, 0},
        {"read-only hidden system file", FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM,
         true, FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM},
        {"writable hidden file", FILE_ATTRIBUTE_HIDDEN, false, FILE_ATTRIBUTE_HIDDEN},
        {"plain file", FILE_ATTRIBUTE_NORMAL, false, 0},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        const std::wstring path = folder / L"item";
        test::WriteFileBytes(path, "x");
        ASSERT_TRUE(::SetFileAttributesW(path.c_str(), row.before)) << row.name;
        EXPECT_EQ(ClearReadOnly(path), row.result) << row.name;
        EXPECT_EQ(Attributes(path), row.after) << row.name;
    }
    test::ScratchFolder folder;
    ::SetLastError(0xDEAD);
    EXPECT_FALSE(ClearReadOnly(folder / L"missing"));
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

TEST(FileOps, DeleteFileForcedRemovesReadOnlyFiles) {
    test::ScratchFolder folder;
    const std::wstring file = folder / L"locked.txt";
    test::WriteFileBytes(file, "x");
    ASSERT_TRUE(::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    ASSERT_FALSE(::DeleteFileW(file.c_str())) << "a plain delete must refuse a read-only file for this test to mean anything";
    EXPECT_TRUE(DeleteFileForced(file));
    EXPECT_EQ(::GetFileAttributesW(file.c_str()), INVALID_FILE_ATTRIBUTES);

    struct {
        const wchar_t* name;
        DWORD error;
    } failures[] = {
        {L"missing.txt", ERROR_FILE_NOT_FOUND},
        {L"nofolder\\x.txt", ERROR_PATH_NOT_FOUND},
    };
    for (const auto& row : failures) {
        ::SetLastError(0xDEAD);
        EXPECT_FALSE(DeleteFileForced(folder / row.name)) << testing::PrintToString(std::wstring(row.name));
        EXPECT_EQ(::GetLastError(), row.error) << testing::PrintToString(std::wstring(row.name));
    }
}

// Wine keeps no read-only bit on folders, so only the removal itself can be shown here.
TEST(FileOps, RemoveFolderForcedRemovesEmptyFoldersOnly) {
    test::ScratchFolder folder;
    const std::wstring empty = folder / L"empty";
    const std::wstring full = folder / L"full";
    test::MakeFolder(empty);
    test::MakeFolder(full);
    test::WriteFileBytes(full + L"\\x.txt", "x");
    EXPECT_TRUE(RemoveFolderForced(empty));
    EXPECT_FALSE(IsExistingFolder(empty));

    ::SetLastError(0xDEAD);
    EXPECT_FALSE(RemoveFolderForced(full));
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_DIR_NOT_EMPTY));
    EXPECT_TRUE(IsExistingFile(full + L"\\x.txt"));

    ::SetLastError(0xDEAD);
    EXPECT_FALSE(RemoveFolderForced(folder / L"missing"));
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}
