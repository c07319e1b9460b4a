// Write INI through its action component, checked against the bytes that the platform's INI writer leaves.
#include "frame/com_ptr.h"
#include "frame/component.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace {

// A fresh folder below the temporary folder; the files the test names in it are removed afterwards.
class IniFolder {
public:
    IniFolder() {
        DWORD size = ::GetTempPathW(0, nullptr);
        std::wstring temp(size, L'\0');
        temp.resize(::GetTempPathW(size, temp.data()));
        path_ = temp + L"velmora-ini-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(::GetTickCount64());
        EXPECT_TRUE(::CreateDirectoryW(path_.c_str(), nullptr));
    }
    ~IniFolder() {
        for (int i = 0; i < next_; ++i) ::DeleteFileW(File(i).c_str());
        ::RemoveDirectoryW(path_.c_str());
    }
    std::wstring NewFile() { return File(next_++); }
    const std::wstring& path() const { return path_; }

private:
    std::wstring File(int i) const { return path_ + L"\\case" + std::to_wstring(i) + L".ini"; }
    std::wstring path_;
    int next_ = 0;
};

void WriteBytes(const std::wstring& path, const std::string& bytes) {
    tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    ASSERT_TRUE(file);
    DWORD written = 0;
    ASSERT_TRUE(::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr));
}

// The file's bytes, or nullopt when there is no file.
std::optional<std::string> ReadBytes(const std::wstring& path) {
    tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!file) return std::nullopt;
    std::string bytes(::GetFileSize(file.get(), nullptr), '\0');
    DWORD read = 0;
    if (!bytes.empty()) ::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    bytes.resize(read);
    return bytes;
}

// Executes the step through the Write INI component as the host does; the status keeps its garbage on failure.
HRESULT ExecuteWriteIni(test::TestBuild& build, test::TestStep& step, long& status) {
    tol::com_ptr<IBuildAction> action;
    const HRESULT created =
        tol::CreateComponent(*tol::FindClass(CLSID_WriteINIAction), IID_IBuildAction, action.put_void());
    if (FAILED(created)) return created;
    status = 0x5A5A;
    return action->Execute(&build, &step, &status);
}

void SetBool(test::TestStep& step, const wchar_t* name, bool value) {
    VARIANT v;
    V_VT(&v) = VT_BOOL;
    V_BOOL(&v) = value ? VARIANT_TRUE : VARIANT_FALSE;
    step.Set(name, v);
}

// The system's text for a Win32 code, as the platform gives it, without its final line feed.
std::wstring PlatformText(DWORD code) {
    wchar_t* buffer = nullptr;
    ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
                     HRESULT_FROM_WIN32(code), 0x400, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    tol::unique_hlocal owner(buffer);
    std::wstring text = buffer ? buffer : L"";
    while (!text.empty() && text.back() == L'\n') text.pop_back();
    return text;
}

const char kTwoSections[] = "[S]\r\nk=old\r\nj=2\r\n[T]\r\nk=t\r\n";

} // namespace

TEST(WriteIni, EachSettingHasItsEffectOnTheFile) {
    struct Row {
        const char* name;
        const char* before; // null: no file yet
        const wchar_t* valueName;
        bool deleteEntry;
        const wchar_t* valueData; // null: reading it fails the step
        const char* after;
    } rows[] = {
        {"set creates file and section", nullptr, L"k", false, L"v", "[S]\r\nk=v\r\n"},
        {"set replaces the value", kTwoSections, L"k", false, L"new", "[S]\r\nk=new\r\nj=2\r\n[T]\r\nk=t\r\n"},
        {"set adds a key", kTwoSections, L"m", false, L"3", "[S]\r\nk=old\r\nj=2\r\nm=3\r\n[T]\r\nk=t\r\n"},
        {"empty data is an empty value", kTwoSections, L"k", false, L"", "[S]\r\nk=\r\nj=2\r\n[T]\r\nk=t\r\n"},
        {"delete removes the key only", kTwoSections, L"k", true, nullptr, "[S]\r\nj=2\r\n[T]\r\nk=t\r\n"},
        {"delete of a missing key", kTwoSections, L"zz", true, nullptr, kTwoSections},
        {"no key deletes the section", kTwoSections, L"", true, nullptr, "[T]\r\nk=t\r\n"},
        {"no key deletes it when writing too", kTwoSections, L"", false, L"x", "[T]\r\nk=t\r\n"},
    };
    IniFolder folder;
    for (const Row& row : rows) {
        const std::wstring file = folder.NewFile();
        if (row.before) WriteBytes(file, row.before);
        test::TestBuild build;
        test::TestStep step;
        step.SetText(L"Filename", file);
        step.SetText(L"Section", L"S");
        step.SetText(L"ValueName", row.valueName);
        SetBool(step, L"Delete", row.deleteEntry);
        if (row.valueData) step.SetText(L"ValueData", row.valueData);
        else step.Fail(L"ValueData", E_UNEXPECTED, L"ValueData was read");
        long status = 0;
        EXPECT_EQ(ExecuteWriteIni(build, step, status), S_OK) << row.name;
        EXPECT_EQ(status, tol::StepSucceeded) << row.name;
        EXPECT_TRUE(build.log.empty()) << row.name;
        EXPECT_EQ(ReadBytes(file).value_or("<no file>"), row.after) << row.name;
    }
}

TEST(WriteIni, AFileThatCannotBeWrittenIsLoggedAndFailsTheStep) {
    IniFolder folder;
    struct Row {
        const char* name;
        std::wstring file;
        DWORD error;
    } rows[] = {
        {"folder missing", folder.path() + L"\\no such folder\\a.ini", ERROR_PATH_NOT_FOUND},
        {"path is a folder", folder.path(), ERROR_ACCESS_DENIED},
    };
    for (const Row& row : rows) {
        test::TestBuild build;
        test::TestStep step;
        step.SetText(L"Filename", row.file);
        step.SetText(L"Section", L"S");
        step.SetText(L"ValueName", L"k");
        step.SetText(L"ValueData", L"v");
        long status = 0;
        EXPECT_EQ(ExecuteWriteIni(build, step, status), S_OK) << row.name;
        EXPECT_EQ(status, tol::StepFailed) << row.name;
        ASSERT_EQ(build.log.size(), 1u) << row.name;
        EXPECT_EQ(build.log[0], L"Error writing to INI file: " + PlatformText(row.error)) << row.name;
    }
    EXPECT_FALSE(ReadBytes(rows[0].file)) << "a file appeared in a missing folder";
}

TEST(WriteIni, AFailedPropertyReadReachesTheHostAndWritesNothing) {
    IniFolder folder;
    const std::wstring file = folder.NewFile();
    test::TestBuild build;
    test::TestStep step;
    step.SetText(L"Filename", file);
    step.SetText(L"Section", L"S");
    step.SetText(L"ValueName", L"k");
    step.Fail(L"ValueData", static_cast<HRESULT>(0x80041234), L"macro not defined");
    long status = 0;
    EXPECT_EQ(ExecuteWriteIni(build, step, status), static_cast<HRESULT>(0x80041234));
    EXPECT_EQ(status, 0x5A5A) << "status written on failure";
    EXPECT_FALSE(ReadBytes(file)) << "the file was written";
}
