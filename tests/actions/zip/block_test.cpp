// ZIP Files and UNZIP Files through their action components, with recorders in the libraries' places: the command
// block each step makes, the callbacks as the library sees them, and how results become step statuses and errors.
#include "recorder_client.h"
#include "run_action.h"
#include "actions/zip/unzip_block.h"
#include "actions/zip/zip_block.h"
#include "frame/messages.h"
#include "frame/step.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>
#include <cstddef>

using ziptest::Fails;
using ziptest::Outcome;
using ziptest::Properties;
using ziptest::Recorder;
using ziptest::RunAction;

namespace {

const std::wstring kSource = L"C:\\build\\out";
const std::wstring kZip = L"C:\\drop\\app.zip";

std::string Ansi(const std::wstring& text) {
    std::string narrow(text.size() * 2 + 1, '\0');
    narrow.resize(::WideCharToMultiByte(CP_ACP, 0, text.c_str(), static_cast<int>(text.size()), narrow.data(),
                                        static_cast<int>(narrow.size()), nullptr, nullptr));
    return narrow;
}

Properties With(Properties base, const Properties& changes) {
    base.insert(base.end(), changes.begin(), changes.end());
    return base;
}

Properties ZipStep(const Properties& changes = {}) {
    return With(ziptest::ZipDefaults({{L"Source", kSource}, {L"Dest", kZip}}), changes);
}

Properties UnzipStep(const Properties& changes = {}) {
    return With(ziptest::UnzipDefaults({{L"Source", kZip}, {L"Dest", std::wstring(L"C:\\deploy")}}), changes);
}

// The fields of the ZIP block that a row checks; texts as the library reads them.
struct ZipFields {
    std::int32_t function = tol::ZipUpdate;
    std::string item = "C:\\build\\out\\*.*";
    std::int32_t recurse = 0, compression = 5, grow = 0, noPaths = 0, hidden = 1;
    std::string include, exclude, comment;
    std::uint16_t options = 0x0801;
};

template <class Change>
ZipFields ZipWith(Change change) {
    ZipFields fields;
    change(fields);
    return fields;
}

void ExpectZipBlock(const Recorder& recorder, const ZipFields& want, const char* row) {
    using B = tol::ZipCommandBlock;
    const B b = recorder.LastBlock<B>();
    EXPECT_EQ(b.size, sizeof(B)) << row;
    EXPECT_EQ(b.function, want.function) << row;
    EXPECT_EQ(recorder.Text(offsetof(B, zipFile)), Ansi(kZip)) << row;
    EXPECT_EQ(recorder.Text(offsetof(B, item)), want.item) << row;
    EXPECT_EQ(b.recurse, want.recurse) << row;
    EXPECT_EQ(b.compression, want.compression) << row;
    EXPECT_EQ(b.grow, want.grow) << row;
    EXPECT_EQ(b.noPaths, want.noPaths) << row;
    EXPECT_EQ(b.hiddenFiles, want.hidden) << row;
    EXPECT_EQ(b.options, want.options) << row;
    EXPECT_EQ(b.hasComment, want.comment.empty() ? 0 : 1) << row;
    EXPECT_EQ(recorder.Text(offsetof(B, comment)), want.comment) << row;
    EXPECT_EQ(b.hasInclude, want.include.empty() ? 0 : 1) << row;
    EXPECT_EQ(recorder.Text(offsetof(B, include)), want.include) << row;
    EXPECT_EQ(b.hasExclude, want.exclude.empty() ? 0 : 1) << row;
    EXPECT_EQ(recorder.Text(offsetof(B, exclude)), want.exclude) << row;
    EXPECT_EQ(b.fileMessages + b.folderEntries + b.allowZip64 + b.extendedTimes, 4) << row << ": the fixed fields";
    EXPECT_TRUE(b.cancel && b.message && b.confirm) << row;
    EXPECT_TRUE(b.cancelData && b.cancelData == b.messageData && b.messageData == b.confirmData) << row;
}

} // namespace

TEST(ZipFilesBlock, EveryPropertyLandsInItsField) {
    struct Row {
        const char* name;
        Properties changes;
        ZipFields want;
    } rows[] = {
        {"page defaults", {}, {}},
        {"Add", {{L"Action", 0L}}, ZipWith([](ZipFields& f) { f.function = tol::ZipAdd; })},
        {"Freshen", {{L"Action", 1L}}, ZipWith([](ZipFields& f) { f.function = tol::ZipFreshen; })},
        {"a folder with a blank is quoted, its separator not doubled",
         {{L"Source", std::wstring(L"C:\\my build\\")}},
         ZipWith([](ZipFields& f) { f.item = "\"C:\\my build\\*.*\""; })},
        {"a trailing slash stays, no backslash is added",
         {{L"Source", std::wstring(L"C:\\build/")}},
         ZipWith([](ZipFields& f) { f.item = "C:\\build/*.*"; })},
        {"Recurse; the compression factor passes unchecked",
         {{L"Recurse", true}, {L"Compression", 25L}},
         ZipWith([](ZipFields& f) { f.recurse = 1, f.compression = 25; })},
        {"Grow is all bits set", {{L"Grow", true}}, ZipWith([](ZipFields& f) { f.grow = -1; })},
        {"NoPaths: no relative-path bit, and PathInfo (failing here) is never read",
         {{L"NoPaths", true}, {L"PathInfo", Fails{}}},
         ZipWith([](ZipFields& f) { f.noPaths = 1, f.options = 0x0800; })},
        {"PathInfo: full paths", {{L"PathInfo", true}}, ZipWith([](ZipFields& f) { f.options = 0x0800; })},
        {"the four option bits",
         {{L"ShortNames", true}, {L"SkipLocked", true}, {L"Archive", true}, {L"ClearArchive", true}},
         ZipWith([](ZipFields& f) { f.options = 0x0800 | 0x0001 | 0x0020 | 0x0040 | 0x0200 | 0x0400; })},
        {"hidden and system files off", {{L"Hidden", false}}, ZipWith([](ZipFields& f) { f.hidden = 0; })},
        {"comment", {{L"Comment", std::wstring(L"build 42")}}, ZipWith([](ZipFields& f) { f.comment = "build 42"; })},
        {"masks: blank lines dropped, blanks quoted, quotes escaped, a final backslash doubled inside quotes",
         {{L"Ext", std::wstring(L"*.dll\r\n\r\nread me.txt\n\n*.exe\r")}, {L"ExclExt", std::wstring(L"a\"b\r\nobj dir\\")}},
         ZipWith([](ZipFields& f) {
             f.include = "*.dll \"read me.txt\" *.exe";
             f.exclude = "a\\\"b \"obj dir\\\\\"";
         })},
    };
    Recorder recorder(L"DZIP32.dll");
    for (const Row& row : rows) {
        recorder.Script(0);
        const int calls = recorder.Calls();
        const Outcome outcome = RunAction(CLSID_ZipFilesAction, ZipStep(row.changes));
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        ASSERT_EQ(recorder.Calls(), calls + 1) << row.name;
        ExpectZipBlock(recorder, row.want, row.name);
    }
}

// The ZIP file name goes to the library in the ANSI code page: what the code page lacks is lost.
TEST(ZipFilesBlock, TextsAreAnsi) {
    const std::wstring zip = L"C:\\drop\\\u00e9t\u00e9 \u0416.zip";
    Recorder recorder(L"DZIP32.dll");
    recorder.Script(0);
    const Outcome outcome = RunAction(CLSID_ZipFilesAction, ZipStep({{L"Dest", zip}}));
    ASSERT_EQ(outcome.hr, S_OK) << outcome.description;
    EXPECT_EQ(recorder.Text(offsetof(tol::ZipCommandBlock, zipFile)), Ansi(zip)) << "code page " << ::GetACP();
    EXPECT_EQ(outcome.log.at(0), kSource + L" -> " + tol::Widen(Ansi(zip), CP_ACP));
}

TEST(UnzipFilesBlock, EveryPropertyLandsInItsField) {
    struct Row {
        const char* name;
        Properties changes;
        std::string files;
        std::int32_t freshen, update, dropFolders, recurse;
        std::uint16_t options;
    } rows[] = {
        {"page defaults: Update, directory names on", {}, "*.*", 0, 1, 0, 0, 0x0800},
        {"Extract", {{L"Action", 0L}}, "*.*", 0, 0, 0, 0, 0x0800},
        {"Freshen", {{L"Action", 1L}}, "*.*", 1, 0, 0, 0, 0x0800},
        {"PathInfo off drops folders", {{L"PathInfo", false}}, "*.*", 0, 1, 1, 0, 0x0800},
        {"Recurse", {{L"Recurse", true}}, "*.*", 0, 1, 0, 1, 0x0800},
        {"ShortNames and ReadOnly", {{L"ShortNames", true}, {L"ReadOnly", true}}, "*.*", 0, 1, 0, 0, 0x0821},
        {"masks quoted like ZIP's", {{L"Ext", std::wstring(L"bin\\*.dll\r\n\r\nmy app.exe")}},
         "bin\\*.dll \"my app.exe\"", 0, 1, 0, 0, 0x0800},
        {"blank lines alone are an empty list", {{L"Ext", std::wstring(L"\r\n\n")}}, "*.*", 0, 1, 0, 0, 0x0800},
    };
    Recorder recorder(L"DUNZIP32.dll");
    using B = tol::UnzipCommandBlock;
    for (const Row& row : rows) {
        recorder.Script(0);
        const Outcome outcome = RunAction(CLSID_UnzipFilesAction, UnzipStep(row.changes));
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        const B b = recorder.LastBlock<B>();
        EXPECT_EQ(b.size, sizeof(B)) << row.name;
        EXPECT_EQ(b.function, 8) << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, zipFile)), Ansi(kZip)) << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, destination)), "C:\\deploy") << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, files)), row.files) << row.name;
        EXPECT_EQ(b.freshen, row.freshen) << row.name;
        EXPECT_EQ(b.update, row.update) << row.name;
        EXPECT_EQ(b.dropFolders, row.dropFolders) << row.name;
        EXPECT_EQ(b.recurse, row.recurse) << row.name;
        EXPECT_EQ(b.options, row.options) << row.name;
        EXPECT_EQ(b.restoreTimes, 1) << row.name;
        EXPECT_TRUE(b.cancel && b.message && b.confirm && b.cancelData == b.messageData) << row.name;
        EXPECT_EQ(outcome.log.at(0), kZip + L" -> C:\\deploy") << row.name;
    }
}

// Only code 100 is a file message, and then only one that begins with "Item " or has no " of " (a progress line).
TEST(ArchiveCallbacks, FileMessagesAreCountedAndLoggedWhenAsked) {
    const std::vector<ziptest::ScriptedMessage> messages = {
        {"Item a.dll added (deflated 60%)", 100}, {"big.bin: 64 MiB of 300 MiB", 100}, {"Item list of parts.txt", 100},
        {"plain line", 100}, {"Item other code", 101}, {"", 100},
    };
    for (const bool detail : {true, false}) {
        Recorder recorder(L"DZIP32.dll");
        recorder.Script(0, messages, 1, true);
        const Outcome outcome = RunAction(CLSID_ZipFilesAction, ZipStep({{L"LogDetail", detail}}));
        ASSERT_EQ(outcome.hr, S_OK) << outcome.description;
        std::vector<std::wstring> expected = {kSource + L" -> " + kZip};
        if (detail) {
            expected.insert(expected.end(),
                            {L"Item a.dll added (deflated 60%)", L"Item list of parts.txt", L"plain line", L""});
        }
        expected.push_back(L"4 files processed");
        EXPECT_EQ(outcome.log, expected) << "LogDetail " << detail;
        EXPECT_EQ(recorder.Answers(), "message=0 message=0 message=0 message=0 message=0 message=0 cancel=0 confirm=1");
    }
}

TEST(ArchiveCallbacks, UnzipLogsThePathBelowTheDestination) {
    struct Row {
        const char* name;
        std::wstring dest;
        std::string message;
        std::wstring logged;
    } rows[] = {
        {"without a trailing separator", L"C:\\deploy", "Item written C:\\deploy\\bin\\app.exe", L"\\bin\\app.exe"},
        {"with one: the same line", L"C:\\deploy\\", "Item written C:\\deploy\\bin\\app.exe", L"\\bin\\app.exe"},
        {"a slash counts too", L"C:\\deploy/", "Item written C:\\deploy\\bin\\app.exe", L"\\bin\\app.exe"},
        {"any 13-character lead", L"D:\\x", "0123456789abcD:\\x\\f", L"\\f"},
        {"a message shorter than lead and folder is logged whole", L"C:\\deploy", "Item written", L"Item written"},
    };
    Recorder recorder(L"DUNZIP32.dll");
    for (const Row& row : rows) {
        recorder.Script(0, {{row.message, 100}});
        const Outcome outcome = RunAction(CLSID_UnzipFilesAction, UnzipStep({{L"Dest", row.dest}}));
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        const std::vector<std::wstring> expected = {kZip + L" -> " + row.dest, row.logged, L"1 files processed"};
        EXPECT_EQ(outcome.log, expected) << row.name;
    }
}

// The cancel callback answers the build's stop event; the library then returns its cancelled code.
TEST(ArchiveCallbacks, StopTheBuildAndTheLibraryIsAskedToCancel) {
    struct Row {
        const char* name;
        REFCLSID action;
        const wchar_t* library;
        bool stopped;
        long result;
        long status;
    } rows[] = {
        {"zip, running", CLSID_ZipFilesAction, L"DZIP32.dll", false, 0, tol::StepSucceeded},
        {"zip, stopped", CLSID_ZipFilesAction, L"DZIP32.dll", true, 9, tol::StepStopped},
        {"unzip, running", CLSID_UnzipFilesAction, L"DUNZIP32.dll", false, 0, tol::StepSucceeded},
        {"unzip, stopped", CLSID_UnzipFilesAction, L"DUNZIP32.dll", true, 40, tol::StepStopped},
    };
    for (const Row& row : rows) {
        Recorder recorder(row.library);
        recorder.Script(row.result, {{"Item one", 100}}, 2);
        const bool zip = row.action == CLSID_ZipFilesAction;
        const Outcome outcome = RunAction(row.action, zip ? ZipStep() : UnzipStep(), row.stopped);
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(outcome.status, row.status) << row.name;
        const char* answer = row.stopped ? "cancel=1" : "cancel=0";
        EXPECT_EQ(recorder.Answers(), std::string("message=0 ") + answer + " " + answer) << row.name;
        EXPECT_EQ(outcome.log.back(), L"1 files processed") << row.name;
    }
}

TEST(ArchiveResults, CodesBecomeStatusesOrErrors) {
    struct Row {
        bool zip;
        long code;
        HRESULT hr;
        long status;        // when hr is S_OK
        std::wstring error; // when it is not
    } rows[] = {
        {true, 0, S_OK, tol::StepSucceeded, L""},
        {true, 9, S_OK, tol::StepStopped, L""},
        {true, 3, E_FAIL, 0, L"Zip file structure invalid"},
        {true, 18, E_FAIL, 0, L"File not found or no read permission"},
        {true, 22, E_FAIL, 0, L"DZIP32.dll result 22"},
        {true, -1, E_FAIL, 0, L"DZIP32.dll result -1"},
        {false, 0, S_OK, tol::StepSucceeded, L""},
        {false, 40, S_OK, tol::StepStopped, L""},
        {false, 48, E_FAIL, 0, L"Operation cancelled"},
        {false, 1, E_FAIL, 0, L""},
        {false, 39, E_FAIL, 0, L"Bad CRC"},
        {false, 49, E_FAIL, 0, L"Operation skipped"},
        {false, 51, E_FAIL, 0, L"DUNZIP32.dll result 51"},
    };
    for (const Row& row : rows) {
        const std::string name = std::string(row.zip ? "zip " : "unzip ") + std::to_string(row.code);
        Recorder recorder(row.zip ? L"DZIP32.dll" : L"DUNZIP32.dll");
        recorder.Script(row.code, {{"Item x", 100}});
        const Outcome outcome = RunAction(row.zip ? CLSID_ZipFilesAction : CLSID_UnzipFilesAction,
                                          row.zip ? ZipStep() : UnzipStep());
        EXPECT_EQ(outcome.hr, row.hr) << name;
        if (row.hr == S_OK) {
            EXPECT_EQ(outcome.status, row.status) << name;
            EXPECT_EQ(outcome.log.back(), L"1 files processed") << name;
        } else {
            EXPECT_EQ(outcome.status, ziptest::kGarbageStatus) << name;
            EXPECT_EQ(outcome.description, row.error) << name;
            EXPECT_EQ(outcome.log.size(), 2u) << name << ": the roots and the file, no count line";
        }
    }
}

// Steps that cannot make a sensible block fail before the library is called.
TEST(ArchiveResults, StepsThatNeverReachTheLibrary) {
    struct Row {
        const char* name;
        bool zip;
        Properties changes;
        HRESULT hr;
        std::wstring error;
    } rows[] = {
        {"ZIP without a source folder", true, {{L"Source", std::wstring()}}, E_FAIL, L"Source Folder cannot be empty"},
        {"ZIP Action 3", true, {{L"Action", 3L}}, E_FAIL, L"Invalid combination of control parameters"},
        {"UNZIP Action -1", false, {{L"Action", -1L}}, E_FAIL, L"Command syntax error"},
        {"a failing property read", true, {{L"Comment", Fails{}}}, ziptest::kReadFailure, L"no such property today"},
    };
    for (const Row& row : rows) {
        Recorder recorder(row.zip ? L"DZIP32.dll" : L"DUNZIP32.dll");
        const int calls = recorder.Calls();
        const Outcome outcome = RunAction(row.zip ? CLSID_ZipFilesAction : CLSID_UnzipFilesAction,
                                          row.zip ? ZipStep(row.changes) : UnzipStep(row.changes));
        EXPECT_EQ(outcome.hr, row.hr) << row.name;
        EXPECT_EQ(outcome.status, ziptest::kGarbageStatus) << row.name;
        EXPECT_EQ(outcome.description, row.error) << row.name;
        EXPECT_EQ(recorder.Calls(), calls) << row.name;
        EXPECT_TRUE(outcome.log.empty()) << row.name;
    }
}
