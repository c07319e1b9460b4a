#include "fileutil/masks.h"
#include <gtest/gtest.h>

using namespace tol;

// Folder rows test MatchesFolderPath with a path relative to the tree's root; the others MatchesFile.
TEST(FileMasks, MatchWholeNamesWithoutRegardToCase) {
    struct {
        const wchar_t* include;
        const wchar_t* exclude;
        bool folder;
        const wchar_t* name;
        bool expected;
    } rows[] = {
        {L"*.txt", L"", false, L"A.TXT", true},         {L"*.txt", L"", false, L"a.txt.bak", false},
        {L"*.", L"", false, L"README", true},           {L"*.", L"", false, L"read.me", false},
        {L"a?c", L"", false, L"a.c", true},             {L"*.*", L"", false, L"README", true},
        {L"\" x\"\"*.h\"", L"", false, L" x", true},    {L"\" x\"\"*.h\"", L"", false, L"x", false},
        {L"*.c\r\n*.h", L"test*.*", false, L"main.h", true},
        {L"*.c\r\n*.h", L"test*.*", false, L"test1.c", false},
        {L"a+b(1).txt", L"", false, L"A+B(1).TXT", true},
        {L"\u00e4*.txt", L"", false, L"\u00c4pfel.TXT", true},
        {L"/bin", L"", false, L"x.txt", true},          {L"/bin\n*.c", L"", false, L"x.txt", false},
        {L"*.c", L"*.h", true, L"a", true},             {L"/bin", L"", true, L"src/bin\\x", true},
        {L"/bin", L"", true, L"", false},               {L"/bin", L"", true, L"binary", false},
        {L"", L"/obj*", true, L"", true},               {L"", L"\\obj*", true, L"src\\OBJ2\\y", false},
        {L"/bin", L"/x", true, L"bin\\x", false},       {L"/bin", L"/x", true, L"BIN\\y", true},
    };
    for (const auto& row : rows) {
        const FileMaskFilter filter(row.include, row.exclude, true);
        EXPECT_EQ(row.folder ? filter.MatchesFolderPath(row.name) : filter.MatchesFile(row.name), row.expected)
            << "row " << &row - rows;
    }
    EXPECT_FALSE(FileMaskFilter(L"", L"", false).MatchesFile(L"a")) << "no include masks, matchAll clear";
}
