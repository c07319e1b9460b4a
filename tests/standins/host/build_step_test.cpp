// The step object through its interfaces: stored and evaluated properties, the writer, and COM identity.
#include "build_run.h"
#include "build_step.h"
#include "host_test_support.h"
#include "text_expander.h"
#include "values.h"
#include "frame/variant.h"
#include <gtest/gtest.h>

using namespace host;
using hosttest::Arg;

namespace {

tol::variant Integer(LONG value) {
    tol::variant v;
    V_VT(v.ptr()) = VT_I4;
    V_I4(v.ptr()) = value;
    return v;
}

// "vt:text": a text, an integer as digits, a list as its elements.
std::wstring Shown(const VARIANT& value) {
    std::wstring text = std::to_wstring(V_VT(&value)) + L":";
    if (V_VT(&value) == VT_BSTR) return text + std::wstring(BstrView(V_BSTR(&value)));
    if (V_VT(&value) == VT_I4) return text + std::to_wstring(V_I4(&value));
    return V_VT(&value) == VT_EMPTY ? text : text + hosttest::ArrayTexts(value);
}

class HostStep : public testing::Test {
protected:
    HostStep() {
        PropertyMap properties;
        properties.emplace(L"Folder", MakeText(L"%OUT%\\sub"));
        properties.emplace(L"Count", MakeText(L"%N%"));
        properties.emplace(L"Encoding", MakeText(L"abc"));
        properties.emplace(L"Number", Integer(1200));
        properties.emplace(L"Files", MakeTextArray({L"%OUT%\\a", L"b"}));
        step = MakeBuildStep(std::move(properties), expander);
    }

    std::shared_ptr<const Expander> expander =
        std::make_shared<const Expander>(VariableMap{{L"OUT", L"C:\\out"}, {L"N", L"7"}}, VariableMap{});
    tol::com_ptr<IBuildStep> step;
};

constexpr VARTYPE kStored = 0xFFFF; // a row that reads the stored value

} // namespace

TEST_F(HostStep, StoredValuesAsGivenEvaluatedValuesExpandedThenConverted) {
    const struct {
        const wchar_t* name;
        VARTYPE wanted;
        HRESULT hr;
        const wchar_t* shown;
    } rows[] = {
        {L"folder", kStored, S_OK, L"8:%OUT%\\sub"},
        {L"Files", kStored, S_OK, L"8204:%OUT%\\a|b|"},
        {L"Missing", kStored, S_OK, L"0:"},
        {L"Folder", VT_BSTR, S_OK, L"8:C:\\out\\sub"},
        {L"Count", VT_I4, S_OK, L"3:7"}, // expanded before the conversion
        {L"Number", VT_BSTR, S_OK, L"8:1200"},
        {L"Missing", VT_BSTR, S_OK, L"8:"},
        {L"Missing", VT_I4, S_OK, L"3:0"},
        {L"Files", VT_BSTR, S_OK, L"8204:C:\\out\\a|b|"}, // a list stays a list when a text is wanted
        {L"Files", VT_VARIANT, S_OK, L"8204:C:\\out\\a|b|"},
        {L"Encoding", VT_I4, DISP_E_TYPEMISMATCH, L"0:"},
    };
    for (const auto& row : rows) {
        VARIANT raw;
        hosttest::FillWithGarbage(raw);
        const HRESULT hr = row.wanted == kStored ? step->GetStoredProperty(Arg(row.name), &raw)
                                                 : step->GetEvaluatedProperty(nullptr, Arg(row.name), row.wanted, &raw);
        tol::variant value;
        *value.receive() = raw;
        EXPECT_EQ(hr, row.hr) << row.name << " as " << row.wanted;
        EXPECT_EQ(Shown(value.get()), row.shown) << row.name << " as " << row.wanted;
    }
    tol::variant value;
    ASSERT_EQ(step->GetEvaluatedProperty(nullptr, Arg(L"Encoding"), VT_I4, value.receive()), DISP_E_TYPEMISMATCH);
    const std::wstring description = hosttest::TakeErrorDescription();
    EXPECT_NE(description.find(L"\"Encoding\" holds \"abc\""), std::wstring::npos) << description;
    EXPECT_EQ(description.find(L'\r'), std::wstring::npos) << "a system text kept its line end";
}

TEST_F(HostStep, WriterSetsReplacesAndRemoves) {
    const tol::com_ptr<IBuildStepWriter> writer = step.query<IBuildStepWriter>();
    ASSERT_TRUE(writer);
    tol::variant value = MakeText(L"first");
    ASSERT_EQ(writer->SetProperty(Arg(L"Mode"), value.get()), S_OK);
    value.reset(); // the step holds its own copy, not the caller's text
    ASSERT_EQ(step->GetStoredProperty(Arg(L"Mode"), value.receive()), S_OK);
    EXPECT_EQ(Shown(value.get()), L"8:first");
    ASSERT_EQ(writer->SetProperty(Arg(L"MODE"), Integer(3).get()), S_OK);

    VARIANT previous;
    hosttest::FillWithGarbage(previous);
    ASSERT_EQ(writer->RemoveProperty(Arg(L"mode"), &previous), S_OK);
    EXPECT_EQ(Shown(previous), L"3:3");
    ASSERT_EQ(step->GetStoredProperty(Arg(L"Mode"), value.receive()), S_OK);
    EXPECT_EQ(value.type(), VT_EMPTY);
    hosttest::FillWithGarbage(previous);
    ASSERT_EQ(writer->RemoveProperty(Arg(L"Mode"), &previous), S_OK);
    EXPECT_EQ(V_VT(&previous), VT_EMPTY);

    EXPECT_EQ(writer->SetProperty(Arg(L""), Integer(1).get()), E_INVALIDARG);
    EXPECT_NE(hosttest::TakeErrorDescription(), L"(none)");
}

TEST_F(HostStep, HostObjectsAnswerForTheirOwnInterfacesOnly) {
    hosttest::RecordingLog log;
    const tol::com_ptr<IBuildRun> build = MakeBuildRun(log, nullptr, expander);
    const tol::com_ptr<ITextExpander> text = MakeTextExpander(expander);
    const struct {
        const char* object;
        IUnknown* unknown;
        std::vector<IID> own;
    } rows[] = {
        {"step", step.get(), {IID_IBuildStep, IID_IBuildStepWriter}},
        {"build", build.get(), {IID_IBuildRun}},
        {"expander", text.get(), {IID_ITextExpander}},
    };
    for (const auto& row : rows) {
        tol::com_ptr<ISupportErrorInfo> support;
        ASSERT_EQ(row.unknown->QueryInterface(IID_ISupportErrorInfo, support.put_void()), S_OK) << row.object;
        for (const IID& iid : {IID_IBuildStep, IID_IBuildStepWriter, IID_IBuildRun, IID_ITextExpander, IID_IBuildAction}) {
            const bool own = std::find(row.own.begin(), row.own.end(), iid) != row.own.end();
            EXPECT_EQ(support->InterfaceSupportsErrorInfo(iid), own ? S_OK : S_FALSE) << row.object;
            tol::com_ptr<IUnknown> answer;
            EXPECT_EQ(row.unknown->QueryInterface(iid, answer.put_void()), own ? S_OK : E_NOINTERFACE) << row.object;
        }
        tol::com_ptr<IUnknown> identity1, identity2; // every interface answers the same IUnknown
        row.unknown->QueryInterface(IID_IUnknown, identity1.put_void());
        support->QueryInterface(IID_IUnknown, identity2.put_void());
        EXPECT_EQ(identity1.get(), identity2.get()) << row.object;
        const ULONG before = row.unknown->AddRef();
        EXPECT_EQ(row.unknown->Release(), before - 1) << row.object;
    }
}
