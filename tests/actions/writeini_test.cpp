// Write INI through its action component, checked against the bytes that the platform's INI writer leaves.
#include "fileutil/scratch.h"
#include "frame/component.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>

namespace {

// Executes Write INI as the host does on section S. A null data makes reading ValueData fail with "no such macro".
// Gives "ok" or "failed" with the lines of the log, or the HRESULT with the status it leaves.
std::wstring Execute(const std::wstring& file, const wchar_t* key, const wchar_t* deleteEntry, const wchar_t* data) {
    test::TestStep step;
    step.SetText(L"Filename", file);
    step.SetText(L"Section", L"S");
    step.SetText(L"ValueName", key);
    step.SetText(L"Delete", deleteEntry);
    if (data) step.SetText(L"ValueData", data);
    else step.Fail(L"ValueData", static_cast<HRESULT>(0x80041234), L"no such macro");
    test::TestBuild build;
    tol::com_ptr<IBuildAction> action;
    EXPECT_EQ(tol::CreateComponent(*tol::FindClass(CLSID_WriteINIAction), IID_IBuildAction, action.put_void()), S_OK);
    long status = 0x5A5A;
    const HRESULT hr = action->Execute(&build, &step, &status);
    wchar_t code[32];
    ::wsprintfW(code, L"%08X, status %X", hr, status);
    std::wstring outcome = hr != S_OK ? code : status == tol::StepSucceeded ? L"ok" : L"failed";
    for (const std::wstring& line : build.log) outcome += L": " + line;
    return outcome;
}

} // namespace

TEST(WriteIni, SetsOrDeletesTheKeyOrTheWholeSectionAndNothingElse) {
    const struct {
        const char* before;
        const wchar_t* key;
        const wchar_t* deleteEntry;
        const wchar_t* data;  // null: must not be read
        const char* after;
    } rows[] = {
        {"", L"k", L"0", L"v", "[S]\r\nk=v\r\n"},
        {"[S]\r\nk=old\r\nj=2\r\n[T]\r\nk=t\r\n", L"k", L"0", L"", "[S]\r\nk=\r\nj=2\r\n[T]\r\nk=t\r\n"},
        {"[S]\r\nk=old\r\nj=2\r\n[T]\r\nk=t\r\n", L"k", L"-1", nullptr, "[S]\r\nj=2\r\n[T]\r\nk=t\r\n"},
        {"[S]\r\nk=old\r\nj=2\r\n[T]\r\nk=t\r\n", L"", L"0", L"x", "[T]\r\nk=t\r\n"},
    };
    for (const auto& row : rows) {
        test::ScratchFolder folder;
        test::WriteFileBytes(folder / L"a.ini", row.before);
        EXPECT_EQ(Execute(folder / L"a.ini", row.key, row.deleteEntry, row.data), L"ok") << "row " << &row - rows;
        EXPECT_EQ(test::ReadFileBytes(folder / L"a.ini"), row.after) << "row " << &row - rows;
    }
    test::ScratchFolder folder;
    EXPECT_EQ(Execute(folder / L"none\\a.ini", L"k", L"0", L"v"),
              L"failed: Error writing to INI file: " + test::ErrorText(ERROR_PATH_NOT_FOUND));
}
