// Write Registry through its action component, checked with the registry API under a key of the test's own.
#include "frame/component.h"
#include "frame/messages.h"
#include "frame/step.h"
#include "host_doubles.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <algorithm>

namespace {

// Each test works below HKCU\Software\VelmoraTests\<process>, removed with everything below it.
class WriteRegistry : public ::testing::Test {
protected:
    void SetUp() override { ::RegDeleteTreeW(HKEY_CURRENT_USER, base_.c_str()); }
    void TearDown() override {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, base_.c_str());
        ::RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\VelmoraTests");  // only when no other test is using it
    }
    std::wstring Path(const std::wstring& below) const { return base_ + L"\\" + below; }

    // Sets the text "x" as a value of the key below the test's key, creating the key.
    void Put(const std::wstring& below, const wchar_t* name = L"v") const {
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, Path(below).c_str(), name, REG_SZ, L"x", 4), ERROR_SUCCESS);
    }

    // The value's type and data: a text with its NULs as '|' ("1 x|"), a number in decimal ("4 12"); "missing" when
    // the key has no such value, "no key" when there is no such key.
    std::wstring Value(const std::wstring& below, const wchar_t* name = L"v") const {
        tol::unique_hkey key;
        wchar_t data[64] = {};
        DWORD type = 0, size = sizeof data;
        if (::RegOpenKeyExW(HKEY_CURRENT_USER, Path(below).c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return L"no key";
        if (::RegQueryValueExW(key.get(), name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size)) return L"missing";
        if (type == REG_DWORD) return L"4 " + std::to_wstring(DWORD{data[0]} | DWORD{data[1]} << 16);
        std::wstring text(data, size / sizeof(wchar_t));
        std::replace(text.begin(), text.end(), L'\0', L'|');
        return std::to_wstring(type) + L" " + text;
    }

    const std::wstring base_ = L"Software\\VelmoraTests\\" + std::to_wstring(::GetCurrentProcessId());
};

// Executes the step as the host does, numbers given as texts; a null property fails the step if it is read. Gives
// "ok", or E_FAIL and the description that the host sees.
std::wstring Execute(const std::wstring& subKey, const wchar_t* valueName, bool deleteValue, const wchar_t* valueData = nullptr,
                 const wchar_t* valueType = nullptr, const wchar_t* computer = nullptr, long rootKey = 0x80000001) {
    test::TestStep step;
    step.SetText(L"SubKey", subKey);
    step.SetText(L"ValueName", valueName);
    step.SetText(L"RootKey", std::to_wstring(rootKey));
    step.SetText(L"DeleteValue", deleteValue ? L"-1" : L"0");
    for (const auto& [name, text] : {std::pair{L"ValueData", valueData}, {L"ValueType", valueType}, {L"Computer", computer}}) {
        if (text) step.SetText(name, text);
        else step.Fail(name, E_UNEXPECTED, std::wstring(name) + L" was read");
    }
    test::TestBuild build;
    tol::com_ptr<IBuildAction> action;
    EXPECT_EQ(tol::CreateComponent(*tol::FindClass(CLSID_WriteRegAction), IID_IBuildAction, action.put_void()), S_OK);
    long status = 0x5A5A;
    const HRESULT hr = action->Execute(&build, &step, &status);
    EXPECT_EQ(status, hr == S_OK ? long{tol::StepSucceeded} : 0x5A5A) << "the status is written on success only";
    if (hr == S_OK) return L"ok";
    tol::com_ptr<IErrorInfo> info;
    tol::bstr description;
    if (::GetErrorInfo(0, info.put()) == S_OK) info->GetDescription(description.receive());
    return (hr == E_FAIL ? L"E_FAIL: " : L"another HRESULT: ") + description.str();
}

} // namespace

// Numbers are signed decimals read up to the first other character, wrapping around; every other type is text.
TEST_F(WriteRegistry, WritesNumbersAndTextsCreatingTheKey) {
    const struct {
        const wchar_t* name;
        const wchar_t* type;
        const wchar_t* data;
        const wchar_t* stored;
    } rows[] = {
        {L"n", L"4", L"-1", L"4 4294967295"},            {L"n", L"4", L"", L"4 0"},
        {L"n", L"4", L" \t\r\n+7", L"4 7"},             {L"n", L"4", L"12abc", L"4 12"},
        {L"n", L"4", L"+-1", L"4 0"},                    {L"n", L"4", L"4294967297", L"4 1"},
        {L"n", L"4", L"-2147483649", L"4 2147483647"},   {L"n", L"4", L"99999999999999999999", L"4 1661992959"},
        {L"v", L"1", L"hello", L"1 hello|"},             {L"", L"1", L"", L"1 |"},
        {L"*****", L"1", L"marker", L"1 marker|"},       {L"expand", L"2", L"%PATH%", L"1 %PATH%|"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Execute(Path(L"text\\nested"), row.name, false, row.data, row.type, L""), L"ok") << "row " << &row - rows;
        EXPECT_EQ(Value(L"text\\nested", row.name), row.stored) << "row " << &row - rows;
    }
}

// While a step that names no key runs, HKEY_CURRENT_USER is a sandbox key: a mistake deletes only what lies there.
TEST_F(WriteRegistry, DeletionTakesTheNamedValueOrKeyTreeAndNothingBeside) {
    for (const wchar_t* name : {L"a", L"", L"****", L"keep"}) Put(L"values", name);
    for (const auto& [below, name] : {std::pair{L"values", L"a"}, {L"values", L""}, {L"values", L"****"},
                                      {L"values", L"missing"}, {L"values\\absent", L"a"}}) {
        EXPECT_EQ(Execute(Path(below), name, true), L"ok") << testing::PrintToString(name);
        EXPECT_EQ(Value(L"values", name), L"missing") << testing::PrintToString(name);
    }
    EXPECT_EQ(Value(L"values", L"keep") + Value(L"values\\absent"), L"1 x|no key") << "a value deletion created a key";

    for (const wchar_t* below : {L"tree", L"tree\\victim\\a\\x", L"tree\\victim\\b", L"tree\\victim2\\c", L"tree\\victi"})
        Put(below);
    EXPECT_EQ(Execute(Path(L"tree\\victim"), L"*****", true), L"ok");
    EXPECT_EQ(Value(L"tree\\victim"), L"no key");
    EXPECT_EQ(Value(L"tree\\victim2\\c") + Value(L"tree\\victi") + Value(L"tree"), L"1 x|1 x|1 x|") << "a neighbour is lost";
    EXPECT_EQ(Execute(Path(L"tree\\victim"), L"*****", true), L"E_FAIL: " + tol::SystemErrorText(ERROR_FILE_NOT_FOUND));

    tol::unique_hkey sandbox;
    ASSERT_EQ(::RegOpenKeyExW(HKEY_CURRENT_USER, Path(L"tree").c_str(), 0, KEY_ALL_ACCESS, sandbox.put()), 0);
    for (const wchar_t* subKey : {L"", L"\\", L"\\\\\\"}) {
        ASSERT_EQ(::RegOverridePredefKey(HKEY_CURRENT_USER, sandbox.get()), ERROR_SUCCESS);
        const std::wstring outcome = Execute(subKey, L"*****", true);
        ::RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        EXPECT_EQ(outcome, L"E_FAIL: The key to delete must be named: an empty key path would delete the whole root key.");
        EXPECT_EQ(Value(L"tree\\victi"), L"1 x|") << testing::PrintToString(subKey);
    }
}

TEST_F(WriteRegistry, RootsAndComputersThatCannotBeUsedFailTheStep) {
    EXPECT_EQ(Execute(Path(L"w"), L"v", false, L"x", L"1", L"", static_cast<long>(0x80000004)),
              L"E_FAIL: The root key 0x80000004 is not one of the registry's root keys.");
    EXPECT_EQ(Execute(Path(L"w"), L"v", false, L"x", L"1", L"velmora-no-such-host"),
              L"E_FAIL: " + tol::SystemErrorText(ERROR_BAD_NETPATH));
    EXPECT_EQ(Value(L"w"), L"no key");
    const wchar_t* self = ::_wgetenv(L"COMPUTERNAME");
    ASSERT_TRUE(self);
    EXPECT_EQ(Execute(Path(L"w"), L"v", false, L"x", L"1", self), L"ok");
    EXPECT_EQ(Value(L"w"), L"1 x|");
}
