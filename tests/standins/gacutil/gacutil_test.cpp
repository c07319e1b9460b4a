// The gacutil stand-in as a process: exit codes, what it prints, and the store folder it leaves behind.
#include "script_runner.h"
#include "frame/messages.h"
#include <gtest/gtest.h>
#include <filesystem>
#include <set>

namespace fs = std::filesystem;

namespace {

// Each test has a folder of its own (not ASCII); the store in it is named with a trailing separator, as users write it.
class Gacutil : public testing::Test {
protected:
    Gacutil() { ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", (store.wstring() + L"\\").c_str()); }
    ~Gacutil() override { ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", nullptr); }

    // The lines of stdout, then those of stderr after "! ", each followed by a line feed.
    std::wstring Run(const std::wstring& arguments) {
        const test::ProgramRun run = test::RunProgram(L"\"" + test::BinFolder() + L"\\sdk\\bin\\gacutil.exe\" " + arguments,
                                                      scratch.path());
        std::wstring printed = L"exit " + std::to_wstring(run.exitCode) + L"\n";
        for (const std::wstring& line : run.out) printed += line + L"\n";
        for (const std::wstring& line : tol::SplitTokens(run.err, L"\r\n")) printed += L"! " + line + L"\n";
        return printed;
    }

    // Every folder ("name\") and file ("name=bytes") below the store.
    std::set<std::wstring> Contents() const {
        std::set<std::wstring> items;
        std::error_code missing;
        for (const auto& item : fs::recursive_directory_iterator(store, missing)) {
            const std::string bytes = item.is_directory() ? "\\" : "=" + test::ReadFileBytes(item.path());
            items.insert(fs::relative(item.path(), store).wstring() + std::wstring(bytes.begin(), bytes.end()));
        }
        return items;
    }

    test::ScratchFolder scratch{L"velmora-gacutil \u00fc"};
    fs::path store = fs::path(scratch.path()) / L"the store";
};

} // namespace

TEST_F(Gacutil, OperationsChangeTheStoreAndReportWhatTheyDid) {
    test::WriteFileBytes(scratch / L"My.Lib.dll", "first");
    test::WriteFileBytes(scratch / L"My.Lib.exe", "second"); // another file of the same assembly name
    const std::wstring first = L"\"" + (scratch / L"My.Lib.dll") + L"\"", second = L"\"" + (scratch / L"My.Lib.exe") + L"\"";
    const std::wstring added = L"exit 0\nAssembly successfully added to the cache: My.Lib";
    const std::set<std::wstring> one{L"My.Lib\\", L"My.Lib\\My.Lib.dll=first"}, two{L"My.Lib\\", L"My.Lib\\My.Lib.exe=second"};
    const struct {
        std::wstring arguments;
        std::wstring printed;        // as Run gives it
        std::set<std::wstring> store; // after the row
    } rows[] = {
        {L"/nologo /i " + first, added + L"\n", one},
        {L"/nologo /i " + first, added + L" (an identical copy was already there)\n", one},
        {L"/nologo /i " + second,
         L"exit 1\n! Error: A different assembly named My.Lib is already in the cache; /if replaces it.\n", one},
        {L"/nologo /IF " + second, added + L" (a different copy was replaced)\n", two},
        {L"/l",
         L"exit 0\nVelmora assembly cache stand-in (keeps assemblies as copies in a folder)\n  My.Lib (My.Lib.exe)\n"
         L"Number of assemblies = 1\n", two},
        {L"/nologo /u ..", L"exit 1\n! Error: \"..\" does not give a usable assembly name.\n", two},
        {L"/nologo /ungen " + second,
         L"exit 0\nAssembly successfully uninstalled from the cache: My.Lib (native images included)\n", {}},
        {L"/nologo /u \"my.lib, Version=1.0.0.0\"", L"exit 1\n! Error: No assembly named my.lib is in the cache.\n", {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Run(row.arguments), row.printed) << testing::PrintToString(row.arguments);
        EXPECT_EQ(Contents(), row.store) << testing::PrintToString(row.arguments);
    }
}

TEST_F(Gacutil, BadArgumentsExitWithUsageAndTouchNothing) {
    const std::pair<std::wstring, std::wstring> rows[] = {
        {L"/nologo", L"No operation given."},
        {L"/i", L"The operation needs an assembly."},
        {L"-x A.dll", L"Unknown option -x."},
        {L"/i A.dll B.dll", L"Too many arguments."},
        {L"/i /u A.dll", L"Only one of /i, /if, /u, /uf, /ungen, /l and /? may be given."},
        {L"/i \"\"", L"The assembly argument is empty."},
    };
    for (const auto& [arguments, message] : rows) {
        EXPECT_EQ(Run(arguments).rfind(L"exit 2\n! Error: " + message + L"\n! Usage: gacutil", 0), 0u)
            << testing::PrintToString(arguments);
        EXPECT_FALSE(fs::exists(store)) << testing::PrintToString(arguments);
    }
}

// A store path longer than the classic limit and than the tool's first path buffer, so that the buffer has to grow.
TEST_F(Gacutil, PathsLongerThanTheClassicLimitWork) {
    test::WriteFileBytes(scratch / L"Deep.Lib.dll", "deep");
    fs::path deep = L"\\\\?\\" + scratch.path();
    for (int i = 0; i < 6; ++i) deep /= std::wstring(200, static_cast<wchar_t>(L'a' + i));
    ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", deep.wstring().substr(4).c_str());
    const std::wstring assembly = L"\"" + (scratch / L"Deep.Lib.dll") + L"\"";
    EXPECT_EQ(Run(L"/nologo /i " + assembly), L"exit 0\nAssembly successfully added to the cache: Deep.Lib\n");
    EXPECT_EQ(test::ReadFileBytes(deep / L"Deep.Lib" / L"Deep.Lib.dll"), "deep");
    EXPECT_EQ(Run(L"/nologo /u " + assembly), L"exit 0\nAssembly successfully uninstalled from the cache: Deep.Lib\n");
    EXPECT_EQ(::GetFileAttributesW((deep / L"Deep.Lib").c_str()), INVALID_FILE_ATTRIBUTES);
    for (; deep.wstring().size() > scratch.path().size() + 4; deep = deep.parent_path()) // beyond the scratch folder's reach
        ::RemoveDirectoryW(deep.c_str());
}
