#include "fileutil/textfile.h"
#include "scratch.h"
#include <gtest/gtest.h>

using namespace tol;
using namespace std::literals;

// Failed opens, conversions, oversized files and NUL characters are checked through the actions that meet them.
TEST(TextFileWriter, EncodesInTheCodePageWithCrLfAndMarksOnlyNewUtf16Files) {
    struct {
        UINT codePage;
        bool append;
        const char* before;  // hex of the file before; null: no file
        const wchar_t* text;
        const char* after;   // hex
    } rows[] = {
        {1200, false, "41 42 43 44 45 46", L"a\u20ac", "FF FE 61 00 AC 20"},
        {1200, false, nullptr, L"a\n", "FF FE 61 00 0D 00 0A 00"},
        {1200, false, nullptr, L"", "FF FE"},
        {1200, true, nullptr, L"a", "61 00"},
        {65001, false, "61 62", L"", ""},
        {65001, true, "61 62", L"\u00e9\U0001F600", "61 62 C3 A9 F0 9F 98 80"},
        {1252, false, nullptr, L"\u00e9\u20ac", "E9 80"},
        {65001, false, nullptr, L"a\nb\r\nc\rd", "61 0D 0A 62 0D 0A 63 0D 64"},
        {65001, false, nullptr, L"\n\r\r\n", "0D 0A 0D 0D 0A"},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        const std::wstring file = folder / L"out.txt";
        if (row.before) test::WriteFileBytes(file, test::Hex(row.before));
        TextFileWriter(file, row.codePage, row.append).WriteText(row.text);
        EXPECT_EQ(test::ToHex(test::ReadFileBytes(file)), row.after) << "row " << &row - rows;
    }
}

// Lines longer than a write batch and surrogate pairs at every line end: nothing lost, doubled or split.
TEST(TextFileWriter, WriteTextKeepsEveryCharacterOfALargeText) {
    std::wstring text, expected;
    for (int i = 0; i < 20000; ++i) {
        const std::wstring line = std::to_wstring(i) + std::wstring(i == 777 ? 100000 : i % 97, L'\u00e9') + L"\U0001F600";
        text += line + (i % 3 == 0 ? L"\r\n" : L"\n");
        expected += line + L"\r\n";
    }
    test::ScratchFolder folder;
    TextFileWriter(folder / L"big.txt", 65001, false).WriteText(text.c_str());
    EXPECT_TRUE(TextFileReader(folder / L"big.txt", 65001).ReadAll() == expected);
}

TEST(TextFileReader, DecodesTheBytesOfTheCodePage) {
    struct {
        UINT codePage;
        const char* bytes;
        std::wstring_view expected;
    } rows[] = {
        {1200, "FF FE 61 00", L"a"sv},
        {1200, "61 00 62 00", L"ab"sv},
        {1200, "FF FE 61 00 62", L"a"sv},
        {1200, "FF FE", L""sv},
        {65001, "EF BB BF 61 0D 0A 00 C3 A9", L"\ufeffa\r\n\0\u00e9"sv},
        {1252, "80 E9", L"\u20ac\u00e9"sv},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        test::WriteFileBytes(folder / L"in.txt", test::Hex(row.bytes));
        EXPECT_EQ(TextFileReader(folder / L"in.txt", row.codePage).ReadAll(), row.expected) << row.bytes;
    }
}
