// Write Registry through its action component, checked with the registry API under a key of each test's own.
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

constexpr long kCurrentUser = static_cast<long>(0x80000001);
constexpr wchar_t kNoSuchComputer[] = L"velmora-no-such-host";

// One step of the action; a property left unset fails the step if it is read (a deletion reads no Computer).
struct RegStep {
    std::wstring subKey;
    std::wstring valueName;
    bool deleteValue = false;
    std::optional<std::wstring> valueData;
    std::optional<long> valueType;
    std::optional<std::wstring> computer; // a write reads an empty Computer when none is given
    long rootKey = kCurrentUser;
};

struct Outcome {
    HRESULT hr;
    long status;
    std::wstring description;
};

void SetNumber(test::TestStep& step, const wchar_t* name, VARTYPE type, long value) {
    VARIANT v;
    V_VT(&v) = type;
    if (type == VT_BOOL) V_BOOL(&v) = value ? VARIANT_TRUE : VARIANT_FALSE;
    else V_I4(&v) = value;
    step.Set(name, v);
}

std::wstring ThreadErrorDescription() {
    tol::com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK || !info) return L"<none>";
    tol::bstr text;
    info->GetDescription(text.receive());
    return text.str();
}

// Executes the step through the Write Registry component as the host does.
Outcome Execute(const RegStep& s) {
    test::TestBuild build;
    test::TestStep step;
    step.SetText(L"SubKey", s.subKey);
    step.SetText(L"ValueName", s.valueName);
    SetNumber(step, L"RootKey", VT_I4, s.rootKey);
    SetNumber(step, L"DeleteValue", VT_BOOL, s.deleteValue);
    if (s.computer || !s.deleteValue) step.SetText(L"Computer", s.computer.value_or(L""));
    else step.Fail(L"Computer", E_UNEXPECTED, L"Computer was read");
    if (s.valueData) step.SetText(L"ValueData", *s.valueData);
    else step.Fail(L"ValueData", E_UNEXPECTED, L"ValueData was read");
    if (s.valueType) SetNumber(step, L"ValueType", VT_I4, *s.valueType);
    else step.Fail(L"ValueType", E_UNEXPECTED, L"ValueType was read");

    tol::com_ptr<IBuildAction> action;
    EXPECT_EQ(tol::CreateComponent(*tol::FindClass(CLSID_WriteRegAction), IID_IBuildAction, action.put_void()), S_OK);
    ::SetErrorInfo(0, nullptr);
    Outcome outcome{E_UNEXPECTED, 0x5A5A, L""};
    outcome.hr = action->Execute(&build, &step, &outcome.status);
    outcome.description = ThreadErrorDescription();
    EXPECT_TRUE(build.log.empty()) << "the action writes nothing to the log";
    return outcome;
}

std::wstring PlatformText(DWORD code) {
    wchar_t* buffer = nullptr;
    ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
                     code, 0x400, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    tol::unique_hlocal owner(buffer);
    std::wstring text = buffer ? buffer : L"";
    while (!text.empty() && text.back() == L'\n') text.pop_back();
    return text;
}

struct Stored {
    LONG status = ERROR_GEN_FAILURE;
    DWORD type = 0xDEADBEEF;
    std::vector<BYTE> data;
};

Stored ReadValue(const std::wstring& path, const wchar_t* name) {
    Stored stored;
    tol::unique_hkey key;
    stored.status = ::RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.put());
    if (stored.status != ERROR_SUCCESS) return stored;
    DWORD size = 0;
    stored.status = ::RegQueryValueExW(key.get(), name, nullptr, &stored.type, nullptr, &size);
    if (stored.status != ERROR_SUCCESS) return stored;
    stored.data.assign(size, 0xCD);
    stored.status = ::RegQueryValueExW(key.get(), name, nullptr, &stored.type, stored.data.data(), &size);
    stored.data.resize(size);
    return stored;
}

std::vector<BYTE> DwordBytes(DWORD number) {
    const BYTE* p = reinterpret_cast<const BYTE*>(&number);
    return {p, p + sizeof number};
}

std::vector<BYTE> TextBytes(const std::wstring& text) {
    const BYTE* p = reinterpret_cast<const BYTE*>(text.c_str());
    return {p, p + (text.size() + 1) * sizeof(wchar_t)};
}

bool KeyExists(const std::wstring& path) {
    tol::unique_hkey key;
    return ::RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, key.put()) == ERROR_SUCCESS;
}

void MakeKey(const std::wstring& path, const wchar_t* valueName = nullptr, DWORD options = REG_OPTION_NON_VOLATILE) {
    tol::unique_hkey key;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, options, KEY_ALL_ACCESS, nullptr, key.put(),
                                nullptr),
              ERROR_SUCCESS);
    if (!valueName) return;
    const std::wstring data = L"data of " + path;
    ASSERT_EQ(::RegSetValueExW(key.get(), valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(data.c_str()),
                               static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t))),
              ERROR_SUCCESS);
}

// Each test works below HKCU\Software\VelmoraTests\<test>-<process>, removed with everything below it.
class WriteRegistry : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        base_ = L"Software\\VelmoraTests\\" + std::wstring(test.begin(), test.end()) + L"-" +
                std::to_wstring(::GetCurrentProcessId());
        ::RegDeleteTreeW(HKEY_CURRENT_USER, base_.c_str());
        MakeKey(base_);
    }
    void TearDown() override {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, base_.c_str());
        ::RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\VelmoraTests"); // only when no other test is using it
    }
    std::wstring Path(const std::wstring& below) const { return base_ + L"\\" + below; }

    std::wstring base_;
};

// While it lives, HKEY_CURRENT_USER of this process is the given key: a mistake deletes only what lies there.
class CurrentUserOverride {
public:
    explicit CurrentUserOverride(HKEY replacement) {
        EXPECT_EQ(::RegOverridePredefKey(HKEY_CURRENT_USER, replacement), ERROR_SUCCESS);
    }
    ~CurrentUserOverride() { ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr); }
};

} // namespace

TEST_F(WriteRegistry, DwordTextIsASignedDecimalThatWraps) {
    const struct Row {
        std::wstring text;
        DWORD expected;
    } rows[] = {
        {L"-1", 0xFFFFFFFF},         {L"", 0},
        {L"  42", 42},               {L"\t\r\n+7", 7},
        {L"0x10", 0},                {L"12abc", 12},
        {L"abc", 0},                 {L"- 5", 0},
        {L"+-1", 0},                 {L"1 2", 1},
        {L"007", 7},                 {L"4294967295", 0xFFFFFFFF},
        {L"4294967296", 0},          {L"4294967297", 1},
        {L"-2147483648", 0x80000000}, {L"-2147483649", 0x7FFFFFFF},
        // Longer than 19 characters: the whole text is read.
        {L"99999999999999999999", 0x630FFFFF}, {std::wstring(30, L' ') + L"5", 5},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        const std::wstring name = L"row" + std::to_wstring(i);
        const Outcome outcome = Execute({Path(L"dword"), name, false, rows[i].text, REG_DWORD});
        ASSERT_EQ(outcome.hr, S_OK) << "row " << i << ": " << testing::PrintToString(outcome.description);
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << "row " << i;
        const Stored stored = ReadValue(Path(L"dword"), name.c_str());
        EXPECT_EQ(stored.status, ERROR_SUCCESS) << "row " << i;
        EXPECT_EQ(stored.type, static_cast<DWORD>(REG_DWORD)) << "row " << i;
        EXPECT_EQ(stored.data, DwordBytes(rows[i].expected)) << "row " << i;
    }
}

TEST_F(WriteRegistry, TextIsStoredWithItsNulAndOtherTypesAreText) {
    const struct Row {
        const char* name;
        const wchar_t* valueName;
        long valueType;
        const wchar_t* data;
        DWORD type;
    } rows[] = {
        {"text creates the nested key", L"v", REG_SZ, L"hello", REG_SZ},
        {"text replaces text", L"v", REG_SZ, L"again", REG_SZ},
        {"dword replaces text", L"v", REG_DWORD, L"9", REG_DWORD},
        {"empty text is a lone NUL", L"empty", REG_SZ, L"", REG_SZ},
        {"empty name is the default value", L"", REG_SZ, L"default", REG_SZ},
        {"the marker is a plain name when writing", L"*****", REG_SZ, L"marker", REG_SZ},
        {"type 0 writes text", L"zero", 0, L"0", REG_SZ},
        {"type 2 writes unexpanded text", L"expand", REG_EXPAND_SZ, L"%PATH%", REG_SZ},
        {"type 3 writes text", L"binary", REG_BINARY, L"01", REG_SZ},
    };
    const std::wstring key = Path(L"text\\nested\\deep");
    for (const Row& row : rows) {
        const Outcome outcome = Execute({key, row.valueName, false, row.data, row.valueType});
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << testing::PrintToString(outcome.description);
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        const Stored stored = ReadValue(key, row.valueName);
        EXPECT_EQ(stored.type, row.type) << row.name;
        EXPECT_EQ(stored.data, row.type == REG_DWORD ? DwordBytes(9) : TextBytes(row.data)) << row.name;
    }
}

TEST_F(WriteRegistry, OnlyTheRegistrysRootKeysAreAccepted) {
    const long rows[] = {0, 1, 4, static_cast<long>(0x80000004), static_cast<long>(0x80000010)};
    for (long root : rows) {
        RegStep step{Path(L"root"), L"v", false, L"x", REG_SZ};
        step.rootKey = root;
        const Outcome outcome = Execute(step);
        wchar_t hex[16];
        ::wsprintfW(hex, L"%x", static_cast<unsigned>(root));
        EXPECT_EQ(outcome.hr, E_FAIL) << "root " << root;
        EXPECT_EQ(outcome.description, L"The root key 0x" + std::wstring(hex) + L" is not one of the registry's root keys.")
            << "root " << root;
        EXPECT_EQ(outcome.status, 0x5A5A) << "root " << root;
    }
    EXPECT_FALSE(KeyExists(Path(L"root")));
}

TEST_F(WriteRegistry, ValueDeletionTakesOneValueAndToleratesWhatIsMissing) {
    const std::wstring key = Path(L"values");
    for (const wchar_t* name : {L"a", L"", L"****", L"keep"}) MakeKey(key, name);
    const struct Row {
        const char* name;
        const wchar_t* subKey;
        const wchar_t* valueName;
    } rows[] = {
        {"a named value", L"values", L"a"},
        {"the default value", L"values", L""},
        {"four asterisks are a name", L"values", L"****"},
        {"a missing value", L"values", L"missing"},
        {"a missing key", L"values\\absent", L"a"},
    };
    for (const Row& row : rows) {
        const Outcome outcome = Execute({Path(row.subKey), row.valueName, true});
        EXPECT_EQ(outcome.hr, S_OK) << row.name << ": " << testing::PrintToString(outcome.description);
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        EXPECT_EQ(ReadValue(key, row.valueName).status, ERROR_FILE_NOT_FOUND) << row.name;
        EXPECT_EQ(ReadValue(key, L"keep").status, ERROR_SUCCESS) << row.name;
    }
    EXPECT_FALSE(KeyExists(Path(L"values\\absent"))) << "value deletion created a key";
}

TEST_F(WriteRegistry, KeyTreeDeletionTakesTheNamedKeyAndNothingBeside) {
    MakeKey(Path(L"tree"), L"keep");
    for (const wchar_t* below : {L"victim", L"victim\\a\\x\\y", L"victim\\b", L"victim\\c", L"victim\\d\\e"}) {
        MakeKey(Path(L"tree\\") + below, L"v");
    }
    for (const wchar_t* sibling : {L"victim2", L"victi", L"victim2\\child"}) MakeKey(Path(L"tree\\") + sibling, L"v");

    const Outcome outcome = Execute({Path(L"tree\\victim"), L"*****", true});
    EXPECT_EQ(outcome.hr, S_OK) << testing::PrintToString(outcome.description);
    EXPECT_EQ(outcome.status, tol::StepSucceeded);
    EXPECT_FALSE(KeyExists(Path(L"tree\\victim")));
    for (const wchar_t* sibling : {L"victim2", L"victi", L"victim2\\child"}) {
        EXPECT_EQ(ReadValue(Path(L"tree\\") + sibling, L"v").status, ERROR_SUCCESS) << "sibling lost";
    }
    EXPECT_EQ(ReadValue(Path(L"tree"), L"keep").status, ERROR_SUCCESS) << "parent's value lost";
}

TEST_F(WriteRegistry, KeyTreeDeletionOfAMissingKeyFailsWithTheSystemText) {
    const Outcome outcome = Execute({Path(L"absent"), L"*****", true});
    EXPECT_EQ(outcome.hr, E_FAIL);
    EXPECT_EQ(outcome.description, PlatformText(ERROR_FILE_NOT_FOUND));
    EXPECT_EQ(outcome.status, 0x5A5A);
    EXPECT_TRUE(KeyExists(base_));
}

TEST_F(WriteRegistry, AKeyTreeDeletionThatNamesNoKeyIsRefused) {
    MakeKey(Path(L"sandbox\\canary\\child"), L"v");
    tol::unique_hkey sandbox;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, Path(L"sandbox").c_str(), 0, KEY_ALL_ACCESS, sandbox.put()), 0);
    const struct Row {
        const char* name;
        const wchar_t* subKey;
        const wchar_t* computer;
    } rows[] = {
        {"empty", L"", L""},
        {"one backslash", L"\\", L""},
        {"backslashes", L"\\\\\\", L""},
        {"empty, Computer not read", L"", nullptr},
    };
    for (const Row& row : rows) {
        Outcome outcome{};
        {
            const CurrentUserOverride guard(sandbox.get());
            RegStep step{row.subKey, L"*****", true};
            if (row.computer) step.computer = row.computer;
            outcome = Execute(step);
        }
        EXPECT_EQ(outcome.hr, E_FAIL) << row.name;
        EXPECT_EQ(outcome.description,
                  L"The key to delete must be named: an empty key path would delete the whole root key.")
            << row.name;
        EXPECT_EQ(ReadValue(Path(L"sandbox\\canary\\child"), L"v").status, ERROR_SUCCESS) << row.name;
    }
}

TEST_F(WriteRegistry, AnotherComputerIsConnectedForWritesOnly) {
    DWORD length = 0;
    ::GetComputerNameW(nullptr, &length);
    std::wstring self(length, L'\0');
    ASSERT_TRUE(::GetComputerNameW(self.data(), &length));
    self.resize(length);
    MakeKey(Path(L"remote"), L"keep");
    const struct Row {
        const char* name;
        std::wstring computer;
        const wchar_t* valueName;
        bool deleteValue;
        HRESULT hr;
    } rows[] = {
        {"unknown computer, write", kNoSuchComputer, L"v", false, E_FAIL},
        {"leading backslashes get two more", L"\\\\" + self, L"v", false, E_FAIL},
        {"this computer by name", self, L"v", false, S_OK},
    };
    for (const Row& row : rows) {
        RegStep step{Path(L"remote"), row.valueName, row.deleteValue};
        step.valueData = L"written";
        step.valueType = REG_SZ;
        step.computer = row.computer;
        const Outcome outcome = Execute(step);
        EXPECT_EQ(outcome.hr, row.hr) << row.name;
        if (row.hr == E_FAIL) {
            EXPECT_EQ(outcome.description, PlatformText(ERROR_BAD_NETPATH)) << row.name;
        }
        EXPECT_EQ(ReadValue(Path(L"remote"), L"keep").status, ERROR_SUCCESS) << row.name << ": local value lost";
        EXPECT_EQ(ReadValue(Path(L"remote"), L"v").data == TextBytes(L"written"), row.hr == S_OK) << row.name;
    }
}

TEST_F(WriteRegistry, AKeyThatCannotBeCreatedReturnsItsWin32Code) {
    MakeKey(Path(L"volatile"), nullptr, REG_OPTION_VOLATILE);
    const Outcome outcome = Execute({Path(L"volatile\\child"), L"v", false, L"x", REG_SZ});
    EXPECT_EQ(outcome.hr, HRESULT_FROM_WIN32(ERROR_CHILD_MUST_BE_VOLATILE));
    EXPECT_EQ(outcome.status, 0x5A5A);
    EXPECT_FALSE(KeyExists(Path(L"volatile\\child")));
}
