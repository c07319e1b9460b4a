// The gacutil stand-in as a process: exit codes, what it prints, and the store folder it leaves behind.
#include "frame/handles.h"
#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

struct Result {
    DWORD exitCode = 0xDEADBEEF;
    std::wstring out, err;
};

std::wstring ProgramFolder() {
    std::wstring path(32768, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\') + 1);
}

const std::wstring& Tool() {
    static const std::wstring tool = ProgramFolder() + L"sdk\\bin\\gacutil.exe";
    return tool;
}

std::wstring ReadUtf8(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    const std::string text = bytes.str();
    std::wstring wide(text.size(), L'\0');
    wide.resize(::MultiByteToWideChar(CP_UTF8, 0, text.data(), static_cast<int>(text.size()), wide.data(),
                                      static_cast<int>(wide.size())));
    return wide;
}

tol::unique_file Inheritable(const fs::path& file) {
    SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
    return tol::unique_file(::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit, CREATE_ALWAYS, 0, nullptr));
}

// Output goes through files: a pipe would wait for the Wine services that the first program may start.
Result RunTool(const std::wstring& arguments, const fs::path& scratch) {
    Result result;
    {
        tol::unique_file out = Inheritable(scratch / L"out.txt"), err = Inheritable(scratch / L"err.txt");
        STARTUPINFOW startup{sizeof startup};
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = out.get();
        startup.hStdError = err.get();
        PROCESS_INFORMATION process{};
        std::wstring commandLine = L"\"" + Tool() + L"\" " + arguments;
        if (!::CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process)) {
            ADD_FAILURE() << "cannot start gacutil: " << ::GetLastError();
            return result;
        }
        const tol::unique_process owner(process.hProcess), thread(process.hThread);
        EXPECT_EQ(::WaitForSingleObject(process.hProcess, 60000), WAIT_OBJECT_0);
        ::GetExitCodeProcess(process.hProcess, &result.exitCode);
    }
    result.out = ReadUtf8(scratch / L"out.txt");
    result.err = ReadUtf8(scratch / L"err.txt");
    return result;
}

void MakeFile(const fs::path& file, const std::string& bytes) {
    fs::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

std::string ReadBytes(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    return bytes.str();
}

// The store as folder name -> (file name -> bytes).
using StoreContents = std::map<std::wstring, std::map<std::wstring, std::string>>;

// Names in a folder through the system's own find, which takes \\?\ paths of any length.
std::vector<std::pair<std::wstring, bool>> Listing(const fs::path& folder) {
    std::vector<std::pair<std::wstring, bool>> names; // name, is a folder
    WIN32_FIND_DATAW data;
    tol::unique_find find(::FindFirstFileW((folder / L"*").c_str(), &data));
    if (!find) return names;
    do {
        const std::wstring name = data.cFileName;
        if (name != L"." && name != L"..") names.emplace_back(name, (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
    } while (::FindNextFileW(find.get(), &data));
    return names;
}

// Removes a folder tree of any depth (the standard library's removal stops at the classic path limit).
void RemoveTree(const fs::path& folder) {
    const fs::path longFolder = folder.wstring().rfind(L"\\\\?\\", 0) == 0 ? folder : fs::path(L"\\\\?\\" + folder.wstring());
    for (const auto& [name, isFolder] : Listing(longFolder)) {
        if (isFolder) RemoveTree(longFolder / name);
        else ::DeleteFileW((longFolder / name).c_str());
    }
    ::RemoveDirectoryW(longFolder.c_str());
}

StoreContents ReadStore(const fs::path& store) {
    StoreContents contents;
    for (const auto& [name, isFolder] : Listing(store)) {
        auto& files = contents[isFolder ? name : L"<file> " + name];
        for (const auto& file : Listing(store / name)) files[file.first] = ReadBytes(store / name / file.first);
    }
    return contents;
}

std::string Narrow(const std::wstring& text) { return testing::PrintToString(text); }

// Each test has a folder of its own; the store inside it is named with a trailing separator, as users write it.
class Gacutil : public ::testing::Test {
protected:
    void SetUp() override {
        const std::string test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        root_ = fs::temp_directory_path() / (L"velmora-gacutil-" + std::wstring(test.begin(), test.end()) + L"-" +
                                             std::to_wstring(::GetCurrentProcessId()));
        RemoveTree(root_);
        fs::create_directories(root_);
        store_ = root_ / L"the store";
        ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", (store_.wstring() + L"\\").c_str());
    }
    void TearDown() override {
        ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", nullptr);
        RemoveTree(root_);
    }
    std::wstring In(const std::wstring& name) const { return (root_ / L"in dir" / name).wstring(); }

    fs::path root_, store_;
};

} // namespace

TEST_F(Gacutil, OperationsChangeTheStoreAndReportWhatTheyDid) {
    MakeFile(In(L"My.Lib.dll"), "first");
    MakeFile(root_ / L"other" / L"My.Lib.dll", "second");
    MakeFile(In(L"Second.exe"), "exe");
    MakeFile(In(L"Third.dll"), "third");
    const std::wstring other = (root_ / L"other" / L"My.Lib.dll").wstring();
    const struct Row {
        std::wstring arguments;
        DWORD exitCode;
        std::wstring printed; // in the output on success, in the error output on failure
        StoreContents store;  // after the row
    } rows[] = {
        {L"/nologo /i \"" + In(L"My.Lib.dll") + L"\"", 0, L"Assembly successfully added to the cache: My.Lib",
         {{L"My.Lib", {{L"My.Lib.dll", "first"}}}}},
        {L"/nologo /i \"" + In(L"My.Lib.dll") + L"\"", 0, L"(an identical copy was already there)",
         {{L"My.Lib", {{L"My.Lib.dll", "first"}}}}},
        {L"/nologo /i \"" + other + L"\"", 1, L"A different assembly named My.Lib is already in the cache",
         {{L"My.Lib", {{L"My.Lib.dll", "first"}}}}},
        {L"/nologo /IF \"" + other + L"\"", 0, L"(a different copy was replaced)", {{L"My.Lib", {{L"My.Lib.dll", "second"}}}}},
        {L"-nologo -i \"" + In(L"Second.exe") + L"\"", 0, L"added to the cache: Second",
         {{L"My.Lib", {{L"My.Lib.dll", "second"}}}, {L"Second", {{L"Second.exe", "exe"}}}}},
        {L"/nologo /l", 0, L"  Second (Second.exe)\r\nNumber of assemblies = 2",
         {{L"My.Lib", {{L"My.Lib.dll", "second"}}}, {L"Second", {{L"Second.exe", "exe"}}}}},
        {L"/nologo /u \"My.Lib, Version=1.0.0.0, Culture=neutral\"", 0, L"uninstalled from the cache: My.Lib",
         {{L"Second", {{L"Second.exe", "exe"}}}}},
        {L"/nologo /u My.Lib", 1, L"No assembly named My.Lib is in the cache.", {{L"Second", {{L"Second.exe", "exe"}}}}},
        {L"/nologo /uf \"" + In(L"Second.exe") + L"\"", 0, L"uninstalled from the cache: Second", {}},
        {L"/nologo /i \"" + In(L"Missing.dll") + L"\"", 1, L"was not found", {}},
        {L"/nologo /i \"" + (root_ / L"in dir").wstring() + L"\"", 1, L"is a folder", {}},
        {L"/nologo /if \"" + In(L"Third.dll") + L"\"", 0, L"added to the cache: Third", {{L"Third", {{L"Third.dll", "third"}}}}},
        {L"/nologo /ungen third", 0, L"uninstalled from the cache: third (native images included)", {}},
        {L"/nologo /u ..", 1, L"does not give a usable assembly name", {}},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row& row = rows[i];
        const Result result = RunTool(row.arguments, root_);
        EXPECT_EQ(result.exitCode, row.exitCode) << "row " << i << ": " << Narrow(result.err);
        const std::wstring& text = row.exitCode == 0 ? result.out : result.err;
        EXPECT_NE(text.find(row.printed), std::wstring::npos) << "row " << i << ": " << Narrow(text);
        EXPECT_EQ(ReadStore(store_), row.store) << "row " << i;
    }
}

TEST_F(Gacutil, BadArgumentsExitWithUsageAndTouchNothing) {
    MakeFile(In(L"A.dll"), "a");
    const std::wstring a = L"\"" + In(L"A.dll") + L"\"";
    const struct Row {
        std::wstring arguments;
        const wchar_t* message;
    } rows[] = {
        {L"", L"No operation given."},
        {L"/nologo", L"No operation given."},
        {L"/i", L"The operation needs an assembly."},
        {L"/x " + a, L"Unknown option /x."},
        {L"/ " + a, L"Unknown option /."},
        {L"/i " + a + L" " + a, L"Too many arguments."},
        {L"/i /u " + a, L"Only one of"},
        {L"/l " + a, L"Too many arguments."},
        {L"/i \"\"", L"The assembly argument is empty."},
    };
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Result result = RunTool(rows[i].arguments, root_);
        EXPECT_EQ(result.exitCode, 2u) << "row " << i;
        EXPECT_EQ(result.out, L"") << "row " << i;
        EXPECT_EQ(result.err.rfind(std::wstring(L"Error: ") + rows[i].message, 0), 0u)
            << "row " << i << ": " << Narrow(result.err);
        EXPECT_NE(result.err.find(L"\r\nUsage: gacutil"), std::wstring::npos) << "row " << i;
        EXPECT_FALSE(fs::exists(store_)) << "row " << i;
    }
}

TEST_F(Gacutil, LogoLineUnlessNoLogo) {
    const Result withLogo = RunTool(L"/l", root_), without = RunTool(L"/NoLogo /l", root_);
    EXPECT_EQ(withLogo.out, L"Velmora assembly cache stand-in (keeps assemblies as copies in a folder)\r\n"
                            L"Number of assemblies = 0\r\n");
    EXPECT_EQ(without.out, L"Number of assemblies = 0\r\n");
}

// Longer than the classic limit and than the tool's first path buffer, so that the buffer has to grow.
TEST_F(Gacutil, PathsLongerThanTheClassicLimitWork) {
    fs::path deep;
    for (int i = 0; i < 6; ++i) deep /= std::wstring(200, static_cast<wchar_t>(L'a' + i));
    const fs::path longRoot = L"\\\\?\\" + root_.wstring();
    MakeFile(longRoot / deep / L"assembly folder" / L"Deep.Lib.dll", "deep");
    ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", (root_ / deep / L"store").c_str());
    const std::wstring path = (root_ / deep / L"assembly folder" / L"Deep.Lib.dll").wstring();
    ASSERT_GT(path.size(), 1024u);
    const Result install = RunTool(L"/nologo /i \"" + path + L"\"", root_);
    EXPECT_EQ(install.exitCode, 0u) << Narrow(install.err);
    EXPECT_EQ(ReadStore(longRoot / deep / L"store"), (StoreContents{{L"Deep.Lib", {{L"Deep.Lib.dll", "deep"}}}}));
    const Result uninstall = RunTool(L"/nologo /u \"" + path + L"\"", root_);
    EXPECT_EQ(uninstall.exitCode, 0u) << Narrow(uninstall.err);
    EXPECT_EQ(ReadStore(longRoot / deep / L"store"), StoreContents{});
}

TEST_F(Gacutil, StoreDefaultsToTheFolderBesideTheProgram) {
    ::SetEnvironmentVariableW(L"VELMORA_GAC_STORE", nullptr);
    const std::wstring name = L"Default.Store." + std::to_wstring(::GetCurrentProcessId());
    MakeFile(In(name + L".dll"), "default");
    const fs::path store = fs::path(ProgramFolder()) / L"sdk" / L"bin" / L"gac";
    const bool storeExisted = fs::exists(store);
    EXPECT_EQ(RunTool(L"/nologo /i \"" + In(name + L".dll") + L"\"", root_).exitCode, 0u);
    EXPECT_EQ(ReadBytes(store / name / (name + L".dll")), "default");
    EXPECT_EQ(RunTool(L"/nologo /u " + name, root_).exitCode, 0u);
    EXPECT_FALSE(fs::exists(store / name));
    std::error_code notEmpty;
    if (!storeExisted) fs::remove(store, notEmpty); // only when empty
}
