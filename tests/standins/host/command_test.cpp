// IBuildRun::RunCommandLine with real processes: the helper program prints, sleeps, exits and starts copies of
// itself as its arguments say.
#include "build_run.h"
#include "command.h"
#include "host_test_support.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <gtest/gtest.h>
#include <optional>
#include <thread>

using namespace host;
using hosttest::Arg;

namespace {

struct Result {
    HRESULT hr;
    long status;
    VARTYPE type;
    long exitCode;
    ULONGLONG milliseconds;
    std::vector<std::wstring> lines;
    ULONGLONG firstLineAfter; // from the call to the first line
};

std::wstring Helper(const std::wstring& args) { return L"\"" + hosttest::BinFolder() + L"\\velmora_host_helper.exe\" " + args; }

// The process ids that helpers printed ("pid N"), each checked to have ended.
size_t EndedPids(const std::vector<std::wstring>& lines) {
    size_t ended = 0;
    for (const std::wstring& line : lines) {
        if (line.rfind(L"pid ", 0) != 0) continue;
        const tol::unique_process process(::OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, std::stoul(line.substr(4))));
        if (!process || ::WaitForSingleObject(process.get(), 3000) == WAIT_OBJECT_0) ++ended;
    }
    return ended;
}

class HostCommand : public testing::Test {
protected:
    Result Run(const std::wstring& command, const wchar_t* codes = L"", long timeout = 0, long logOutput = 1,
               VARIANT_BOOL wait = VARIANT_TRUE, const std::wstring& folder = L"", const wchar_t* account = L"") {
        log.clear();
        VARIANT exitCode;
        hosttest::FillWithGarbage(exitCode);
        long status = 12345;
        const ULONGLONG start = ::GetTickCount64();
        const HRESULT hr = build->RunCommandLine(Arg(command), Arg(folder), &exitCode, logOutput, Arg(account), timeout, 0, wait,
                                                 Arg(codes), &status);
        const ULONGLONG end = ::GetTickCount64();
        const std::vector<std::wstring> lines = log.lines();
        return {hr,
                status,
                V_VT(&exitCode),
                V_VT(&exitCode) == VT_I4 ? V_I4(&exitCode) : 0,
                end - start,
                lines,
                lines.empty() ? 0 : log.firstLineTime() - start};
    }

    hosttest::RecordingLog log;
    tol::unique_event stop{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    tol::com_ptr<IBuildRun> build = MakeBuildRun(log, stop.get(), std::make_shared<const Expander>());
};

} // namespace

TEST(HostSuccessCodes, ParsesListsOfIntegers) {
    const struct {
        const wchar_t* text;
        const wchar_t* codes; // "none": refused
    } rows[] = {
        {L"", L"0 "},      {L"0,1;2", L"0 1 2 "}, {L" 3 , 4 ;", L"3 4 "}, {L"0x10", L"16 "},         {L"4294967295", L"-1 "},
        {L"-1", L"-1 "},   {L"zero", L"none"},    {L"0x-1", L"none"},     {L"0x1FFFFFFFF", L"none"}, {L"4294967296", L"none"},
        {L"1 2", L"none"},
    };
    for (const auto& row : rows) {
        const std::optional<std::vector<long>> codes = ParseSuccessCodes(row.text);
        std::wstring text = codes ? L"" : L"none";
        for (long code : codes.value_or(std::vector<long>{})) text += std::to_wstring(code) + L" ";
        EXPECT_EQ(text, row.codes) << testing::PrintToString(row.text);
    }
}

TEST_F(HostCommand, StatusFollowsTheSuccessCodesAndOutputIsRelayed) {
    const struct {
        const wchar_t* args;
        const wchar_t* codes;
        long status;
        long exitCode;
        std::vector<std::wstring> lines;
    } rows[] = {
        {L"out first hex C3BC0D0A err second", L"", 0, 0, {L"first", L"\u00fc", L"second"}},
        {L"hex 8E0A", L"", 0, 0, {tol::Widen("\x8E", CP_OEMCP)}}, // not UTF-8: the OEM code page
        {L"hex 61620A0A63", L"", 0, 0, {L"ab", L"", L"c"}},
        {L"exit 3", L"", 1, 3, {}},
        {L"exit 3", L"0; 3", 0, 3, {}},
        {L"exit -1", L"0xFFFFFFFF", 0, -1, {}},
        {L"exit 0", L"1", 1, 0, {}},
    };
    for (const auto& row : rows) {
        const Result r = Run(Helper(row.args), row.codes);
        EXPECT_EQ(r.hr, S_OK) << row.args;
        EXPECT_EQ(r.status, row.status) << row.args << " with " << testing::PrintToString(row.codes);
        EXPECT_EQ(r.type, VT_I4) << row.args;
        EXPECT_EQ(r.exitCode, row.exitCode) << row.args;
        EXPECT_EQ(r.lines, row.lines) << row.args;
    }
}

TEST_F(HostCommand, OptionsOfTheCall) {
    Result r = Run(Helper(L"out early sleep 1500 out late"));
    EXPECT_EQ(r.lines, (std::vector<std::wstring>{L"early", L"late"}));
    EXPECT_LT(r.firstLineAfter + 700, r.milliseconds) << "the first line came only at the end";

    const std::wstring folder = hosttest::NewTempFolder(L"velmora host cwd \u00e9");
    r = Run(Helper(L"cwd"), L"", 0, 1, VARIANT_TRUE, folder);
    EXPECT_EQ(r.lines, std::vector<std::wstring>{folder});
    ::RemoveDirectoryW(folder.c_str());

    r = Run(Helper(L"out hidden exit 4"), L"4", 0, 0);
    EXPECT_EQ(r.status, 0);
    EXPECT_TRUE(r.lines.empty()) << "output relayed although logOutput is 0";

    r = Run(Helper(L"sleep 1000"), L"", 0, 1, VARIANT_FALSE);
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.type, VT_EMPTY);
    EXPECT_LT(r.milliseconds, 700u) << "waited although wait is false";
}

TEST_F(HostCommand, RefusedCallsAndCommandsThatCannotStart) {
    Result r = Run(L"C:\\velmora\\no such program.exe");
    EXPECT_EQ(r.hr, S_OK);
    EXPECT_EQ(r.status, 1);
    ASSERT_EQ(r.lines.size(), 1u);
    EXPECT_EQ(r.lines[0].rfind(L"error: cannot run C:\\velmora\\no such program.exe: ", 0), 0u) << r.lines[0];
    EXPECT_EQ(r.lines[0].find(L'\r'), std::wstring::npos);

    EXPECT_EQ(Run(Helper(L""), L"0 or 1").hr, E_INVALIDARG);
    EXPECT_NE(hosttest::TakeErrorDescription().find(L"0 or 1"), std::wstring::npos);
    EXPECT_EQ(Run(Helper(L""), L"", 0, 1, VARIANT_TRUE, L"", L"builder").hr, E_NOTIMPL);
    EXPECT_NE(hosttest::TakeErrorDescription().find(L"builder"), std::wstring::npos);
}

TEST_F(HostCommand, TimeLimitAndStopEndTheCommandAndWhatItStarted) {
    const std::wstring tree = Helper(L"pid spawn \"pid sleep 20000\" sleep 20000");
    Result r = Run(tree, L"", 2);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.exitCode, static_cast<long>(kEndedExitCode));
    EXPECT_LT(r.milliseconds, 8000u);
    ASSERT_FALSE(r.lines.empty());
    EXPECT_NE(r.lines.back().find(L"did not end within its time limit of 2 s"), std::wstring::npos) << r.lines.back();
    EXPECT_EQ(EndedPids(r.lines), 2u) << "the command or its child still runs";

    std::thread stopper([this] {
        ::Sleep(1500);
        ::SetEvent(stop.get());
    });
    r = Run(tree);
    stopper.join();
    EXPECT_EQ(r.status, 2);
    EXPECT_LT(r.milliseconds, 8000u);
    EXPECT_EQ(EndedPids(r.lines), 2u) << "the command or its child still runs";
}

TEST_F(HostCommand, OutputHeldOpenByAGrandchildDoesNotHoldTheCall) {
    // The grandchild inherits the output pipe and would outlive the command by far.
    const Result r = Run(Helper(L"spawn \"pid sleep 20000\" sleep 1000 out parent"));
    for (const std::wstring& line : r.lines) {
        if (line.rfind(L"pid ", 0) != 0) continue;
        const tol::unique_process grandchild(::OpenProcess(PROCESS_TERMINATE, FALSE, std::stoul(line.substr(4))));
        ::TerminateProcess(grandchild.get(), 0);
    }
    EXPECT_EQ(r.status, 0);
    EXPECT_EQ(r.lines.size(), 2u);
    EXPECT_LT(r.milliseconds, 5000u) << "waited for the grandchild that holds the pipe";
}
