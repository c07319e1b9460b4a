// Replace in File through its action component, checked against the bytes of the files it reads and writes.
#include "actions/replace/casemap.h"
#include "actions/replace/regex_traits.h"
#include "fileutil/scratch.h"
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include "frame/component.h"
#include "frame/handles.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr long kGarbageStatus = 0x5A5A;
const char kMissing[] = "<missing>";
const wchar_t kNoReplacements[] = L"No replacements made in file";
const wchar_t kUncounted[] = L"Replacement(s) made in file";

std::wstring Counted(long count) { return std::to_wstring(count) + L" replacement(s) made in file"; }

// The properties of one step; a property left empty is not held by the step.
struct Step {
    std::wstring fileIn;
    std::wstring fileOut;
    std::wstring find;
    std::wstring replace;
    bool literal = false;
    bool caseSensitive = false;
    bool attr = false;
    std::optional<long> encoding = 65001;
};

struct Outcome {
    HRESULT hr;
    long status;
    std::vector<std::wstring> log;
    std::wstring description;  // the thread's error information after a failure
};

VARIANT Bool(bool value) {
    VARIANT v;
    V_VT(&v) = VT_BOOL;
    V_BOOL(&v) = value ? VARIANT_TRUE : VARIANT_FALSE;
    return v;
}

std::wstring ThreadErrorDescription() {
    tol::com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"<none>";
    tol::bstr text;
    info->GetDescription(text.receive());
    return text.str();
}

// Executes the step through the Replace in File component as the host does.
Outcome Execute(const Step& properties) {
    test::TestStep step;
    if (properties.encoding) {
        VARIANT v;
        V_VT(&v) = VT_I4;
        V_I4(&v) = *properties.encoding;
        step.Set(L"Encoding", v);
    }
    step.SetText(L"FileIn", properties.fileIn);
    step.SetText(L"FileOut", properties.fileOut);
    step.SetText(L"Find", properties.find);
    step.SetText(L"Replace", properties.replace);
    step.Set(L"Literal", Bool(properties.literal));
    step.Set(L"CaseSensitive", Bool(properties.caseSensitive));
    step.Set(L"Attr", Bool(properties.attr));
    test::TestBuild build;
    tol::com_ptr<IBuildAction> action;
    Outcome outcome{tol::CreateComponent(*tol::FindClass(CLSID_FileReplaceAction), IID_IBuildAction, action.put_void()),
                    kGarbageStatus, {}, {}};
    if (FAILED(outcome.hr)) return outcome;
    ::SetErrorInfo(0, nullptr);
    outcome.hr = action->Execute(&build, &step, &outcome.status);
    if (FAILED(outcome.hr)) outcome.description = ThreadErrorDescription();
    outcome.log = build.log;
    return outcome;
}

// A row of a replacement table: the input file's bytes in 65001, and what the output file and the log hold after.
struct ReplaceRow {
    const char* name;
    const wchar_t* find;
    const wchar_t* replace;
    bool caseSensitive;
    std::string input;
    std::string output;
    std::wstring logLine;
};

void CheckReplacements(const std::vector<ReplaceRow>& rows, bool literal) {
    test::ScratchFolder folder;
    const std::wstring in = folder / L"in.txt";
    const std::wstring out = folder / L"out.txt";
    for (const ReplaceRow& row : rows) {
        test::WriteFileBytes(in, row.input);
        ::DeleteFileW(out.c_str());
        Step step{in, out, row.find, row.replace, literal, row.caseSensitive};
        const Outcome outcome = Execute(step);
        EXPECT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        EXPECT_EQ(test::ReadFileBytes(out), row.output) << row.name;
        EXPECT_EQ(test::ReadFileBytes(in), row.input) << row.name << ": the input changed";
        EXPECT_EQ(outcome.log, std::vector<std::wstring>{row.logLine}) << row.name;
    }
}

} // namespace

TEST(ReplaceInFile, LiteralLinesReplaceInPairs) {
    CheckReplacements(
        {
            {"one pair", L"abc", L"xyz", true, "abc-abc", "xyz-xyz", Counted(2)},
            {"three search lines, two replacements: the third is deleted", L"a\r\nb\r\nc", L"1\r\n2", true,
             "abcabc", "1212", Counted(6)},
            {"blank replacement line dropped before pairing", L"a\nb\nc", L"1\n\n3", true, "a b c", "1 3 ", Counted(3)},
            {"blank search lines dropped", L"\r\n\r\na\r\n\r\nb", L"1\r\n2", true, "ab", "12", Counted(2)},
            {"no replacement lines deletes", L"-", L"", true, "a-b-c", "abc", Counted(2)},
            {"pairs run one after the other", L"a\nb", L"b\nc", true, "ab", "cc", Counted(3)},
            {"the scan does not run into the inserted text", L"a", L"aa", true, "banana", "baanaanaa", Counted(3)},
            {"occurrences do not overlap", L"aa", L"x", true, "aaaaa", "xxa", Counted(2)},
            {"case-sensitive leaves other cases", L"abc", L"xyz", true, "abc ABC Abc", "xyz ABC Abc", Counted(1)},
            {"caseless replaces every case", L"abc", L"xyz", false, "abc ABC Abc aBc", "xyz xyz xyz xyz", Counted(4)},
            {"caseless beyond ASCII", L"\u043f\u0440\u0438", L"ok", false, "\xD0\x9F\xD0\xA0\xD0\x98 \xD0\xBF\xD1\x80\xD0\xB8",
             "ok ok", Counted(2)},
            {"caseless, search in capitals", L"\u00c9T\u00c9", L"x", false, "\xC3\xA9t\xC3\xA9", "x", Counted(1)},
            {"caseless pair equal up to case is skipped", L"abc", L"ABC", false, "abc", "abc", kNoReplacements},
            {"case-sensitive pair equal up to case is not", L"abc", L"ABC", true, "abc", "ABC", Counted(1)},
            {"identical pair is skipped", L"abc", L"abc", true, "abc", "abc", kNoReplacements},
            {"nothing found", L"zzz", L"y", true, "abc", "abc", kNoReplacements},
            {"empty Find", L"", L"", true, "abc", "abc", kNoReplacements},
            {"empty file", L"a", L"b", true, "", "", kNoReplacements},
            {"the output gets CR LF", L"b", L"B", true, "a\nb\n", "a\r\nB\r\n", Counted(1)},
            {"a NUL in the text is kept", L"c", L"x", true, std::string("a\0b\nc", 5), std::string("a\0b\r\nx", 6),
             Counted(1)},
            {"regular-expression characters are literal", L"a.c", L"$&", true, "abc a.c", "abc $&", Counted(1)},
        },
        true);
}

TEST(ReplaceInFile, RegularExpressionReplacesEveryMatchThroughTheFormat) {
    CheckReplacements(
        {
            {"colou?r, caseless", L"colou?r", L"colour", false, "color Color", "colour colour", kUncounted},
            {"only colour: unchanged", L"colou?r", L"colour", false, "colour", "colour", kNoReplacements},
            {"colou?r, case-sensitive", L"colou?r", L"colour", true, "color Color", "colour Color", kUncounted},
            {"numbered groups", L"(\\w+)@(\\w+)", L"$2 at $1", true, "me@host, you@there", "host at me, there at you",
             kUncounted},
            {"whole match", L"v(\\d+)", L"[$&]", true, "v1 v22 x", "[v1] [v22] x", kUncounted},
            {"empty matches everywhere", L"x*", L"-", true, "ab", "-a-b-", kUncounted},
            {"matches that change nothing", L"a", L"a", true, "aaa", "aaa", kNoReplacements},
            {"the whole Find, line break included", L"a\r\nb", L"+", true, "a\nb a\r\nb", "a\r\nb +", kUncounted},
            {"caseless beyond ASCII", L"\u043f\u0440\u0438", L"ok", false, "\xD0\x9F\xD0\xA0\xD0\x98", "ok", kUncounted},
            {"\\w takes letters beyond ASCII", L"\\w+", L"<$&>", true, "caf\xC3\xA9 \xD0\xB6", "<caf\xC3\xA9> <\xD0\xB6>",
             kUncounted},
            {"\\d and classes", L"[[:digit:]]+\\.\\d", L"N", true, "v12.3 x.4", "vN x.4", kUncounted},
            {"escapes in the format", L"-", L"\\t", true, "a-b", "a\tb", kUncounted},
            {"case escapes in the format beyond ASCII", L"\\w+", L"\\U$&", true, "\xD0\xB6\xD1\x83\xD0\xBA x",
             "\xD0\x96\xD0\xA3\xD0\x9A X", kUncounted},
            {"the text is one string, not lines", L"a.b", L"X", true, "a\nb", "X", kUncounted},
        },
        false);
}

TEST(ReplaceInFile, CodePagesOfTheFiles) {
    struct Row {
        const char* name;
        std::optional<long> encoding;
        std::string input;
        std::string output;
    } rows[] = {
        {"1200 with mark", 1200, test::Hex("FF FE 61 00 62 00 0A 00"), test::Hex("FF FE 78 00 62 00 0D 00 0A 00")},
        {"1200 without mark gets one", 1200, test::Hex("61 00 62 00"), test::Hex("FF FE 78 00 62 00")},
        {"65001 keeps its EF BB BF", 65001, test::Hex("EF BB BF 61 C3 A9"), test::Hex("EF BB BF 78 C3 A9")},
        {"1252", 1252, test::Hex("61 E9 80"), test::Hex("78 E9 80")},
        {"1251", 1251, test::Hex("61 C6"), test::Hex("78 C6")},
        {"no Encoding: ANSI", std::nullopt, "ab", "xb"},
    };
    test::ScratchFolder folder;
    for (const Row& row : rows) {
        const std::wstring file = folder / L"cp.txt";
        test::WriteFileBytes(file, row.input);
        Step step{file, file, L"a", L"x", true, true};
        step.encoding = row.encoding;
        const Outcome outcome = Execute(step);
        EXPECT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(test::ToHex(test::ReadFileBytes(file)), test::ToHex(row.output)) << row.name;
        EXPECT_EQ(outcome.log, std::vector<std::wstring>{Counted(1)}) << row.name;
    }
}

TEST(ReplaceInFile, AnUnchangedTextIsNotWrittenOverItsOwnFile) {
    test::ScratchFolder folder;
    const std::wstring in = folder / L"same.txt";
    const std::wstring other = folder / L"other.txt";
    // Written back, the LF would become CR LF: the bytes show whether the file was rewritten.
    const std::string lf = "a\nb";
    struct Row {
        const char* name;
        std::wstring fileOut;
        bool literal;
        const wchar_t* find;
        const wchar_t* replace;
        std::string inAfter;
        std::string otherAfter;
        std::wstring logLine;
    } rows[] = {
        {"same file, nothing found", in, true, L"z", L"y", lf, kMissing, kNoReplacements},
        {"same file in other case", folder / L"SAME.TXT", true, L"z", L"y", lf, kMissing, kNoReplacements},
        {"same file, expression changes nothing", in, false, L"a", L"a", lf, kMissing, kNoReplacements},
        {"same file, a replacement", in, true, L"a", L"A", "A\r\nb", kMissing, Counted(1)},
        {"other file, nothing found", other, true, L"z", L"y", lf, "a\r\nb", kNoReplacements},
    };
    for (const Row& row : rows) {
        test::WriteFileBytes(in, lf);
        ::DeleteFileW(other.c_str());
        const Outcome outcome = Execute({in, row.fileOut, row.find, row.replace, row.literal, true});
        EXPECT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(test::ReadFileBytes(in), row.inAfter) << row.name;
        EXPECT_EQ(test::ReadFileBytes(other), row.otherAfter) << row.name;
        EXPECT_EQ(outcome.log, std::vector<std::wstring>{row.logLine}) << row.name;
    }
}

// Every failure before the write leaves the input as it was and creates no output file.
TEST(ReplaceInFile, BadInputFailsTheStepAndTouchesNoFile) {
    test::ScratchFolder folder;
    const std::wstring in = folder / L"in.txt";
    const std::wstring out = folder / L"out.txt";
    const std::wstring missing = folder / L"missing.txt";
    struct Row {
        const char* name;
        std::optional<std::string> input;  // none: FileIn does not exist
        long encoding;
        bool literal;
        const wchar_t* find;
        const wchar_t* replace;
        std::wstring description;          // the whole description, or its start when it ends in "..."
    } rows[] = {
        {"invalid expression", "abc", 65001, false, L"(abc", L"x", L"Invalid regular expression '(abc': ..."},
        {"invalid expression: bad class", "abc", 65001, false, L"[[:nothing:]]", L"x",
         L"Invalid regular expression '[[:nothing:]]': ..."},
        {"the library gives up matching", std::string(5000, 'a'), 65001, false, L"(a+)+b", L"x",
         L"Failed to match regular expression '(a+)+b': ..."},
        {"more replacement lines than search lines", "abc", 65001, true, L"a", L"1\r\n2",
         L"Number of search and replacement strings must match."},
        {"replacement lines without search lines", "abc", 65001, true, L"\r\n", L"1",
         L"Number of search and replacement strings must match."},
        {"missing input", std::nullopt, 65001, true, L"a", L"b",
         L"Failed to open '" + missing + L"': " + test::ErrorText(ERROR_FILE_NOT_FOUND)},
        {"bytes invalid in UTF-8", std::string("a\xC3("), 65001, true, L"a", L"b", L"Failed to convert text to Unicode."},
        {"unknown code page", "abc", 12345, true, L"a", L"b", L"Failed to convert text to Unicode."},
    };
    for (const Row& row : rows) {
        for (const bool sameFile : {false, true}) {
            const std::string name = std::string(row.name) + (sameFile ? ", same file" : ", other file");
            ::DeleteFileW(out.c_str());
            if (row.input) test::WriteFileBytes(in, *row.input);
            const std::wstring fileIn = row.input ? in : missing;
            Step step{fileIn, sameFile ? fileIn : out, row.find, row.replace, row.literal, true};
            step.encoding = row.encoding;
            const Outcome outcome = Execute(step);
            EXPECT_EQ(outcome.hr, E_FAIL) << name;
            EXPECT_EQ(outcome.status, kGarbageStatus) << name << ": status written on failure";
            const std::wstring& expected = row.description;
            if (expected.size() > 3 && expected.compare(expected.size() - 3, 3, L"...") == 0) {
                EXPECT_EQ(outcome.description.substr(0, expected.size() - 3), expected.substr(0, expected.size() - 3)) << name;
                EXPECT_GT(outcome.description.size(), expected.size()) << name << ": no reason given";
            } else {
                EXPECT_EQ(outcome.description, expected) << name;
            }
            EXPECT_TRUE(outcome.log.empty()) << name;
            EXPECT_EQ(test::ReadFileBytes(fileIn), row.input.value_or(kMissing)) << name;
            EXPECT_EQ(test::ReadFileBytes(out), kMissing) << name;
        }
    }
}

// An empty input needs no conversion to be read: the code page is found unknown only when there is something to
// write, and before the output file is created.
TEST(ReplaceInFile, AnUnknownCodePageFailsBeforeAnEmptyTextIsWritten) {
    test::ScratchFolder folder;
    const std::wstring in = folder / L"in.txt";
    const std::wstring out = folder / L"out.txt";
    test::WriteFileBytes(in, "");
    Step step{in, out, L"a", L"b", true, true};
    step.encoding = 12345;
    const Outcome other = Execute(step);
    EXPECT_EQ(other.hr, E_FAIL);
    EXPECT_EQ(other.description, L"Failed to convert text to codepage 12345");
    EXPECT_EQ(test::ReadFileBytes(out), kMissing);

    step.fileOut = in;  // nothing replaced in the file itself: nothing to write
    const Outcome same = Execute(step);
    EXPECT_EQ(same.hr, S_OK) << same.description;
    EXPECT_EQ(same.log, std::vector<std::wstring>{kNoReplacements});
    EXPECT_EQ(test::ReadFileBytes(in), "");
}

TEST(ReplaceInFile, AFileOf4GiBIsNotRead) {
    test::ScratchFolder folder;
    const std::wstring in = folder / L"big.txt";
    const std::wstring out = folder / L"out.txt";
    {
        tol::unique_file file(::CreateFileW(in.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
        ASSERT_TRUE(file);
        LARGE_INTEGER size;
        size.QuadPart = 0x100000000LL;  // sparse on the Unix side: nothing is written
        ASSERT_TRUE(::SetFilePointerEx(file.get(), size, nullptr, FILE_BEGIN));
        ASSERT_TRUE(::SetEndOfFile(file.get()));
    }
    const Outcome outcome = Execute({in, out, L"a", L"b", true, true});
    EXPECT_EQ(outcome.hr, E_FAIL);
    EXPECT_EQ(outcome.description, L"File '" + in + L"' too big to read.");
    EXPECT_EQ(test::ReadFileBytes(out), kMissing);
}

TEST(ReplaceInFile, AttrMakesAReadOnlyOutputWriteable) {
    test::ScratchFolder folder;
    const std::wstring in = folder / L"in.txt";
    const std::wstring out = folder / L"out.txt";
    test::WriteFileBytes(in, "abc");
    test::WriteFileBytes(out, "old");
    ASSERT_TRUE(::SetFileAttributesW(out.c_str(), FILE_ATTRIBUTE_READONLY));
    Step step{in, out, L"b", L"x", true, true};
    step.attr = true;
    const Outcome outcome = Execute(step);
    EXPECT_EQ(outcome.hr, S_OK) << outcome.description;
    EXPECT_EQ(test::ReadFileBytes(out), "axc");
    EXPECT_EQ(::GetFileAttributesW(out.c_str()) & FILE_ATTRIBUTE_READONLY, 0u);
}

// The literal search looks case forms up in a table: it must hold CharLowerW's and CharUpperW's answers.
TEST(ReplaceInFile, CaseTableHoldsThePlatformsSingleCharacterAnswers) {
    const tol::CaseMap map;
    int wrong = 0;
    for (unsigned c = 1; c < 0x10000 && wrong < 5; ++c) {
        if (c >= 0xD800 && c < 0xE000) continue;
        const auto lower = static_cast<wchar_t>(reinterpret_cast<UINT_PTR>(::CharLowerW(reinterpret_cast<LPWSTR>(c))));
        const auto upper = static_cast<wchar_t>(reinterpret_cast<UINT_PTR>(::CharUpperW(reinterpret_cast<LPWSTR>(c))));
        if (map.Lower(static_cast<wchar_t>(c)) != lower || map.Upper(static_cast<wchar_t>(c)) != upper) {
            ADD_FAILURE() << "U+" << std::hex << c << ": table " << map.Lower(static_cast<wchar_t>(c)) << "/"
                          << map.Upper(static_cast<wchar_t>(c)) << ", platform " << lower << "/" << upper;
            ++wrong;
        }
    }
}

// The regular expressions look case forms and character types up in tables: every answer must be the one that the
// library's Win32 traits get from the platform, character by character.
TEST(ReplaceInFile, RegexTraitsAnswerAsTheWin32Traits) {
    const boost::w32_regex_traits<wchar_t> platform;
    const tol::PlatformRegexTraits tables;
    std::vector<std::pair<std::wstring, tol::PlatformRegexTraits::char_class_type>> classes;
    for (const wchar_t* name : {L"alnum", L"alpha", L"blank", L"cntrl", L"digit", L"graph", L"lower", L"print", L"punct",
                                L"space", L"upper", L"xdigit", L"word", L"unicode", L"h", L"v"}) {
        const std::wstring text = name;
        classes.emplace_back(text, platform.lookup_classname(text.data(), text.data() + text.size()));
        ASSERT_NE(classes.back().second, 0u) << "no class " << testing::PrintToString(text);
    }
    int wrong = 0;
    for (unsigned u = 0; u < 0x10000 && wrong < 5; ++u) {
        const auto c = static_cast<wchar_t>(u);
        if (tables.translate(c, true) != platform.translate(c, true) || tables.toupper(c) != platform.toupper(c)) {
            ADD_FAILURE() << "U+" << std::hex << u << ": case forms differ";
            ++wrong;
        }
        for (const auto& [name, mask] : classes) {
            if (tables.isctype(c, mask) != platform.isctype(c, mask)) {
                ADD_FAILURE() << "U+" << std::hex << u << ": class " << testing::PrintToString(name) << " differs";
                ++wrong;
            }
        }
    }
}
