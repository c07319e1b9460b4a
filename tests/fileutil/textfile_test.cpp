#include "fileutil/textfile.h"
#include "outcome.h"
#include "scratch.h"
#include <gtest/gtest.h>
#include <functional>

using namespace tol;
using namespace std::literals;
using test::Hex;
using test::ToHex;

namespace {

constexpr const char* kNoFile = nullptr;

std::wstring ReadText(const std::wstring& path, UINT codePage) { return TextFileReader(path, codePage).ReadAll(); }

} // namespace

TEST(TextFileWriter, EncodesEveryCodePageAndMarksOnlyNewUtf16Files) {
    struct {
        const char* name;
        UINT codePage;
        bool append;
        const char* existing;  // hex of the file before, kNoFile when there is none
        const wchar_t* text;
        const char* expected;  // hex of the file after
    } rows[] = {
        {"utf16 new", 1200, false, kNoFile, L"a\u00e9\u20ac", "FF FE 61 00 E9 00 AC 20"},
        {"utf16 surrogate pair", 1200, false, kNoFile, L"\U0001F600", "FF FE 3D D8 00 DE"},
        {"utf16 replace truncates", 1200, false, "41 42 43 44 45 46", L"x", "FF FE 78 00"},
        {"utf16 empty text still marks", 1200, false, kNoFile, L"", "FF FE"},
        {"utf16 append to new file: no mark", 1200, true, kNoFile, L"a", "61 00"},
        {"utf16 append to empty file: no mark", 1200, true, "", L"a", "61 00"},
        {"utf16 append after text", 1200, true, "FF FE 78 00", L"y", "FF FE 78 00 79 00"},
        {"utf8 without mark", 65001, false, kNoFile, L"a\u00e9\u20ac\U0001F600", "61 C3 A9 E2 82 AC F0 9F 98 80"},
        {"utf8 append", 65001, true, "61 62", L"c", "61 62 63"},
        {"utf8 empty text truncates", 65001, false, "61 62", L"", ""},
        {"ansi 1252", 1252, false, kNoFile, L"a\u00e9\u20ac", "61 E9 80"},
        {"1252 best fit for omega", 1252, false, kNoFile, L"\u03a9x", "4F 78"},
        {"1252 lacks a CJK character: default char", 1252, false, kNoFile, L"\u4e2dx", "3F 78"},
        {"oem 437", 437, false, kNoFile, L"\u00e9", "82"},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        const std::wstring file = folder / L"out.txt";
        if (row.existing) test::WriteFileBytes(file, Hex(row.existing));
        const test::Outcome outcome = test::OutcomeOf([&] { TextFileWriter(file, row.codePage, row.append).WriteText(row.text); });
        EXPECT_EQ(outcome.kind, "none") << row.name << ": " << testing::PrintToString(outcome.message);
        EXPECT_EQ(ToHex(test::ReadFileBytes(file)), row.expected) << row.name;
    }
}

TEST(TextFileReader, DecodesBytesOfEveryCodePage) {
    struct {
        const char* name;
        UINT codePage;
        const char* bytes;
        std::wstring_view expected;
    } rows[] = {
        {"utf16 mark skipped, nothing added", 1200, "FF FE 61 00", L"a"sv},
        {"utf16 without mark: every byte is text", 1200, "61 00 62 00", L"ab"sv},
        {"utf16 mark alone", 1200, "FF FE", L""sv},
        {"utf16 odd last byte dropped", 1200, "FF FE 61 00 62", L"a"sv},
        {"utf16 one byte", 1200, "61", L""sv},
        {"utf16 big-endian mark is text", 1200, "FE FF 00 61", L"\ufffe\u6100"sv},
        {"utf16 mark not at start is text", 1200, "61 00 FF FE", L"a\ufeff"sv},
        {"utf16 surrogate pair", 1200, "FF FE 3D D8 00 DE", L"\U0001F600"sv},
        {"utf16 empty", 1200, "", L""sv},
        {"utf8 mark stays in the text", 65001, "EF BB BF 61", L"\ufeffa"sv},
        {"utf8", 65001, "C3 A9 E2 82 AC", L"\u00e9\u20ac"sv},
        {"utf8 line breaks as they are", 65001, "61 0D 0A 62 0A", L"a\r\nb\n"sv},
        {"utf8 NUL byte decoded too", 65001, "61 00 62", L"a\0b"sv},
        {"utf8 empty", 65001, "", L""sv},
        {"ansi 1252", 1252, "80 E9", L"\u20ac\u00e9"sv},
        {"oem 437", 437, "82", L"\u00e9"sv},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        const std::wstring file = folder / L"in.txt";
        test::WriteFileBytes(file, Hex(row.bytes));
        std::wstring text = L"garbage";
        const test::Outcome outcome = test::OutcomeOf([&] { text = ReadText(file, row.codePage); });
        EXPECT_EQ(outcome.kind, "none") << row.name << ": " << testing::PrintToString(outcome.message);
        EXPECT_EQ(text, row.expected) << row.name;
    }
}

TEST(TextFileReader, BytesNotValidInTheCodePageFailTheRead) {
    struct {
        const char* name;
        UINT codePage;
        const char* bytes;
    } rows[] = {
        {"utf8 invalid sequence", 65001, "61 C3 28"},
        {"utf8 cut sequence at the end", 65001, "61 E2 82"},
        {"utf8 lone continuation byte", 65001, "80"},
        {"unknown code page", 12345, "61"},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        const std::wstring file = folder / L"in.txt";
        test::WriteFileBytes(file, Hex(row.bytes));
        const test::Outcome outcome = test::OutcomeOf([&] { (void)ReadText(file, row.codePage); });
        EXPECT_EQ(outcome.kind, "truntime_error") << row.name;
        EXPECT_EQ(outcome.message, L"Failed to convert text to Unicode.") << row.name;
    }
}

TEST(TextFileWriter, WriteTextEndsEveryLineFeedWithOneCarriageReturn) {
    struct {
        const wchar_t* text;
        const char* expected;
    } rows[] = {
        {L"a\nb", "61 0D 0A 62"},
        {L"a\r\nb", "61 0D 0A 62"},
        {L"a\r", "61 0D"},
        {L"", ""},
        {L"\n", "0D 0A"},
        {L"\n\n", "0D 0A 0D 0A"},
        {L"\r\n\n", "0D 0A 0D 0A"},
        {L"\r\r\n", "0D 0D 0A"},
        {L"a\n\rb", "61 0D 0A 0D 62"},
        {L"\n\r", "0D 0A 0D"},
        {L"x\n", "78 0D 0A"},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        const std::wstring file = folder / L"out.txt";
        TextFileWriter(file, 65001, false).WriteText(row.text);
        EXPECT_EQ(ToHex(test::ReadFileBytes(file)), row.expected) << testing::PrintToString(std::wstring(row.text));
    }
    test::ScratchFolder folder;
    TextFileWriter(folder / L"utf16.txt", 1200, false).WriteText(L"a\nb");
    EXPECT_EQ(ToHex(test::ReadFileBytes(folder / L"utf16.txt")), "FF FE 61 00 0D 00 0A 00 62 00");
}

// Many lines of every length, surrogate pairs at line ends and one line longer than any write batch: the
// bytes are those of the text with CR LF line breaks, nothing lost, doubled or split.
TEST(TextFileWriter, WriteTextOfALargeTextKeepsEveryCharacter) {
    std::wstring text, expected;
    for (int i = 0; i < 20000; ++i) {
        std::wstring line = std::to_wstring(i) + std::wstring(i % 97, L'\u00e9') + L"\U0001F600";
        if (i == 777) line += std::wstring(100000, L'x');
        text += line + (i % 3 == 0 ? L"\r\n" : L"\n");
        expected += line + L"\r\n";
    }
    test::ScratchFolder folder;
    TextFileWriter(folder / L"big.txt", 65001, false).WriteText(text.c_str());
    EXPECT_TRUE(ReadText(folder / L"big.txt", 65001) == expected);
}

TEST(TextFileWriter, WriteTakesTheGivenLength) {
    struct {
        std::wstring_view text;
        int length;
        const char* expected;
    } rows[] = {
        {L"abcdef"sv, 3, "61 62 63"},
        {L"ab"sv, -1, "61 62"},
        {L"ab\0cd"sv, -1, "61 62"},
        {L"ab\0cd"sv, 5, "61 62 00 63 64"},
        {L"ab"sv, 0, ""},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        TextFileWriter(folder / L"out.txt", 65001, false).Write(row.text.data(), row.length);
        EXPECT_EQ(ToHex(test::ReadFileBytes(folder / L"out.txt")), row.expected)
            << testing::PrintToString(std::wstring(row.text)) << " length " << row.length;
    }
}

TEST(TextFileWriter, UnknownCodePageFailsAtTheFirstTextAfterTheFileIsCreated) {
    test::ScratchFolder folder;
    const std::wstring file = folder / L"out.txt";
    test::WriteFileBytes(file, "old");
    test::Outcome outcome;
    {
        TextFileWriter writer(file, 12345, false);
        EXPECT_EQ(test::OutcomeOf([&] { writer.WriteText(L""); }).kind, "none");
        outcome = test::OutcomeOf([&] { writer.WriteText(L"a"); });
    }
    EXPECT_EQ(outcome.kind, "truntime_error");
    EXPECT_EQ(outcome.message, L"Failed to convert text to codepage 12345");
    EXPECT_EQ(test::ReadFileBytes(file), "");
}

TEST(TextFiles, OpenFailuresNameTheVerbTheFileAndTheSystemText) {
    test::ScratchFolder folder;
    const std::wstring missing = folder / L"missing.txt";
    const std::wstring inMissingFolder = folder / L"nofolder\\x.txt";
    const std::wstring held = folder / L"held.txt";
    TextFileWriter holder(held, 65001, false);  // open without sharing while the rows run
    struct {
        const char* name;
        std::function<void()> open;
        std::wstring expected;
    } rows[] = {
        {"read missing file", [&] { (void)TextFileReader(missing, 65001); },
         L"Failed to open '" + missing + L"': " + test::ErrorText(ERROR_FILE_NOT_FOUND)},
        {"read in missing folder", [&] { (void)TextFileReader(inMissingFolder, 1200); },
         L"Failed to open '" + inMissingFolder + L"': " + test::ErrorText(ERROR_PATH_NOT_FOUND)},
        {"read a file held by a writer", [&] { (void)TextFileReader(held, 65001); },
         L"Failed to open '" + held + L"': " + test::ErrorText(ERROR_SHARING_VIOLATION)},
        {"create on a folder", [&] { (void)TextFileWriter(folder.path(), 65001, false); },
         L"Failed to create '" + folder.path() + L"': " + test::ErrorText(ERROR_ACCESS_DENIED)},
        {"append on a folder", [&] { (void)TextFileWriter(folder.path(), 65001, true); },
         L"Failed to open '" + folder.path() + L"': " + test::ErrorText(ERROR_ACCESS_DENIED)},
        {"create in missing folder", [&] { (void)TextFileWriter(inMissingFolder, 1200, false); },
         L"Failed to create '" + inMissingFolder + L"': " + test::ErrorText(ERROR_PATH_NOT_FOUND)},
    };
    for (const auto& row : rows) {
        const test::Outcome outcome = test::OutcomeOf(row.open);
        EXPECT_EQ(outcome.kind, "win32_error") << row.name;
        EXPECT_EQ(outcome.message, row.expected) << row.name;
    }
}

// The size check comes before any buffer is made, so sparse files show it without using the space.
TEST(TextFileReader, FilesTooBigToReadAreRefusedBeforeReading) {
    struct {
        const char* name;
        UINT codePage;
        LONGLONG size;
    } rows[] = {
        {"4 GiB and more", 1200, 0x100000010LL},
        {"4 GiB and more, utf8", 65001, 0x100000000LL},
        {"over 2 GiB to convert", 65001, 0x80000001LL},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        const std::wstring file = folder / L"huge.bin";
        {
            unique_file handle(::CreateFileW(file.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
            ASSERT_TRUE(handle);
            LARGE_INTEGER end{};
            end.QuadPart = row.size;
            if (!::SetFilePointerEx(handle.get(), end, nullptr, FILE_BEGIN) || !::SetEndOfFile(handle.get()))
                GTEST_SKIP() << "the file system refuses a sparse file of " << row.size << " bytes";
        }
        const test::Outcome outcome = test::OutcomeOf([&] { (void)ReadText(file, row.codePage); });
        EXPECT_EQ(outcome.kind, "truntime_error") << row.name;
        EXPECT_EQ(outcome.message, L"File '" + file + L"' too big to read.") << row.name;
    }
}

TEST(FileHandle, ReadsReportShortCountsAndWritesGoWhereTheModeSays) {
    test::ScratchFolder folder;
    const std::wstring file = folder / L"bytes.bin";
    test::WriteFileBytes(file, "abc");

    FileHandle append;
    append.Open(file, FileMode::Append);
    append.WriteBytes("d", 1);
    append.Close();
    EXPECT_EQ(test::ReadFileBytes(file), "abcd");

    FileHandle reader;
    reader.Open(file, FileMode::Read);
    char buffer[8] = {};
    DWORD read = 0xDEAD;
    EXPECT_TRUE(reader.ReadBytes(buffer, 2, &read));
    EXPECT_EQ(read, 2u);
    read = 0xDEAD;
    EXPECT_FALSE(reader.ReadBytes(buffer, 8, &read));
    EXPECT_EQ(read, 2u);
    EXPECT_EQ(std::string(buffer, 2), "cd");
    EXPECT_EQ(reader.Name(), file);
}

TEST(FileHandle, AFailedOpenStillClosesTheHandleHeldBefore) {
    test::ScratchFolder folder;
    const std::wstring file = folder / L"exclusive.bin";
    FileHandle handle;
    handle.Open(file, FileMode::Create);  // held without sharing
    ::SetLastError(0xDEAD);
    EXPECT_EQ(handle.OpenQuiet(folder / L"missing.bin", FileMode::Read), INVALID_HANDLE_VALUE);
    EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
    EXPECT_FALSE(handle.IsOpen());
    FileHandle other;
    EXPECT_NE(other.OpenQuiet(file, FileMode::Create), INVALID_HANDLE_VALUE) << "the first handle is still open";
}
