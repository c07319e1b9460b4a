#include "fileutil/masks.h"
#include <gtest/gtest.h>

using namespace tol;

namespace {
std::string Show(const wchar_t* text) { return testing::PrintToString(std::wstring(text)); }
} // namespace

TEST(FileMasks, MaskToPattern) {
    struct {
        const wchar_t* mask;
        const wchar_t* pattern;
    } rows[] = {
        {L"*.txt", L".*\\.txt"},
        {L"*.*", L".*\\.{0,1}.*"},
        {L"myfile*.*", L"myfile.*\\.{0,1}.*"},
        {L"a.b.*", L"a\\.{0,1}b\\.{0,1}.*"},
        {L"*.", L"[^\\.]*"},
        {L"abc.", L"abc"},
        {L"*.c.", L"[^\\.]*\\.c"},
        {L"file?.c??", L"file.\\.c.."},
        {L"a+b(1).txt", L"a\\+b\\(1\\)\\.txt"},
        {L"^[x]{2}$", L"\\^\\[x\\]\\{2\\}\\$"},
        {L"a\\b", L"a\\\\b"},
        {L"*.c|*.h", L".*\\.c|.*\\.h"},
        {L".*", L"\\..*"},
        {L".", L"\\."},
        {L"", L""},
    };
    for (const auto& row : rows) EXPECT_EQ(FileMaskFilter::MaskToPattern(row.mask), row.pattern) << Show(row.mask);
}

TEST(FileMasks, MatchesFile) {
    struct {
        const wchar_t* include;
        const wchar_t* exclude;
        bool matchAll;
        const wchar_t* name;
        bool expected;
    } rows[] = {
        {L"", L"", true, L"anything.txt", true},
        {L"", L"", false, L"anything.txt", false},
        {L"*.txt", L"", true, L"A.TXT", true},
        {L"*.txt", L"", true, L"a.txt.bak", false},
        {L"*.", L"", true, L"README", true},
        {L"*.", L"", true, L"read.me", false},
        {L"abc.", L"", true, L"abc", true},
        {L"abc.", L"", true, L"abcd", false},
        {L"abc.", L"", true, L"abc.txt", false},
        {L"a?c", L"", true, L"abc", true},
        {L"a?c", L"", true, L"a.c", true},
        {L"a?c", L"", true, L"ac", false},
        {L" x", L"", true, L" x", true},
        {L" x", L"", true, L"x", false},
        {L"\"*.c\" \"*.h\"", L"", true, L"m.c", true},
        {L"\"*.c\" \"*.h\"", L"", true, L"m.h", true},
        {L"\"*.c\" \"*.h\"", L"", true, L" ", true},
        {L"\"*.c\" \"*.h\"", L"", true, L"m.txt", false},
        {L"*.*", L"", true, L"README", true},
        {L"*.*", L"", true, L"a.b.c", true},
        {L"myfile*.*", L"", true, L"MyFile", true},
        {L"myfile*.*", L"", true, L"myfile1.cpp", true},
        {L"myfile*.*", L"", true, L"other.cpp", false},
        {L"", L"*.obj", true, L"x.obj", false},
        {L"", L"*.obj", true, L"x.c", true},
        {L"*.c\r\n\r\n*.h", L"test*.*", true, L"main.h", true},
        {L"*.c\r\n*.h", L"test*.*", true, L"test1.c", false},
        {L"*.c|*.h", L"", true, L"x.h", true},
        {L"\u00e4*.txt", L"", true, L"\u00c4pfel.TXT", true},
        {L"a+b(1).txt", L"", true, L"A+B(1).TXT", true},
        {L"/bin", L"", true, L"x.txt", true},
        {L"/bin\n*.c", L"", true, L"x.txt", false},
    };
    for (const auto& row : rows) {
        const FileMaskFilter filter(row.include, row.exclude, row.matchAll);
        EXPECT_EQ(filter.MatchesFile(row.name), row.expected)
            << "include " << Show(row.include) << " exclude " << Show(row.exclude) << " name " << Show(row.name);
    }
}

TEST(FileMasks, MatchesFolderPath) {
    struct {
        const wchar_t* include;
        const wchar_t* exclude;
        const wchar_t* path;
        bool expected;
    } rows[] = {
        {L"", L"", L"", true},
        {L"", L"", L"a\\b", true},
        {L"*.c", L"*.h", L"a", true},
        {L"/bin", L"", L"bin", true},
        {L"/bin", L"", L"bin\\x", true},
        {L"/bin", L"", L"src\\bin", true},
        {L"/bin", L"", L"src/bin", true},
        {L"/bin", L"", L"BIN", true},
        {L"/bin", L"", L"", false},
        {L"/bin", L"", L"src", false},
        {L"/bin", L"", L"binary", false},
        {L"", L"/obj*", L"obj", false},
        {L"", L"/obj*", L"obj2", false},
        {L"", L"/obj*", L"obj\\x", false},
        {L"", L"/obj*", L"src\\obj2\\y", false},
        {L"", L"/obj*", L"src", true},
        {L"", L"/obj*", L"xobj", true},
        {L"", L"/obj*", L"", true},
        {L"", L"\\obj", L"a\\obj", false},
        {L"/bin", L"/x", L"bin\\x", false},
        {L"/bin", L"/x", L"bin\\y", true},
        {L"", L"/", L"a", true},
        {L"", L"/", L"", true},
        {L"/", L"", L"a", false},
        {L"/", L"", L"", false},
    };
    for (const auto& row : rows) {
        const FileMaskFilter filter(row.include, row.exclude, true);
        EXPECT_EQ(filter.MatchesFolderPath(row.path), row.expected)
            << "include " << Show(row.include) << " exclude " << Show(row.exclude) << " path " << Show(row.path);
    }
}
