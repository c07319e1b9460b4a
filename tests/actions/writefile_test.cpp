// Write File through its action component, checked against the bytes that it leaves in the file.
#include "fileutil/scratch.h"
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include "frame/component.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <optional>
#include <string>

namespace {

constexpr long kGarbageStatus = 0x5A5A;
const char kMissing[] = "<missing>";

// Executes the step through the Write File component as the host does; the status keeps its garbage on failure.
HRESULT ExecuteWriteFile(test::TestBuild& build, test::TestStep& step, long& status) {
    tol::com_ptr<IBuildAction> action;
    const HRESULT created =
        tol::CreateComponent(*tol::FindClass(CLSID_WriteFileAction), IID_IBuildAction, action.put_void());
    if (FAILED(created)) return created;
    status = kGarbageStatus;
    return action->Execute(&build, &step, &status);
}

std::wstring ThreadErrorDescription() {
    tol::com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"<none>";
    tol::bstr text;
    info->GetDescription(text.receive());
    return text.str();
}

VARIANT Bool(bool value) {
    VARIANT v;
    V_VT(&v) = VT_BOOL;
    V_BOOL(&v) = value ? VARIANT_TRUE : VARIANT_FALSE;
    return v;
}

VARIANT Long(long value) {
    VARIANT v;
    V_VT(&v) = VT_I4;
    V_I4(&v) = value;
    return v;
}

// How a row gives Encoding: not held by the step, held as an empty text, or as a number.
struct Encoding {
    enum Kind { NotHeld, EmptyText, Number } kind;
    long codePage;
};
constexpr Encoding kNoEncoding{Encoding::NotHeld, 0};
constexpr Encoding kEmptyEncoding{Encoding::EmptyText, 0};
constexpr Encoding CodePage(long number) { return {Encoding::Number, number}; }

void SetEncoding(test::TestStep& step, Encoding encoding) {
    if (encoding.kind == Encoding::EmptyText) step.SetText(L"Encoding", L"");
    if (encoding.kind == Encoding::Number) step.Set(L"Encoding", Long(encoding.codePage));
}

bool AskedForInteger(const test::TestStep& step) {
    return std::find(step.requested.begin(), step.requested.end(), VT_I4) != step.requested.end();
}

} // namespace

TEST(WriteFile, WritesTheTextInTheCodePageReplacingOrAppending) {
    struct Row {
        const char* name;
        std::optional<std::string> before;  // none: no file yet
        Encoding encoding;
        std::optional<bool> append;         // none: the host answers VT_EMPTY
        const wchar_t* text;
        std::string after;                  // hex
    } rows[] = {
        {"no Encoding: ANSI", std::nullopt, kNoEncoding, false, L"ab", "61 62"},
        {"empty Encoding: ANSI, never read as a number", std::nullopt, kEmptyEncoding, false, L"ab", "61 62"},
        {"1252", std::nullopt, CodePage(1252), false, L"\u00e9", "E9"},
        {"65001", std::nullopt, CodePage(65001), false, L"\u00e9\u20ac", "C3 A9 E2 82 AC"},
        {"1200 replace writes the mark", std::nullopt, CodePage(1200), false, L"a\u20ac", "FF FE 61 00 AC 20"},
        {"1200 append to a new file: no mark", std::nullopt, CodePage(1200), true, L"a", "61 00"},
        {"1200 append to a file: no mark", std::string("\xFF\xFE\x61\x00", 4), CodePage(1200), true, L"b",
         "FF FE 61 00 62 00"},
        {"65001 append goes to the end", std::string("x\r\n"), CodePage(65001), true, L"\u00e9", "78 0D 0A C3 A9"},
        {"replace truncates a longer file", std::string("0123456789"), CodePage(65001), false, L"z", "7A"},
        {"Append empty means replace", std::string("0123456789"), CodePage(65001), std::nullopt, L"z", "7A"},
        {"empty text leaves an empty file", std::string("0123"), CodePage(65001), false, L"", ""},
        {"empty text in 1200: the mark only", std::string("0123"), CodePage(1200), false, L"", "FF FE"},
        {"empty text appended changes nothing", std::string("0123"), CodePage(65001), true, L"", "30 31 32 33"},
        {"LF becomes CR LF", std::nullopt, CodePage(65001), false, L"a\nb\n", "61 0D 0A 62 0D 0A"},
        {"CR LF stays one pair", std::nullopt, CodePage(65001), false, L"a\r\nb", "61 0D 0A 62"},
        {"a lone CR stays", std::nullopt, CodePage(65001), false, L"a\rb\r", "61 0D 62 0D"},
        {"CR CR LF", std::nullopt, CodePage(65001), false, L"\r\r\n", "0D 0D 0A"},
        {"blank lines", std::nullopt, CodePage(65001), false, L"\n\n", "0D 0A 0D 0A"},
        {"LF in 1200", std::nullopt, CodePage(1200), false, L"a\n", "FF FE 61 00 0D 00 0A 00"},
    };
    test::ScratchFolder folder;
    int index = 0;
    for (const Row& row : rows) {
        const std::wstring file = folder / (L"case" + std::to_wstring(index++) + L".txt");
        if (row.before) test::WriteFileBytes(file, *row.before);
        test::TestBuild build;
        test::TestStep step;
        SetEncoding(step, row.encoding);
        if (row.append) step.Set(L"Append", Bool(*row.append));
        step.SetText(L"Filename", file);
        step.SetText(L"Text", row.text);
        long status = 0;
        EXPECT_EQ(ExecuteWriteFile(build, step, status), S_OK) << row.name << ": " << ThreadErrorDescription();
        EXPECT_EQ(status, tol::StepSucceeded) << row.name;
        EXPECT_EQ(test::ToHex(test::ReadFileBytes(file)), row.after) << row.name;
        EXPECT_EQ(AskedForInteger(step), row.encoding.kind == Encoding::Number) << row.name;
        EXPECT_TRUE(build.log.empty()) << row.name << ": the action wrote to the log";
    }
}

// Characters that the ANSI code page of the system lacks become its default character, as the platform converts.
TEST(WriteFile, AnsiIsTheSystemCodePage) {
    const wchar_t text[] = L"\u00e9\u0416";
    std::string expected(16, '\0');
    expected.resize(::WideCharToMultiByte(CP_ACP, 0, text, 2, expected.data(), 16, nullptr, nullptr));
    ASSERT_FALSE(expected.empty());
    test::ScratchFolder folder;
    const std::wstring file = folder / L"ansi.txt";
    test::TestBuild build;
    test::TestStep step;
    step.SetText(L"Filename", file);
    step.SetText(L"Text", text);
    long status = 0;
    EXPECT_EQ(ExecuteWriteFile(build, step, status), S_OK) << ThreadErrorDescription();
    EXPECT_EQ(test::ToHex(test::ReadFileBytes(file)), test::ToHex(expected)) << "code page " << ::GetACP();
}

TEST(WriteFile, FailuresReachTheHostWithTheFileAsFarAsItGot) {
    test::ScratchFolder folder;
    const std::wstring existing = folder / L"existing.txt";
    struct Row {
        const char* name;
        std::wstring file;
        long codePage;
        bool append;
        std::optional<std::wstring> text;  // none: reading Text fails with 0x80041234 "no such macro"
        HRESULT hr;
        std::wstring description;
        std::wstring checked;              // the file whose bytes are checked afterwards
        std::string after;
    } rows[] = {
        {"unknown code page", existing, 12345, false, L"abc", E_FAIL, L"Failed to convert text to codepage 12345",
         existing, ""},
        {"unknown code page, empty text", existing, 12345, false, L"", S_OK, L"", existing, ""},
        {"Text fails after truncation", existing, 65001, false, std::nullopt, static_cast<HRESULT>(0x80041234),
         L"no such macro", existing, ""},
        {"Text fails when appending", existing, 65001, true, std::nullopt, static_cast<HRESULT>(0x80041234),
         L"no such macro", existing, "old"},
        {"file is a folder", folder.path(), 65001, false, L"abc", E_FAIL,
         L"Failed to create '" + folder.path() + L"': " + test::ErrorText(ERROR_ACCESS_DENIED), existing, "old"},
        {"folder is missing, appending", folder / L"none\\a.txt", 65001, true, L"abc", E_FAIL,
         L"Failed to open '" + (folder / L"none\\a.txt") + L"': " + test::ErrorText(ERROR_PATH_NOT_FOUND),
         folder / L"none\\a.txt", kMissing},
    };
    for (const Row& row : rows) {
        test::WriteFileBytes(existing, "old");
        test::TestBuild build;
        test::TestStep step;
        step.Set(L"Encoding", Long(row.codePage));
        step.Set(L"Append", Bool(row.append));
        step.SetText(L"Filename", row.file);
        if (row.text) step.SetText(L"Text", *row.text);
        else step.Fail(L"Text", static_cast<HRESULT>(0x80041234), L"no such macro");
        ::SetErrorInfo(0, nullptr);
        long status = 0;
        EXPECT_EQ(ExecuteWriteFile(build, step, status), row.hr) << row.name;
        if (SUCCEEDED(row.hr)) {
            EXPECT_EQ(status, tol::StepSucceeded) << row.name;
        } else {
            EXPECT_EQ(status, kGarbageStatus) << row.name << ": status written on failure";
            EXPECT_EQ(ThreadErrorDescription(), row.description) << row.name;
        }
        EXPECT_EQ(test::ReadFileBytes(row.checked), row.after) << row.name;
    }
}
