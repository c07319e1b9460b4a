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
#include <functional>
#include <tuple>

using ziptest::Fails;
using ziptest::Outcome;
using ziptest::Properties;
using ziptest::Recorder;

namespace {

const std::wstring kSource = L"C:\\build\\out";
const std::wstring kZip = L"C:\\drop\\app.zip";
const std::wstring kAccentedZip = L"C:\\drop\\\u00e9t\u00e9 \u0416.zip";

std::string Ansi(const std::wstring& text) {
    std::string narrow(text.size() * 2 + 1, '\0');
    narrow.resize(::WideCharToMultiByte(CP_ACP, 0, text.c_str(), static_cast<int>(text.size()), narrow.data(),
                                        static_cast<int>(narrow.size()), nullptr, nullptr));
    return narrow;
}

const wchar_t* Library(bool zip) { return zip ? L"DZIP32.dll" : L"DUNZIP32.dll"; }

// A ZIP Files (zip) or UNZIP Files step as a new page holds it, with the changes over it, run.
Outcome RunStep(bool zip, const Properties& changes = {}, bool stopped = false) {
    Properties step = ziptest::ZipDefaults({{L"Source", kSource}, {L"Dest", kZip}});
    if (!zip) step = ziptest::UnzipDefaults({{L"Source", kZip}, {L"Dest", std::wstring(L"C:\\deploy")}});
    step.insert(step.end(), changes.begin(), changes.end());
    return ziptest::RunAction(zip ? CLSID_ZipFilesAction : CLSID_UnzipFilesAction, step, stopped);
}

// The fields of the ZIP block that a row checks; texts as the library reads them.
struct ZipFields {
    std::wstring zip = kZip;
    std::int32_t function = tol::ZipUpdate;
    std::string item = "C:\\build\\out\\*.*";
    std::int32_t recurse = 0, compression = 5, grow = 0, noPaths = 0, hidden = 1;
    std::string include, exclude, comment;
    std::uint16_t options = 0x0801;
};

} // namespace

TEST(ZipFilesBlock, EveryPropertyLandsInItsField) {
    struct Row {
        const char* name;
        Properties changes;
        std::function<void(ZipFields&)> want;  // changes to the page defaults' fields
    } rows[] = {
        {"page defaults", {}, [](ZipFields&) {}},
        {"Add", {{L"Action", 0L}}, [](ZipFields& f) { f.function = tol::ZipAdd; }},
        {"Freshen", {{L"Action", 1L}}, [](ZipFields& f) { f.function = tol::ZipFreshen; }},
        {"a folder with a blank is quoted, its separator not doubled", {{L"Source", std::wstring(L"C:\\my build\\")}},
         [](ZipFields& f) { f.item = "\"C:\\my build\\*.*\""; }},
        {"a trailing slash stays, no backslash is added", {{L"Source", std::wstring(L"C:\\build/")}},
         [](ZipFields& f) { f.item = "C:\\build/*.*"; }},
        {"Recurse; the compression factor passes unchecked", {{L"Recurse", true}, {L"Compression", 25L}},
         [](ZipFields& f) { f.recurse = 1, f.compression = 25; }},
        {"Grow is all bits set", {{L"Grow", true}}, [](ZipFields& f) { f.grow = -1; }},
        {"NoPaths: no relative-path bit, and PathInfo (failing here) is never read",
         {{L"NoPaths", true}, {L"PathInfo", Fails{}}}, [](ZipFields& f) { f.noPaths = 1, f.options = 0x0800; }},
        {"PathInfo: full paths", {{L"PathInfo", true}}, [](ZipFields& f) { f.options = 0x0800; }},
        {"the four option bits", {{L"ShortNames", true}, {L"SkipLocked", true}, {L"Archive", true}, {L"ClearArchive", true}},
         [](ZipFields& f) { f.options = 0x0800 | 0x0001 | 0x0020 | 0x0040 | 0x0200 | 0x0400; }},
        {"hidden and system files off", {{L"Hidden", false}}, [](ZipFields& f) { f.hidden = 0; }},
        {"comment", {{L"Comment", std::wstring(L"build 42")}}, [](ZipFields& f) { f.comment = "build 42"; }},
        {"the ZIP file's name in the ANSI code page: what it lacks is lost", {{L"Dest", kAccentedZip}},
         [](ZipFields& f) { f.zip = kAccentedZip; }},
        {"masks: blank lines dropped, blanks quoted, quotes escaped, a final backslash doubled inside quotes",
         {{L"Ext", std::wstring(L"*.dll\r\n\r\nread me.txt\n\n*.exe\r")}, {L"ExclExt", std::wstring(L"a\"b\r\nobj dir\\")}},
         [](ZipFields& f) { f.include = "*.dll \"read me.txt\" *.exe", f.exclude = "a\\\"b \"obj dir\\\\\""; }},
    };
    using B = tol::ZipCommandBlock;
    Recorder recorder(L"DZIP32.dll");
    for (const Row& row : rows) {
        recorder.Script(0);
        const int calls = recorder.Calls();
        const Outcome outcome = RunStep(true, row.changes);
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        ASSERT_EQ(recorder.Calls(), calls + 1) << row.name;
        ZipFields w;
        row.want(w);
        const B b = recorder.LastBlock<B>();
        EXPECT_EQ(std::tuple(b.size, b.function, b.recurse, b.compression, b.grow, b.noPaths, b.hiddenFiles, b.options),
                  std::tuple(std::uint32_t(sizeof(B)), w.function, w.recurse, w.compression, w.grow, w.noPaths, w.hidden,
                             w.options))
            << row.name << ": size, function, recurse, compression, grow, noPaths, hidden, options";
        EXPECT_EQ(recorder.Text(offsetof(B, zipFile)), Ansi(w.zip)) << row.name << ", code page " << ::GetACP();
        const std::wstring& roots = outcome.log.at(0);
        EXPECT_EQ(roots.substr(roots.find(L" -> ")), L" -> " + tol::Widen(Ansi(w.zip), CP_ACP)) << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, item)), w.item) << row.name;
        EXPECT_EQ(std::tuple(b.hasComment, b.hasInclude, b.hasExclude),
                  std::tuple(w.comment.empty() ? 0 : 1, w.include.empty() ? 0 : 1, w.exclude.empty() ? 0 : 1)) << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, comment)), w.comment) << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, include)), w.include) << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, exclude)), w.exclude) << row.name;
        EXPECT_EQ(b.fileMessages + b.folderEntries + b.allowZip64 + b.extendedTimes, 4) << row.name << ": the fixed fields";
        EXPECT_TRUE(b.cancel && b.message && b.confirm && b.cancelData && b.cancelData == b.messageData &&
                    b.messageData == b.confirmData) << row.name;
    }
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
    using B = tol::UnzipCommandBlock;
    Recorder recorder(L"DUNZIP32.dll");
    for (const Row& row : rows) {
        recorder.Script(0);
        const Outcome outcome = RunStep(false, row.changes);
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(outcome.status, tol::StepSucceeded) << row.name;
        const B b = recorder.LastBlock<B>();
        EXPECT_EQ(std::tuple(b.size, b.function, b.freshen, b.update, b.dropFolders, b.recurse, b.options, b.restoreTimes),
                  std::tuple(std::uint32_t(sizeof(B)), 8, row.freshen, row.update, row.dropFolders, row.recurse,
                             row.options, 1))
            << row.name << ": size, function, freshen, update, dropFolders, recurse, options, restoreTimes";
        EXPECT_EQ(recorder.Text(offsetof(B, zipFile)), Ansi(kZip)) << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, destination)), "C:\\deploy") << row.name;
        EXPECT_EQ(recorder.Text(offsetof(B, files)), row.files) << row.name;
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
        const Outcome outcome = RunStep(true, {{L"LogDetail", detail}});
        ASSERT_EQ(outcome.hr, S_OK) << outcome.description;
        std::vector<std::wstring> expected = {kSource + L" -> " + kZip};
        if (detail)
            expected.insert(expected.end(), {L"Item a.dll added (deflated 60%)", L"Item list of parts.txt", L"plain line", L""});
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
        const Outcome outcome = RunStep(false, {{L"Dest", row.dest}});
        ASSERT_EQ(outcome.hr, S_OK) << row.name << ": " << outcome.description;
        EXPECT_EQ(outcome.log, (std::vector<std::wstring>{kZip + L" -> " + row.dest, row.logged, L"1 files processed"}))
            << row.name;
    }
}

// Each library's result codes become statuses or errors. The cancel callback answers the build's stop event; the
// library then returns its cancelled code, which stops the step.
TEST(ArchiveResults, CodesBecomeStatusesOrErrorsAndStopsAreAnswered) {
    struct Row {
        bool zip;
        long code;
        bool stopped;
        HRESULT hr;
        long status;        // when hr is S_OK
        std::wstring error; // when it is not
    } rows[] = {
        {true, 0, false, S_OK, tol::StepSucceeded, L""},
        {true, 12, false, S_OK, tol::StepSucceeded, L""},
        {true, 9, true, S_OK, tol::StepStopped, L""},
        {true, 3, false, E_FAIL, 0, L"Zip file structure invalid"},
        {true, 18, false, E_FAIL, 0, L"File not found or no read permission"},
        {true, 22, false, E_FAIL, 0, L"DZIP32.dll result 22"},
        {true, -1, false, E_FAIL, 0, L"DZIP32.dll result -1"},
        {false, 0, false, S_OK, tol::StepSucceeded, L""},
        {false, 11, false, S_OK, tol::StepSucceeded, L""},
        {false, 40, true, S_OK, tol::StepStopped, L""},
        {false, 48, false, E_FAIL, 0, L"Operation cancelled"},
        {false, 1, false, E_FAIL, 0, L""},
        {false, 39, false, E_FAIL, 0, L"Bad CRC"},
        {false, 49, false, E_FAIL, 0, L"Operation skipped"},
        {false, 51, false, E_FAIL, 0, L"DUNZIP32.dll result 51"},
    };
    for (const Row& row : rows) {
        const std::string name = std::string(row.zip ? "zip " : "unzip ") + std::to_string(row.code);
        Recorder recorder(Library(row.zip));
        recorder.Script(row.code, {{"Item x", 100}}, 2);
        const Outcome outcome = RunStep(row.zip, {}, row.stopped);
        const std::string cancel = row.stopped ? " cancel=1" : " cancel=0";
        EXPECT_EQ(recorder.Answers(), "message=0" + cancel + cancel) << name;
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
        Recorder recorder(Library(row.zip));
        const int calls = recorder.Calls();
        const Outcome outcome = RunStep(row.zip, row.changes);
        EXPECT_EQ(std::tuple(outcome.hr, outcome.status, outcome.description),
                  std::tuple(row.hr, ziptest::kGarbageStatus, row.error)) << row.name;
        EXPECT_EQ(recorder.Calls(), calls) << row.name;
        EXPECT_TRUE(outcome.log.empty()) << row.name;
    }
}
