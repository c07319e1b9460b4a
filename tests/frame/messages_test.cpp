#include "frame/errors.h"
#include "frame/messages.h"
#include <gtest/gtest.h>
#include <stdexcept>

using namespace tol;

TEST(ResourceText, CatalogueTextsKeepTheirBlanksAndMissingIdsAreEmpty) {
    struct {
        UINT id;
        const wchar_t* text;
    } rows[] = {
        {37, L"would have been "},
        {48, L" (error deleting file: %1)"},
        {35, L"%1!d! file(s) %2%3"},
        {220, L"ZIP files (*.zip)|*.zip|All Files (*.*)|*.*||"},
        {219, L"%1%2 = %3"},
        {1, L""},
        {60, L""},
    };
    for (const auto& row : rows) EXPECT_EQ(LoadResourceText(row.id), row.text) << "id " << row.id;
}

TEST(ResourceText, InsertsOfEveryForm) {
    EXPECT_EQ(FormatResourceMessage(35, {3, L"copied", L""}), L"3 file(s) copied");
    EXPECT_EQ(FormatResourceMessage(36, {-2, L"would have been "}), L", -2 file(s) would have been deleted");
    EXPECT_EQ(FormatResourceMessage(38, {L"C:\\a b", L"Access denied.", 30}),
              L"Error processing 'C:\\a b': Access denied., pausing 30 seconds before retry...");
    EXPECT_EQ(FormatMessageText(L"%1!x!-%2", {255, L"z"}), L"ff-z");
    EXPECT_EQ(FormatResourceMessage(9999, {L"x"}), L"");
    // Inserts that are texts with percent signs are not formatted again.
    EXPECT_EQ(FormatResourceMessage(66, {L"%2", L"b%1"}), L"%2 -> b%1");
}

TEST(ResourceText, RejectedPatternComesBackUnchanged) {
    // An insert number the argument list does not have makes the formatter fail.
    EXPECT_EQ(FormatMessageText(L"bad %", {}), L"bad %");
}

TEST(SystemText, TrailingLineFeedGoesCarriageReturnStays) {
    const std::wstring text = SystemErrorText(static_cast<HRESULT>(0x80070005));
    ASSERT_FALSE(text.empty());
    EXPECT_NE(text.back(), L'\n');
    EXPECT_EQ(text.back(), L'\r');
    EXPECT_NE(text.find(L"denied"), std::wstring::npos) << "got " << testing::PrintToString(text);
    EXPECT_EQ(SystemErrorText(static_cast<HRESULT>(0x8FFF1234)), L"Unknown error");
}

TEST(SystemText, LastErrorBecomesWin32Hresult) {
    struct {
        DWORD last;
        HRESULT expected;
    } rows[] = {{2, static_cast<HRESULT>(0x80070002)}, {0, 0}, {0x12345, static_cast<HRESULT>(0x80072345)}};
    for (const auto& row : rows) {
        ::SetLastError(row.last);
        EXPECT_EQ(HResultFromLastError(), row.expected) << "last error " << row.last;
    }
}

TEST(ExceptionText, WideNarrowAndOverlong) {
    EXPECT_EQ(ExceptionMessage(truntime_error(L"caf\u00e9 failed")), L"caf\u00e9 failed");
    EXPECT_EQ(ExceptionMessage(comet::com_error(E_POINTER)), SystemErrorText(E_POINTER));
    EXPECT_EQ(ExceptionMessage(std::runtime_error("plain words")), L"plain words");
    EXPECT_EQ(ExceptionMessage(std::bad_alloc()), L"std::bad_alloc");
    const std::string longText(1500, 'x');
    EXPECT_EQ(ExceptionMessage(std::runtime_error(longText)), std::wstring(1023, L'x'));
}

TEST(ExceptionText, ComErrorTakesTheDescriptionOfItsErrorInformation) {
    com_ptr<ICreateErrorInfo> create;
    ASSERT_EQ(::CreateErrorInfo(create.put()), S_OK);
    create->SetDescription(const_cast<LPOLESTR>(L"host said no"));
    comet::com_error withInfo(E_ACCESSDENIED, create.query<IErrorInfo>());
    EXPECT_EQ(withInfo.message(), L"host said no");
    EXPECT_EQ(withInfo.hr(), E_ACCESSDENIED);
    EXPECT_NE(withInfo.error_info(), nullptr);
    comet::com_error withoutInfo(E_ACCESSDENIED, nullptr);
    EXPECT_EQ(withoutInfo.message(), SystemErrorText(E_ACCESSDENIED));
}

TEST(SplitTokens, DropsEmptyRunsAndTrimsNothing) {
    using V = std::vector<std::wstring>;
    EXPECT_EQ(SplitTokens(L"\r\n*.obj\r\n\r\n\" *.pdb\"\n", L"\r\n\""), (V{L"*.obj", L" *.pdb"}));
    EXPECT_EQ(SplitTokens(L"a\\b//c", L"\\/"), (V{L"a", L"b", L"c"}));
    EXPECT_EQ(SplitTokens(L";;;", L";"), V{});
    EXPECT_EQ(SplitTokens(L"", L";"), V{});
    EXPECT_EQ(SplitTokens(L"whole", L""), V{L"whole"});
}
