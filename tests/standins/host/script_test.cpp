// Reading scripts: how each JSON form of a property is typed, which forms are refused, and where parse errors are.
#include "host_test_support.h"
#include "script.h"
#include "values.h"
#include <gtest/gtest.h>

using namespace host;

namespace {

std::string WithProperty(const std::string& json) {
    return R"({"steps": [{"action": "Write INI", "properties": {"P": )" + json + "}}]}";
}

std::wstring ErrorOf(const std::string& text) {
    try {
        ParseScript(text);
    } catch (const ScriptError& e) {
        return e.message();
    }
    return L"(accepted)";
}

// "vt:text"; a list as its elements.
std::wstring Typed(const VARIANT& value) {
    const std::wstring type = std::to_wstring(V_VT(&value)) + L":";
    switch (V_VT(&value)) {
    case VT_EMPTY: return type;
    case VT_BSTR: return type + std::wstring(BstrView(V_BSTR(&value)));
    case VT_BOOL: return type + std::to_wstring(V_BOOL(&value));
    case VT_I4: return type + std::to_wstring(V_I4(&value));
    default: return type + hosttest::ArrayTexts(value);
    }
}

} // namespace

TEST(HostScript, TypesEachJsonFormOfAProperty) {
    const struct {
        const char* json;
        const wchar_t* expected;
    } rows[] = {
        {R"("C:\\out\\a.ini")", L"8:C:\\out\\a.ini"},
        {R"("\u00fc\u20ac \ud83d\ude00")", L"8:\u00fc\u20ac \U0001F600"},
        {"true", L"11:-1"},
        {"false", L"11:0"},
        {"1200", L"3:1200"},
        {"-2147483648", L"3:-2147483648"},
        {"2147483647", L"3:2147483647"},
        {"null", L"0:"},
        {R"(["a", "%B%", ""])", L"8204:a|%B%||"},
        {"[]", L"8204:"},
    };
    for (const auto& row : rows) {
        const Script script = ParseScript(WithProperty(row.json));
        ASSERT_EQ(script.steps.size(), 1u) << row.json;
        EXPECT_EQ(Typed(script.steps[0].properties.at(L"p").get()), row.expected) << row.json;
    }
}

TEST(HostScript, RefusesBadFormsNamingTheStepAndProperty) {
    const struct {
        std::string script;
        const wchar_t* expected; // the start of the message
    } rows[] = {
        {WithProperty("1.5"), L"step 1: property \"P\": the number 1.5 is not an integer"},
        {WithProperty("2147483648"), L"step 1: property \"P\": 2147483648 is outside the range of a 32-bit integer"},
        {WithProperty(R"({"a": 1})"), L"step 1: property \"P\": an object is not a property value"},
        {WithProperty(R"(["a", null])"), L"step 1: property \"P\": a list may hold only texts, not null (element 2)"},
        {R"({"steps": [{"action": "W"}, {"name": "n", "action": "W", "properties": {"T": 1e3}}]})",
         L"step 2 (n): property \"T\": the number 1000.0 is not an integer"},
        {R"({"steps": [{"action": "W", "properties": {"File": "a", "file": "b"}}]})",
         L"step 1: property \"file\": given twice (also as \"File\")"},
        {R"({"steps": [{}]})", L"step 1: the step names no \"action\""},
        {R"({"steps": [{"action": "W", "disabled": "yes"}]})", L"step 1: \"disabled\" must be true or false"},
        {R"({"steps": [{"action": "W", "nmae": "x"}]})", L"step 1: unknown key \"nmae\""},
        {R"({"steps": [], "variabels": {}})", L"unknown key \"variabels\""},
        {R"({"steps": [], "variables": {"A": "1", "a": "2"}})", L"variable \"a\": given twice (also as \"A\")"},
        {R"({"variables": {}})", L"the script has no \"steps\""},
    };
    for (const auto& row : rows) {
        const std::wstring message = ErrorOf(row.script);
        EXPECT_EQ(message.rfind(row.expected, 0), 0u) << row.script << "\n  gave: " << testing::PrintToString(message);
    }
}

TEST(HostScript, ParseErrorsGiveLineAndColumn) {
    const struct {
        std::string script;
        const wchar_t* position;
    } rows[] = {
        {"{\"steps\": [,]}", L"line 1, column 12: "},
        {"{\n  \"steps\": [\n    {\"action\": \"Wait\",, }\n  ]\n}", L"line 3, column 23: "},
        {"{\"steps\": [],\r\n \"\xC3\xBC\xE2\x82\xAC\": x}", L"line 2, column 8: "}, // columns count characters
        {"\xEF\xBB\xBF{\"steps\": [] x", L"line 1, column 14: "},                    // the byte order mark is no column
        {"{\"steps\": [\n", L"line 2, column 1: "},                                  // at the end of the text
    };
    for (const auto& row : rows) {
        const std::wstring message = ErrorOf(row.script);
        EXPECT_EQ(message.rfind(row.position, 0), 0u) << row.script << "\n  gave: " << testing::PrintToString(message);
        EXPECT_GT(message.size(), wcslen(row.position)) << "no reason given for " << row.script;
    }
}
