// Replace in File through its action component, checked against the bytes of the files it reads and writes.
#include "actions/replace/casemap.h"
#include "actions/replace/regex_traits.h"
#include "fileutil/scratch.h"
#include "frame/component.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>

namespace {

const std::wstring kNone = L"ok: No replacements made in file";
const std::wstring kUncounted = L"ok: Replacement(s) made in file";
std::wstring Counted(long count) { return L"ok: " + std::to_wstring(count) + L" replacement(s) made in file"; }

struct Step {
    std::wstring fileIn;
    std::wstring fileOut;
    const wchar_t* find;
    const wchar_t* replace;
    bool literal = true;
    bool caseSensitive = true;
    const wchar_t* encoding = L"65001";  // null: not held
    bool attr = false;
};

// Executes Replace in File as the host does: "ok" with the log, or "E_FAIL" with the log and the host's description.
std::wstring Execute(const Step& s) {
    test::TestStep step;
    if (s.encoding) step.SetText(L"Encoding", s.encoding);
    step.SetText(L"FileIn", s.fileIn);
    step.SetText(L"FileOut", s.fileOut);
    step.SetText(L"Find", s.find);
    step.SetText(L"Replace", s.replace);
    step.SetText(L"Literal", s.literal ? L"-1" : L"0");
    step.SetText(L"CaseSensitive", s.caseSensitive ? L"-1" : L"0");
    step.SetText(L"Attr", s.attr ? L"-1" : L"0");
    test::TestBuild build;
    tol::com_ptr<IBuildAction> action;
    EXPECT_EQ(tol::CreateComponent(*tol::FindClass(CLSID_FileReplaceAction), IID_IBuildAction, action.put_void()), S_OK);
    long status = 0x5A5A;
    const HRESULT hr = action->Execute(&build, &step, &status);
    EXPECT_EQ(status, hr == S_OK ? long{tol::StepSucceeded} : 0x5A5A) << "the status is written on success only";
    std::wstring outcome = hr == S_OK ? L"ok" : hr == E_FAIL ? L"E_FAIL" : L"another HRESULT";
    for (const std::wstring& line : build.log) outcome += L": " + line;
    tol::com_ptr<IErrorInfo> info;
    tol::bstr description;
    if (hr != S_OK && ::GetErrorInfo(0, info.put()) == S_OK) info->GetDescription(description.receive());
    return hr == S_OK ? outcome : outcome + L": " + description.str();
}

} // namespace

// Each row runs on in.txt; the output is that of FileOut afterwards, and another FileOut leaves the input as it was.
// A failure before the write touches no file. An outcome ending in "..." is compared up to there.
TEST(ReplaceInFile, ReplacesLiteralLinesInPairsOrAnExpressionAndFailsBeforeTouchingAFile) {
    test::ScratchFolder folder;
    const std::wstring in = folder / L"in.txt";
    const std::string missing = "<missing>";
    const struct {
        bool literal;
        const wchar_t* find;
        const wchar_t* replace;
        bool caseSensitive;
        std::string input;
        std::string output;
        std::wstring outcome;
        const wchar_t* fileOut = L"out.txt";
        const wchar_t* encoding = L"65001";
    } rows[] = {
        {true, L"abc", L"xyz", true, "abc-abc", "xyz-xyz", Counted(2)},
        {true, L"a\r\nb\r\nc", L"1\r\n2", true, "abcabc", "1212", Counted(6)},
        {true, L"a\nb\nc", L"1\n\n3", true, "a b c", "1 3 ", Counted(3)},
        {true, L"a\nb", L"b\nc", true, "ab", "cc", Counted(3)},
        {true, L"a", L"aa", true, "banana", "baanaanaa", Counted(3)},
        {true, L"abc", L"xyz", true, "abc ABC", "xyz ABC", Counted(1)},
        {true, L"\u043f\u0440\u0438", L"ok", false, "\xD0\x9F\xD0\xA0\xD0\x98 \xD0\xBF\xD1\x80\xD0\xB8", "ok ok", Counted(2)},
        {true, L"\u00c9T\u00c9", L"x", false, "\xC3\xA9t\xC3\xA9", "x", Counted(1)},
        {true, L"abc", L"ABC", false, "abc", "abc", kNone},
        {true, L"abc", L"ABC", true, "abc", "ABC", Counted(1)},
        {true, L"abc", L"abc", true, "abc", "abc", kNone},
        {true, L"", L"", true, "abc", "abc", kNone},
        {true, L"b", L"B", true, "a\nb\n", "a\r\nB\r\n", Counted(1)},
        {true, L"c", L"x", true, std::string("a\0b\nc", 5), std::string("a\0b\r\nx", 6), Counted(1)},
        {true, L"a.c", L"$&", true, "abc a.c", "abc $&", Counted(1)},
        {false, L"colou?r", L"colour", false, "color Color", "colour colour", kUncounted},
        {false, L"colou?r", L"colour", true, "color Color", "colour Color", kUncounted},
        {false, L"(\\w+)@(\\w+)", L"$2 at $1", true, "me@host", "host at me", kUncounted},
        {false, L"x*", L"-", true, "ab", "-a-b-", kUncounted},
        {false, L"a\r\nb", L"+", true, "a\nb a\r\nb", "a\r\nb +", kUncounted},
        {false, L"\u043f\u0440\u0438", L"ok", false, "\xD0\x9F\xD0\xA0\xD0\x98", "ok", kUncounted},
        {false, L"[[:digit:]]+\\.\\d", L"N", true, "v12.3 x.4", "vN x.4", kUncounted},
        {false, L"\\w+", L"<\\U$&>", true, "caf\xC3\xA9 \xD0\xB6", "<CAF\xC3\x89> <\xD0\x96>", kUncounted},
        // Code pages, the file replaced in place.
        {true, L"a", L"x", true, test::Hex("FF FE 61 00 0A 00"), test::Hex("FF FE 78 00 0D 00 0A 00"), Counted(1), L"in.txt",
         L"1200"},
        {true, L"a", L"x", true, test::Hex("61 00 62 00"), test::Hex("FF FE 78 00 62 00"), Counted(1), L"in.txt", L"1200"},
        {true, L"a", L"x", true, test::Hex("61 C6"), test::Hex("78 C6"), Counted(1), L"in.txt", L"1251"},
        {true, L"a", L"x", true, "ab", "xb", Counted(1), L"in.txt", nullptr},
        // An unchanged text is not written over its own file: written, its LF would become CR LF.
        {true, L"z", L"y", true, "a\nb", "a\nb", kNone, L"in.txt"},
        {true, L"z", L"y", true, "a\nb", "a\nb", kNone, L"IN.TXT"},
        {false, L"a", L"a", true, "a\nb", "a\nb", kNone, L"in.txt"},
        {true, L"z", L"y", true, "a\nb", "a\r\nb", kNone},
        {true, L"", L"", true, "", "", kNone, L"in.txt", L"12345"},
        // Failures.
        {false, L"(abc", L"x", true, "abc", missing, L"E_FAIL: Invalid regular expression '(abc': ..."},
        {false, L"(a+)+b", L"x", true, std::string(40, 'a'), missing,
         L"E_FAIL: Failed to match regular expression '(a+)+b': ..."},
        {true, L"a", L"1\r\n2", true, "abc", missing, L"E_FAIL: Number of search and replacement strings must match."},
        {true, L"a", L"1\r\n2", true, "abc", "abc", L"E_FAIL: Number of search and replacement strings must match.", L"in.txt"},
        {true, L"a", L"b", true, missing, missing,
         L"E_FAIL: Failed to open '" + in + L"': " + test::ErrorText(ERROR_FILE_NOT_FOUND)},
        {true, L"a", L"b", true, "a\xC3(", missing, L"E_FAIL: Failed to convert text to Unicode."},
        {true, L"a", L"b", true, "a\xC3(", "a\xC3(", L"E_FAIL: Failed to convert text to Unicode.", L"in.txt"},
        {true, L"a", L"b", true, "abc", missing, L"E_FAIL: Failed to convert text to Unicode.", L"out.txt", L"12345"},
        {true, L"", L"", true, "", missing, L"E_FAIL: Failed to convert text to codepage 12345", L"out.txt", L"12345"},
    };
    for (const auto& row : rows) {
        if (row.input == missing) ::DeleteFileW(in.c_str());
        else test::WriteFileBytes(in, row.input);
        ::DeleteFileW((folder / L"out.txt").c_str());
        Step step{in, folder / row.fileOut, row.find, row.replace, row.literal, row.caseSensitive, row.encoding};
        std::wstring outcome = Execute(step);
        const size_t prefix = row.outcome.size() - 3;
        if (row.outcome.compare(prefix, 3, L"...") == 0 && outcome.size() > row.outcome.size())
            outcome.replace(prefix, outcome.npos, L"...");
        EXPECT_EQ(outcome, row.outcome) << "row " << &row - rows;
        EXPECT_EQ(test::ToHex(test::ReadFileBytes(folder / row.fileOut)), test::ToHex(row.output)) << "row " << &row - rows;
        if (::lstrcmpiW(row.fileOut, L"in.txt") != 0) {
            EXPECT_EQ(test::ReadFileBytes(in), row.input) << "row " << &row - rows;
        }
    }
}

// The size is checked before anything is read: sparse files show it without using the space.
TEST(ReplaceInFile, FilesTooBigToReadAreRefused) {
    test::ScratchFolder folder;
    const std::wstring in = folder / L"big.txt";
    for (const LONGLONG size : {0x100000000LL, 0x80000001LL}) {
        {
            tol::unique_file file(::CreateFileW(in.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
            const LARGE_INTEGER end{{static_cast<DWORD>(size), static_cast<LONG>(size >> 32)}};
            ASSERT_TRUE(::SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN) && ::SetEndOfFile(file.get()));
        }
        EXPECT_EQ(Execute({in, folder / L"out.txt", L"a", L"b"}), L"E_FAIL: File '" + in + L"' too big to read.") << size;
        EXPECT_EQ(test::ReadFileBytes(folder / L"out.txt"), "<missing>");
    }
}

TEST(ReplaceInFile, AttrMakesAReadOnlyOutputWriteable) {
    test::ScratchFolder folder;
    test::WriteFileBytes(folder / L"in.txt", "abc");
    test::WriteFileBytes(folder / L"out.txt", "old");
    ASSERT_TRUE(::SetFileAttributesW((folder / L"out.txt").c_str(), FILE_ATTRIBUTE_READONLY));
    Step step{folder / L"in.txt", folder / L"out.txt", L"b", L"x"};
    step.attr = true;
    EXPECT_EQ(Execute(step), Counted(1));
    EXPECT_EQ(test::ReadFileBytes(folder / L"out.txt"), "axc");
}

// The literal search and the expressions look case forms and character types up in tables: every answer must be the
// platform's (CharLowerW and CharUpperW, the library's Win32 traits), character by character.
TEST(ReplaceInFile, CaseAndTypeTablesAnswerAsThePlatform) {
    const tol::CaseMap map;
    const boost::w32_regex_traits<wchar_t> platform;
    const tol::PlatformRegexTraits tables;
    std::vector<tol::PlatformRegexTraits::char_class_type> classes;
    for (const std::wstring name : {L"alnum", L"alpha", L"blank", L"cntrl", L"digit", L"graph", L"lower", L"print",
                                    L"punct", L"space", L"upper", L"xdigit", L"word", L"unicode", L"h", L"v"})
        classes.push_back(platform.lookup_classname(name.data(), name.data() + name.size()));
    ASSERT_EQ(std::count(classes.begin(), classes.end(), 0u), 0) << "a class name the library does not know";
    int wrong = 0;
    for (unsigned u = 1; u < 0x10000 && wrong < 5; ++u) {
        const auto c = static_cast<wchar_t>(u);
        const auto lower = static_cast<wchar_t>(reinterpret_cast<UINT_PTR>(::CharLowerW(reinterpret_cast<LPWSTR>(u))));
        const auto upper = static_cast<wchar_t>(reinterpret_cast<UINT_PTR>(::CharUpperW(reinterpret_cast<LPWSTR>(u))));
        bool same = tables.translate(c, true) == platform.translate(c, true) && tables.toupper(c) == platform.toupper(c);
        same = same && ((u >= 0xD800 && u < 0xE000) || (map.Lower(c) == lower && map.Upper(c) == upper));
        for (const auto mask : classes) same = same && tables.isctype(c, mask) == platform.isctype(c, mask);
        if (!same) {
            ADD_FAILURE() << "U+" << std::hex << u << " is answered otherwise";
            ++wrong;
        }
    }
}
