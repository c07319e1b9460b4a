// IBuildRun::RunCommandLine with real processes: the helper program prints, sleeps, exits and starts copies of
// itself as its arguments say.
#include "build_run.h"
#include "command.h"
#include "host_test_support.h"
#include "script_runner.h"
#include "text.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <gtest/gtest.h>
#include <thread>

using namespace host;
using hosttest::Arg;

namespace {

constexpr long kNoExitCode = 0x5A5A; // the exit code VARIANT is not an integer

std::wstring Helper(const std::wstring& args) { return L"\"" + test::BinFolder() + L"\\velmora_host_helper.exe\" " + args; }

// How many of the helpers that printed "pid N" end within the wait; those that still run are then ended.
size_t EndedPids(const std::vector<std::wstring>& lines, DWORD wait = 3000) {
    size_t count = 0;
    for (const std::wstring& line : lines) {
        if (line.rfind(L"pid ", 0) != 0) continue;
        const tol::unique_process process(::OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, std::stoul(line.substr(4))));
        const bool ended = !process || ::WaitForSingleObject(process.get(), wait) == WAIT_OBJECT_0;
        if (!ended) ::TerminateProcess(process.get(), 0);
        count += ended ? 1 : 0;
    }
    return count;
}

class HostCommand : public testing::Test {
protected:
    // Runs the command as an action would; what it gives is in the members below.
    HRESULT Run(const std::wstring& command, const wchar_t* codes = L"", long timeout = 0, long logOutput = 1,
                VARIANT_BOOL wait = VARIANT_TRUE, const wchar_t* account = L"") {
        hosttest::RecordingLog log;
        const tol::com_ptr<IBuildRun> build = MakeBuildRun(log, stop.get(), std::make_shared<const Expander>());
        VARIANT code;
        hosttest::FillWithGarbage(code);
        status = 12345;
        const ULONGLONG start = ::GetTickCount64();
        const HRESULT hr = build->RunCommandLine(Arg(command), Arg(L""), &code, logOutput, Arg(account), timeout, 0, wait,
                                                 Arg(codes), &status);
        milliseconds = ::GetTickCount64() - start;
        ULONGLONG first = 0;
        lines = log.lines(&first);
        firstLineAfter = lines.empty() ? 0 : first - start;
        exitCode = V_VT(&code) == VT_I4 ? V_I4(&code) : kNoExitCode;
        return hr;
    }

    tol::unique_event stop{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    long status = 0, exitCode = 0;
    ULONGLONG milliseconds = 0, firstLineAfter = 0; // from the call to its end and to the first line
    std::vector<std::wstring> lines;
};

} // namespace

TEST_F(HostCommand, StatusFollowsTheSuccessCodesAndOutputIsRelayed) {
    const std::wstring missing = test::BinFolder() + L"\\no such program.exe";
    const struct {
        std::wstring command;
        const wchar_t* codes;
        long logOutput;
        long status;
        long exitCode;
        std::vector<std::wstring> lines;
    } rows[] = {
        {Helper(L"out first hex C3BC0D0A0A err second"), L"", 1, 0, 0, {L"first", L"\u00fc", L"", L"second"}},
        {Helper(L"hex 8E0A"), L"", 1, 0, 0, {tol::Widen("\x8E", CP_OEMCP)}}, // not UTF-8: the OEM code page
        {Helper(L"out hidden exit 4"), L"4", 0, 0, 4, {}},                  // the output is not logged
        {Helper(L"exit 16"), L" 1 ; 0x10,", 1, 0, 16, {}},                   // separators, blanks, hexadecimal
        {Helper(L"exit -1"), L"4294967295", 1, 0, -1, {}},
        {Helper(L"exit 0"), L"1", 1, 1, 0, {}}, // 0 is no success when not listed
        {missing, L"", 1, 1, kNoExitCode,
         {L"error: cannot run " + missing + L": " + SystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Run(row.command, row.codes, 0, row.logOutput), S_OK) << row.command;
        EXPECT_EQ(status, row.status) << row.command << " with " << testing::PrintToString(row.codes);
        EXPECT_EQ(exitCode, row.exitCode) << row.command;
        EXPECT_EQ(lines, row.lines) << row.command;
    }
}

TEST_F(HostCommand, LinesArriveAsWrittenAndWaitFalseDoesNotWait) {
    Run(Helper(L"out early sleep 1500 out late"));
    EXPECT_EQ(lines, (std::vector<std::wstring>{L"early", L"late"}));
    EXPECT_LT(firstLineAfter + 700, milliseconds) << "the first line came only at the end";

    Run(Helper(L"sleep 1000"), L"", 0, 1, VARIANT_FALSE);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(exitCode, kNoExitCode);
    EXPECT_LT(milliseconds, 700u) << "waited although wait is false";
}

TEST_F(HostCommand, RefusedArguments) {
    for (const wchar_t* codes : {L"0 or 1", L"0x1FFFFFFFF", L"4294967296", L"0x-1"}) {
        EXPECT_EQ(Run(Helper(L""), codes), E_INVALIDARG) << testing::PrintToString(codes);
        EXPECT_NE(hosttest::TakeErrorDescription().find(codes), std::wstring::npos);
    }
    EXPECT_EQ(Run(Helper(L""), L"", 0, 1, VARIANT_TRUE, L"builder"), E_NOTIMPL);
    EXPECT_NE(hosttest::TakeErrorDescription().find(L"builder"), std::wstring::npos);
}

// A command that started a child: the time limit ends both, and so does the stop event when there is none.
TEST_F(HostCommand, TimeLimitAndStopEndTheCommandAndWhatItStarted) {
    const std::wstring tree = Helper(L"pid spawn \"pid sleep 20000\" sleep 20000");
    const std::pair<long, std::wstring> rows[] = {
        {2, L"error: " + tree + L" did not end within its time limit of 2 s and was ended"},
        {0, L"stopped: " + tree},
    };
    for (const auto& [timeout, message] : rows) {
        std::thread stopper([&, timeout = timeout] {
            ::Sleep(1500);
            if (timeout == 0) ::SetEvent(stop.get());
        });
        Run(tree, L"", timeout);
        stopper.join();
        EXPECT_EQ(status, timeout ? 1 : 2);
        EXPECT_EQ(exitCode, static_cast<long>(kEndedExitCode));
        EXPECT_LT(milliseconds, 8000u);
        EXPECT_EQ(lines.back(), message);
        EXPECT_EQ(EndedPids(lines), 2u) << "the command or its child still runs; timeout " << timeout;
    }
}

TEST_F(HostCommand, OutputHeldOpenByAGrandchildDoesNotHoldTheCall) {
    // The grandchild inherits the output pipe and would outlive the command by far.
    Run(Helper(L"spawn \"pid sleep 20000\" sleep 1000 out parent"));
    EndedPids(lines, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(lines.size(), 2u);
    EXPECT_LT(milliseconds, 5000u) << "waited for the grandchild that holds the pipe";
}
