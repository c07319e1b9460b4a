// Write File through its action component, checked against the bytes that it leaves in the file.
#include "fileutil/scratch.h"
#include "frame/component.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>

namespace {

// Executes Write File as the host does; Encoding and Append are texts, not held when null. A null text makes reading
// Text fail with "no such macro". Gives "ok" when the step succeeds, else the HRESULT and the host's description.
std::wstring Execute(const wchar_t* encoding, const wchar_t* append, const std::wstring& file, const wchar_t* text) {
    test::TestStep step;
    if (encoding) step.SetText(L"Encoding", encoding);
    if (append) step.SetText(L"Append", append);
    step.SetText(L"Filename", file);
    if (text) step.SetText(L"Text", text);
    else step.Fail(L"Text", static_cast<HRESULT>(0x80041234), L"no such macro");
    test::TestBuild build;
    tol::com_ptr<IBuildAction> action;
    EXPECT_EQ(tol::CreateComponent(*tol::FindClass(CLSID_WriteFileAction), IID_IBuildAction, action.put_void()), S_OK);
    ::SetErrorInfo(0, nullptr);
    long status = 0x5A5A;
    const HRESULT hr = action->Execute(&build, &step, &status);
    EXPECT_EQ(status, hr == S_OK ? long{tol::StepSucceeded} : 0x5A5A) << "the status is written on success only";
    if (hr == S_OK) return L"ok";
    tol::com_ptr<IErrorInfo> info;
    tol::bstr description;
    if (::GetErrorInfo(0, info.put()) == S_OK) info->GetDescription(description.receive());
    wchar_t code[16];
    ::wsprintfW(code, L"%08X ", hr);
    return code + description.str();
}

} // namespace

// The file is created (or truncated) before Text is read: a failure after that leaves the file as far as it got.
TEST(WriteFile, WritesTheTextInTheCodePageAndFailsAsFarAsItGot) {
    std::string ansi(4, '\0');
    ansi.resize(::WideCharToMultiByte(CP_ACP, 0, L"\u00e9", 1, ansi.data(), 4, nullptr, nullptr));
    const struct {
        const wchar_t* encoding;
        const wchar_t* append;
        const char* before;  // null: no file yet
        const wchar_t* text;
        std::wstring outcome;
        std::string after;   // hex
    } rows[] = {
        {L"", L"0", nullptr, L"\u00e9", L"ok", test::ToHex(ansi)},
        {L"65001", L"0", "0123", L"\u00e9\n", L"ok", "C3 A9 0D 0A"},
        {L"1200", nullptr, "0123", L"a", L"ok", "FF FE 61 00"},
        {L"12345", L"0", "old", L"abc", L"80004005 Failed to convert text to codepage 12345", ""},
        {L"65001", L"0", "old", nullptr, L"80041234 no such macro", ""},
        {L"65001", L"-1", "old", nullptr, L"80041234 no such macro", "6F 6C 64"},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        if (row.before) test::WriteFileBytes(folder / L"out.txt", row.before);
        EXPECT_EQ(Execute(row.encoding, row.append, folder / L"out.txt", row.text), row.outcome) << "row " << &row - rows;
        EXPECT_EQ(test::ToHex(test::ReadFileBytes(folder / L"out.txt")), row.after) << "row " << &row - rows;
    }
    test::ScratchFolder folder;
    EXPECT_EQ(Execute(L"65001", L"0", folder.path(), L"a"),
              L"80004005 Failed to create '" + folder.path() + L"': " + test::ErrorText(ERROR_ACCESS_DENIED));
    EXPECT_EQ(Execute(L"65001", L"-1", folder / L"none\\a.txt", L"a"),
              L"80004005 Failed to open '" + folder / L"none\\a.txt" + L"': " + test::ErrorText(ERROR_PATH_NOT_FOUND));
}
