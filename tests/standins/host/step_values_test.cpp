// Step properties from script to action: how each JSON form is typed, how the step expands %NAME% references
// (script variables, then --var values, then the environment) and converts, and what refusals say.
#include "build_step.h"
#include "host_test_support.h"
#include "script.h"
#include "text_expander.h"
#include "text.h"
#include "frame/bstr.h"
#include <tuple>
#include <gtest/gtest.h>

using namespace host;

namespace {

constexpr VARTYPE kStored = 0xFFFF; // a row that reads the stored value

std::string WithProperty(const std::string& json) {
    return R"({"variables": {"VRT_A": "script", "VRT_B": "%VRT_C%-b", "VRT_C": "c", "OUT": "C:\\out", "N": "1200"},
        "steps": [{"action": "Write INI", "properties": {"P": )" + json + "}}]}";
}

// The step of WithProperty(json), with its script's variables and --var values for VRT_A and VRT_D.
tol::com_ptr<IBuildStep> MakeStep(const std::string& json) {
    Script script = ParseScript(WithProperty(json));
    const VariableMap commandLine{{L"VRT_A", L"command line"}, {L"VRT_D", L"command line"}};
    const auto expander = std::make_shared<const Expander>(std::move(script.variables), commandLine);
    return MakeBuildStep(std::move(script.steps.at(0).properties), expander);
}

} // namespace

TEST(HostStepValues, TypedAsWrittenEvaluatedExpandedThenConverted) {
    const std::pair<const wchar_t*, const wchar_t*> environment[] = {
        {L"VRT_A", L"env"}, {L"VRT_D", L"env"}, {L"VRT_G", L"%VRT_A%"}, {L"VRT_EMPTY", L""}};
    for (const auto& [name, value] : environment) ::SetEnvironmentVariableW(name, value);
    const struct {
        const char* json;
        VARTYPE wanted;
        const wchar_t* shown; // "vt:text"; for a failure, the HRESULT first
    } rows[] = {
        {R"("%OUT%\\\u00fc \ud83d\ude00")", kStored, L"8:%OUT%\\\u00fc \U0001F600"},
        {"null", kStored, L"0:"},
        {R"(["%OUT%\\a", "", "b"])", kStored, L"8204:%OUT%\\a||b|"},
        {R"(["%OUT%\\a", "b"])", VT_BSTR, L"8204:C:\\out\\a|b|"}, // a list stays a list when a text is wanted
        {R"("%N%")", VT_I4, L"3:1200"},                           // expanded before the conversion
        {R"("abc")", VT_I4, L"0x80020005 0:"},
        {R"("%VRT_A%")", VT_BSTR, L"8:script"},           // script beats --var and the environment
        {R"("%VRT_D%")", VT_BSTR, L"8:command line"},     // --var beats the environment
        {R"("[%VRT_EMPTY%]")", VT_BSTR, L"8:[]"},         // set but empty is known
        {R"("%vrt_a%")", VT_BSTR, L"8:script"},           // names ignore case
        {R"("%VRT_B%")", VT_BSTR, L"8:c-b"},              // values are expanded in turn...
        {R"("%VRT_G%")", VT_BSTR, L"8:%VRT_A%"},          // ...but environment values are taken as they are
        {R"("50%off%VRT_C%")", VT_BSTR, L"8:50%offc"},    // the closing % of an unknown name may open the next
        {R"("100%")", VT_BSTR, L"8:100%"},
        {R"("%%VRT_C%")", VT_BSTR, L"8:%c"},
    };
    for (const auto& row : rows) {
        const tol::com_ptr<IBuildStep> step = MakeStep(row.json);
        VARIANT raw;
        hosttest::FillWithGarbage(raw);
        const HRESULT hr = row.wanted == kStored ? step->GetStoredProperty(hosttest::Arg(L"p"), &raw)
                                                 : step->GetEvaluatedProperty(nullptr, hosttest::Arg(L"P"), row.wanted, &raw);
        tol::variant value;
        *value.receive() = raw;
        EXPECT_EQ((FAILED(hr) ? HexCode(hr) + L" " : L"") + hosttest::Shown(value.get()), row.shown) << row.json;
        if (FAILED(hr)) {
            const std::wstring description = hosttest::TakeErrorDescription();
            EXPECT_NE(description.find(L"\"P\" holds \"abc\""), std::wstring::npos) << description;
            EXPECT_EQ(description.find(L'\r'), std::wstring::npos) << "a system text kept its line end";
        }
    }
    for (const auto& [name, value] : environment) ::SetEnvironmentVariableW(name, nullptr);
    // The step says which of its interfaces leave error information, as callers check before reading it.
    const tol::com_ptr<ISupportErrorInfo> support = MakeStep("null").query<ISupportErrorInfo>();
    for (const IID& iid : {IID_IBuildStep, IID_IBuildStepWriter, IID_IBuildRun})
        EXPECT_EQ(support->InterfaceSupportsErrorInfo(iid), iid == IID_IBuildRun ? S_FALSE : S_OK);
}

TEST(HostStepValues, RefusalsSayWhereAndWhy) {
    const struct {
        std::string script;
        const wchar_t* expected; // the start of the message; after a position, a reason follows
    } rows[] = {
        {WithProperty("2147483648"), L"step 1: property \"P\": 2147483648 is outside the range of a 32-bit integer"},
        {WithProperty(R"(["a", null])"), L"step 1: property \"P\": a list may hold only texts, not null (element 2)"},
        {R"({"steps": [{"action": "W"}, {"name": "n", "action": "W", "properties": {"T": 1e3}}]})",
         L"step 2 (n): property \"T\": the number 1000.0 is not an integer"},
        {R"({"steps": [{"action": "W", "properties": {"File": "a", "file": "b"}}]})",
         L"step 1: property \"file\": given twice (also as \"File\")"},
        {R"({"steps": [{"action": "W", "nmae": "x"}]})", L"step 1: unknown key \"nmae\""},
        {"{\"steps\": [],\r\n \"\xC3\xBC\xE2\x82\xAC\": x}", L"line 2, column 8: "}, // columns count characters
        {"\xEF\xBB\xBF{\"steps\": [] x", L"line 1, column 14: "},                    // the byte order mark is no column
        {"{\"steps\": [\n", L"line 2, column 1: "},
    };
    for (const auto& row : rows) {
        std::wstring message = L"(accepted)";
        try {
            ParseScript(row.script);
        } catch (const ScriptError& e) {
            message = e.message();
        }
        EXPECT_EQ(message.rfind(row.expected, 0), 0u) << row.script << "\n  gave: " << testing::PrintToString(message);
        const bool position = wcsncmp(row.expected, L"line ", 5) == 0;
        EXPECT_TRUE(!position || message.size() > wcslen(row.expected)) << "no reason given for " << row.script;
    }
}

TEST(HostStepValues, ExpansionNestingEndsAtTheDepthLimitAndEndlessGrowthFails) {
    bool unresolved = false;
    const std::wstring loop = Expander({{L"LOOP", L"<%LOOP%>"}}, {}).Expand(L"%LOOP%", unresolved);
    EXPECT_EQ(loop, std::wstring(Expander::kDepthLimit, L'<') + L"%LOOP%" + std::wstring(Expander::kDepthLimit, L'>'));
    EXPECT_TRUE(unresolved);
    VariableMap doubling; // D0 is D1 twice, D1 is D2 twice...
    for (int i = 0; i < 30; ++i)
        doubling[L"D" + std::to_wstring(i)] = L"%D" + std::to_wstring(i + 1) + L"%%D" + std::to_wstring(i + 1) + L"%";
    EXPECT_THROW(Expander(doubling, {}).Expand(L"%D0%", unresolved), tol::truntime_error);
}

TEST(HostStepValues, TextExpanderTellsWhatStaysUnresolved) {
    const auto object = MakeTextExpander(std::make_shared<const Expander>(VariableMap{{L"C", L"c"}}, VariableMap{}));
    const std::tuple<const wchar_t*, const wchar_t*, long> rows[] = {{L"%C%", L"c", 0}, {L"%C%:%NOPE%", L"c:%NOPE%", 1}};
    for (const auto& [text, expected, unresolved] : rows) {
        tol::bstr out;
        long flag = 12345;
        ASSERT_EQ(object->ExpandText(hosttest::Arg(text), 0, out.receive(), VARIANT_FALSE, 0, &flag), S_OK);
        EXPECT_EQ(out.str(), expected);
        EXPECT_EQ(flag, unresolved) << testing::PrintToString(text);
    }
}
