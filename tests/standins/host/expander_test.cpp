// %NAME% expansion: lookup order, what stays as it is, nesting limits, and the ITextExpander boundary.
#include "expander.h"
#include "host_test_support.h"
#include "text_expander.h"
#include "frame/bstr.h"
#include "frame/errors.h"
#include <gtest/gtest.h>

using namespace host;

namespace {

class HostExpansion : public testing::Test {
protected:
    static void SetUpTestSuite() {
        for (const auto& [name, value] : kEnvironment) ::SetEnvironmentVariableW(name, value);
    }
    static void TearDownTestSuite() {
        for (const auto& [name, value] : kEnvironment) ::SetEnvironmentVariableW(name, nullptr);
    }
    static constexpr std::pair<const wchar_t*, const wchar_t*> kEnvironment[] = {
        {L"VRT_A", L"env"}, {L"VRT_D", L"env"}, {L"VRT_F", L"environment"}, {L"VRT_G", L"%VRT_A%"}, {L"VRT_EMPTY", L""}};

    Expander expander{{{L"VRT_A", L"script"}, {L"VRT_B", L"%VRT_C%-b"}, {L"VRT_C", L"c"}, {L"LOOP", L"<%LOOP%>"}},
                      {{L"VRT_A", L"command line"}, {L"VRT_D", L"command line"}, {L"VRT_E", L"%VRT_A%"}}};
};

// V1 refers to V2 and so on; the last is "end".
Expander Chain(int length) {
    VariableMap chain{{L"V" + std::to_wstring(length), L"end"}};
    for (int i = 1; i < length; ++i) chain[L"V" + std::to_wstring(i)] = L"%V" + std::to_wstring(i + 1) + L"%";
    return Expander(chain, {});
}

} // namespace

TEST_F(HostExpansion, ResolvesInOrderAndLeavesTheRest) {
    const struct {
        const wchar_t* text;
        const wchar_t* expected;
        bool unresolved;
    } rows[] = {
        {L"%VRT_A%", L"script", false},       // script beats --var and the environment
        {L"%VRT_D%", L"command line", false}, // --var beats the environment
        {L"%VRT_F%", L"environment", false},
        {L"[%VRT_EMPTY%]", L"[]", false}, // set but empty is known
        {L"%vrt_a%", L"script", false},   // names ignore case
        {L"%VRT_E%", L"script", false},   // --var values are expanded in turn
        {L"%VRT_B%/%VRT_C%", L"c-b/c", false},
        {L"%VRT_G%", L"%VRT_A%", false}, // environment values are taken as they are
        {L"x%VRT_NONE%y", L"x%VRT_NONE%y", true},
        {L"50%off%VRT_C%", L"50%offc", true}, // the closing % of an unknown name may open the next
        {L"100%", L"100%", false},            // a lone % is text
        {L"a %% b", L"a %% b", false},        // no escapes, no reference
        {L"%%VRT_C%", L"%c", false},
        {L"100% and 50%", L"100% and 50%", true}, // "% and 50%" reads as a reference, as in the system's expansion
    };
    for (const auto& row : rows) {
        bool unresolved = false;
        EXPECT_EQ(expander.Expand(row.text, unresolved), row.expected) << testing::PrintToString(row.text);
        EXPECT_EQ(unresolved, row.unresolved) << testing::PrintToString(row.text);
    }
}

TEST_F(HostExpansion, StopsNestingAtTheDepthLimitAndRefusesEndlessGrowth) {
    bool unresolved = false;
    const std::wstring loop = expander.Expand(L"%LOOP%", unresolved);
    EXPECT_EQ(loop, std::wstring(Expander::kDepthLimit, L'<') + L"%LOOP%" + std::wstring(Expander::kDepthLimit, L'>'));
    unresolved = false;
    EXPECT_EQ(Chain(Expander::kDepthLimit).Expand(L"%V1%", unresolved), L"end");
    EXPECT_FALSE(unresolved);
    EXPECT_EQ(Chain(Expander::kDepthLimit + 1).Expand(L"%V1%", unresolved),
              L"%V" + std::to_wstring(Expander::kDepthLimit + 1) + L"%");
    EXPECT_TRUE(unresolved);

    VariableMap doubling; // D0 is D1 twice, D1 is D2 twice...
    for (int i = 0; i < 30; ++i)
        doubling[L"D" + std::to_wstring(i)] = L"%D" + std::to_wstring(i + 1) + L"%%D" + std::to_wstring(i + 1) + L"%";
    EXPECT_THROW(Expander(doubling, {}).Expand(L"%D0%", unresolved), tol::truntime_error);
}

TEST_F(HostExpansion, TextExpanderInterface) {
    const auto object = MakeTextExpander(std::make_shared<const Expander>(expander));
    tol::bstr out;
    long unresolved = 12345;
    ASSERT_EQ(object->ExpandText(hosttest::Arg(L"%VRT_C%:%NOPE%"), 0, out.receive(), VARIANT_FALSE, 0, &unresolved), S_OK);
    EXPECT_EQ(out.str(), L"c:%NOPE%");
    EXPECT_NE(unresolved, 0);
    ASSERT_EQ(object->ExpandText(hosttest::Arg(L"%VRT_C%"), 0, out.receive(), VARIANT_FALSE, 0, &unresolved), S_OK);
    EXPECT_EQ(unresolved, 0);
    ASSERT_EQ(object->ExpandForDisplay(hosttest::Arg(L"%VRT_B%"), out.receive()), S_OK);
    EXPECT_EQ(out.str(), L"c-b");
    EXPECT_EQ(object->ExpandText(hosttest::Arg(L"x"), 0, out.receive(), VARIANT_FALSE, 0, nullptr), E_POINTER);
    EXPECT_EQ(out.get(), nullptr);
    EXPECT_NE(hosttest::TakeErrorDescription(), L"(none)");
}
