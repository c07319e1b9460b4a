// velmora-run --edit end to end: the real pages of VelmoraExt.dll in the editor's window, driven from this process
// as a person would drive them (texts typed, boxes clicked, OK or Cancel), and the script read back afterwards.
#include "editor_window.h"
#include "script_runner.h"
#include "text.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include "standins/cmax/codemax.h"
#include <commctrl.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <zlib.h>
#include <set>

namespace {

using json = nlohmann::ordered_json;

const wchar_t kEditorKey[] = L"Software\\Tolvane\\Velmora\\Editor";

const char kScript[] = R"({
  "variables": {"DIR": "C:\\velmora-edit"},
  "steps": [
    {"name": "ini", "action": "Write INI",
     "properties": {"Filename": "%DIR%\\a.ini", "Section": "S", "ValueName": "V", "ValueData": "42"}},
    {"action": "ZIP Files", "disabled": true,
     "properties": {"Source": "C:\\src", "Dest": "C:\\out.zip", "Recurse": true, "Compression": "5", "Hidden": true,
                    "LogDetail": true}},
    {"action": "Copy Files",
     "properties": {"SourceDir": "C:\\src", "DestDir": "C:\\dst", "Retries": "2", "Delay": "1", "Unknown": "kept",
                    "Nothing": null}}
  ]
})";

std::wstring WindowText(HWND window) {
    wchar_t text[512] = L"";
    ::GetWindowTextW(window, text, 512);
    return text;
}

// A visible top-level window of the process with the class (and the title, when given).
HWND FindProcessWindow(DWORD process, const wchar_t* className, const wchar_t* title = nullptr) {
    for (HWND window = ::GetTopWindow(nullptr); window; window = ::GetWindow(window, GW_HWNDNEXT)) {
        DWORD owner = 0;
        wchar_t name[64] = L"";
        ::GetWindowThreadProcessId(window, &owner);
        ::GetClassNameW(window, name, 64);
        if (owner == process && _wcsicmp(name, className) == 0 && ::IsWindowVisible(window) &&
            (!title || WindowText(window) == title))
            return window;
    }
    return nullptr;
}

template <class Probe>
auto WaitFor(Probe probe, DWORD milliseconds = 30000) {
    const ULONGLONG end = ::GetTickCount64() + milliseconds;
    for (;;) {
        if (auto found = probe(); found || ::GetTickCount64() > end) return found;
        ::Sleep(50);
    }
}

// velmora-run with its output in a file of the folder, and its editor window once it shows.
class EditorProcess {
public:
    EditorProcess(const std::wstring& arguments, const std::wstring& folder) : folder_(folder) {
        SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
        const tol::unique_file output(::CreateFileW((folder + L"\\output.txt").c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                                    &inherit, CREATE_ALWAYS, 0, nullptr));
        STARTUPINFOW startup{sizeof startup};
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = startup.hStdError = output.get();
        std::wstring command = L"\"" + test::BinFolder() + L"\\velmora-run.exe\" " + arguments;
        PROCESS_INFORMATION info{};
        if (::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, folder.c_str(), &startup, &info)) {
            process_.reset(info.hProcess);
            const tol::unique_event thread(info.hThread);
            id_ = info.dwProcessId;
            window_ = WaitFor([&] { return FindProcessWindow(id_, host::kEditorWindowClass); });
        }
    }
    ~EditorProcess() {
        if (process_ && ::WaitForSingleObject(process_.get(), 0) == WAIT_TIMEOUT) ::TerminateProcess(process_.get(), 0xDEAD);
    }

    HWND window() const { return window_; }
    DWORD id() const { return id_; }
    // The page whose template caption is given: a child dialog of the editor, shown or not.
    HWND Control(const wchar_t* page, int id) const {
        return ::GetDlgItem(::FindWindowExW(window_, nullptr, L"#32770", page), id);
    }
    // Sends to a control of a page, as the user's typing or clicking would.
    DWORD_PTR Send(const wchar_t* page, int id, UINT message, WPARAM w, LPARAM l) const {
        const HWND control = Control(page, id);
        EXPECT_TRUE(control) << testing::PrintToString(page) << " " << id;
        DWORD_PTR result = 0;
        ::SendMessageTimeoutW(control, message, w, l, SMTO_NORMAL, 10000, &result);
        return result;
    }
    void SetText(const wchar_t* page, int id, const std::wstring& text) const {
        Send(page, id, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()));
    }
    void Click(const wchar_t* page, int id) const { Send(page, id, BM_CLICK, 0, 0); }
    // Clicks one of the editor's buttons and waits for the program's exit code.
    DWORD Press(int button) const {
        ::PostMessageW(::GetDlgItem(window_, button), BM_CLICK, 0, 0);
        return ExitCode();
    }
    DWORD ExitCode(DWORD milliseconds = 30000) const {
        DWORD code = 0xDEAD;
        if (process_ && ::WaitForSingleObject(process_.get(), milliseconds) == WAIT_OBJECT_0)
            ::GetExitCodeProcess(process_.get(), &code);
        return code;
    }
    std::string Errors() const { return test::ReadFileBytes(folder_ + L"\\output.txt"); }   // stdout and stderr

private:
    std::wstring folder_;
    tol::unique_process process_;
    DWORD id_ = 0;
    HWND window_ = nullptr;
};

// A change made in a page: a text typed into the control, or a click on it when there is no text.
struct Change {
    const wchar_t* page;   // the template's caption
    int id;
    const wchar_t* text;
    const char* property = nullptr;   // the property that the text goes to, where a test checks it
};

class StepEditor : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(test::CallLibrary("DllRegisterServer"), S_OK); }
    static void TearDownTestSuite() { test::CallLibrary("DllUnregisterServer"); }

    void SetUp() override { test::WriteFileBytes(script, kScript); }

    json Written() const { return json::parse(test::ReadFileBytes(script)); }
    std::wstring Edit(const std::wstring& step) const { return L"--edit " + quoted + L" " + step; }
    test::ProgramRun Run(const std::wstring& arguments) const {
        return test::RunProgram(L"\"" + test::BinFolder() + L"\\velmora-run.exe\" " + arguments, folder.path());
    }

    test::ScratchFolder folder{L"velmora-edit \u00fc"};
    const std::wstring script = folder / L"script.json";
    const std::wstring quoted = L"\"" + script + L"\"";
};

// OK writes the pages' fields into their step, or a new step at the end; the title marks a change; the rest of
// the script stays as it was, in content and in order.
TEST_F(StepEditor, WritesTheFieldsBackIntoTheirStep) {
    const struct {
        const wchar_t* step;
        std::vector<Change> changes;
        const wchar_t* title;   // after the changes
        const char* written;
    } rows[] = {
        // Quotes around a path are dropped; an emptied field's property goes; 1031 is "Delete the value".
        {L"1", {{L"INI File", 1020, L"\"C:\\new.ini\""}, {L"INI File", 1008, L""}, {L"INI File", 1031, nullptr}},
         L"Step 1: Write INI - script.json *",
         R"({"name":"ini","action":"Write INI","properties":)"
         R"({"Filename":"C:\\new.ini","Section":"S","ValueData":"42","Delete":true}})"},
        // Both pages save, the one not shown too: 1031 turns "Delete existing destination ZIP file" on, 1053
        // "Include system and hidden files" off. "Action" was missing: the list shows its first entry, which differs
        // from the default "Update".
        {L"2",
         {{L"ZIP", 1009, L"C:\\new.zip"}, {L"Options", 1012, L"9"}, {L"Options", 1031, nullptr}, {L"Options", 1053, nullptr}},
         L"Step 2: ZIP Files - script.json *",
         R"({"action":"ZIP Files","disabled":true,"properties":{"Source":"C:\\src","Dest":"C:\\new.zip","Recurse":true,)"
         R"("Compression":"9","Hidden":false,"LogDetail":true,"Action":0,"Delete":true}})"},
        // Properties that no page shows keep their values; check boxes that are on by default but missing from the
        // step are saved as off.
        {L"3", {}, L"Step 3: Copy Files - script.json",
         R"({"action":"Copy Files","properties":{"SourceDir":"C:\\src","DestDir":"C:\\dst","Retries":"2","Delay":"1",)"
         R"("Unknown":"kept","Nothing":null,"Incremental":false,"LogCopied":false,"ReadOnly":false,"Restartable":false,)"
         R"("TBD":false}})"},
        // A new step takes the pages' defaults; a required field is filled in. Its properties are compared sorted.
        {L"new \"copy files\"", {{L"Copy", 1009, L"C:\\d"}}, L"New step: Copy Files - script.json *",
         R"({"action":"Copy Files","properties":{"Delay":"15","DestDir":"C:\\d","Incremental":true,"LogCopied":true,)"
         R"("ReadOnly":true,"Restartable":true,"Retries":"10","TBD":true}})"},
        {L"new \"Write Registry\"", {{L"Registry", 1019, L"C:\\d"}}, L"New step: Write Registry - script.json *",
         R"({"action":"Write Registry","properties":{"RootKey":-2147483648,"SubKey":"C:\\d","ValueType":1}})"},
    };
    for (const auto& row : rows) {
        test::WriteFileBytes(script, kScript);
        const EditorProcess editor(Edit(row.step), folder.path());
        ASSERT_TRUE(editor.window()) << editor.Errors();
        for (const auto& c : row.changes) c.text ? editor.SetText(c.page, c.id, c.text) : editor.Click(c.page, c.id);
        EXPECT_EQ(WindowText(editor.window()), row.title);
        ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();
        const size_t index = ::iswdigit(row.step[0]) ? std::stoul(row.step) - 1 : 3;
        json written = Written(), expected = json::parse(kScript);
        const json& step = written["steps"][index];
        EXPECT_EQ(index < 3 ? step.dump() : nlohmann::json(step).dump(), row.written);
        written["steps"].erase(index);
        if (index < 3) expected["steps"].erase(index);
        EXPECT_EQ(written.dump(), expected.dump()) << "the rest of the script";
    }
    EXPECT_EQ(test::ReadFileBytes(script).substr(0, 19), "{\n  \"variables\": {\n") << "two-space indentation";
}

// Browse serves the focused field: a file field opens the file picker, whose choice replaces the field's text.
TEST_F(StepEditor, BrowseFillsTheFocusedField) {
    const EditorProcess editor(Edit(L"1"), folder.path());
    ASSERT_TRUE(editor.window()) << editor.Errors();
    const HWND browse = ::GetDlgItem(editor.window(), host::kEditorBrowseId);
    const auto focus = [&](int id) {
        const HWND field = editor.Control(L"INI File", id);
        ::PostMessageW(::GetParent(field), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(field), TRUE);
    };
    focus(1008);   // "Value Name"
    EXPECT_TRUE(WaitFor([&] { return !::IsWindowEnabled(browse); }, 5000)) << "a field that offers no browsing";
    focus(1020);   // "Filename"
    ASSERT_TRUE(WaitFor([&] { return ::IsWindowEnabled(browse); }, 5000));
    editor.Send(L"INI File", 1020, EM_SETSEL, 0, 0);   // nothing selected: the choice replaces the text all the same
    ::PostMessageW(browse, BM_CLICK, 0, 0);

    const HWND picker = WaitFor([&] { return FindProcessWindow(editor.id(), L"#32770"); }, 10000);
    ASSERT_TRUE(picker);
    HWND name = nullptr;   // the picker's file name field: its first edit control
    ::EnumChildWindows(picker, [](HWND child, LPARAM l) -> BOOL {
        wchar_t type[16] = L"";
        ::GetClassNameW(child, type, 16);
        return _wcsicmp(type, L"Edit") != 0 || (*reinterpret_cast<HWND*>(l) = child, FALSE);
    }, reinterpret_cast<LPARAM>(&name));
    ASSERT_TRUE(name);
    const std::wstring chosen = folder / L"chosen.ini";
    DWORD_PTR result = 0;
    ::SendMessageTimeoutW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(chosen.c_str()), SMTO_NORMAL, 10000, &result);
    ::PostMessageW(picker, WM_COMMAND, IDOK, 0);
    ASSERT_TRUE(WaitFor([&] { return !::IsWindow(picker); }, 10000));
    ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();
    EXPECT_EQ(Written()["steps"][0]["properties"]["Filename"], host::Utf8(chosen));
}

TEST_F(StepEditor, CancelLeavesTheScriptByteForByte) {
    const struct {
        const char* name;
        void (*cancel)(const EditorProcess& editor);
    } rows[] = {
        {"Cancel button", [](const EditorProcess& e) { ::PostMessageW(::GetDlgItem(e.window(), IDCANCEL), BM_CLICK, 0, 0); }},
        {"close box", [](const EditorProcess& e) { ::PostMessageW(e.window(), WM_CLOSE, 0, 0); }},
        {"Escape in a field", [](const EditorProcess& e) { ::PostMessageW(e.Control(L"Copy", 1009), WM_KEYDOWN, VK_ESCAPE, 0); }},
    };
    for (const auto& row : rows) {
        const EditorProcess editor(Edit(L"3"), folder.path());
        ASSERT_TRUE(editor.window()) << row.name << ": " << editor.Errors();
        editor.SetText(L"Copy", 1009, L"C:\\elsewhere");
        editor.Click(L"Options", 1041);
        row.cancel(editor);
        EXPECT_EQ(editor.ExitCode(), 2u) << row.name;
        EXPECT_EQ(test::ReadFileBytes(script), kScript) << row.name;
    }
}

// A required field left empty: the page says so, its tab comes to the front and the editor stays open.
TEST_F(StepEditor, ARefusingPageKeepsTheEditorOpen) {
    const struct {
        const wchar_t* step;
        Change emptied;
        int tab;
    } rows[] = {{L"1", {L"INI File", 1064, L""}, 0}, {L"3", {L"Options", 1010, L""}, 1}};
    for (const auto& row : rows) {
        const EditorProcess editor(Edit(row.step), folder.path());
        ASSERT_TRUE(editor.window()) << editor.Errors();
        editor.SetText(row.emptied.page, row.emptied.id, row.emptied.text);
        ::PostMessageW(::GetDlgItem(editor.window(), IDOK), BM_CLICK, 0, 0);
        const HWND box = WaitFor([&] { return FindProcessWindow(editor.id(), L"#32770", L"Velmora"); }, 10000);
        ASSERT_TRUE(box) << row.emptied.id;
        EXPECT_EQ(WindowText(::GetDlgItem(box, 0xFFFF)), L"Field is required.");
        ::PostMessageW(box, WM_COMMAND, IDOK, 0);
        ASSERT_TRUE(WaitFor([&] { return !::IsWindow(box); }, 10000)) << row.emptied.id;
        EXPECT_EQ(editor.ExitCode(500), 0xDEADu) << "the editor stays open";
        EXPECT_EQ(::SendMessageW(::GetDlgItem(editor.window(), host::kEditorTabId), TCM_GETCURSEL, 0, 0), row.tab);
        EXPECT_EQ(editor.Press(IDCANCEL), 2u);
        EXPECT_EQ(test::ReadFileBytes(script), kScript);
    }
}

TEST_F(StepEditor, BadArgumentsAreUsageErrors) {
    test::WriteFileBytes(folder / L"unknown.json", R"({"steps": [{"action": "No Such Action"}]})");
    const struct {
        std::wstring arguments;
        std::wstring error; // a part of stderr
    } rows[] = {
        {Edit(L"4"), L"script.json has 3 steps: there is no step 4"},
        {Edit(L"0"), L"--edit needs a step number from 1"},
        {Edit(L"new \"Write Fil\""), L"unknown action \"Write Fil\"; the known actions are: COM+"},
        {Edit(L"new"), L"--edit SCRIPT new needs the name of an action"},
        {L"--edit " + quoted, L"--edit needs a script and a step number"},
        {L"--edit \"" + (folder / L"unknown.json") + L"\" 1", L"step 1: unknown action \"No Such Action\""},
        {L"--edit \"" + (folder / L"missing.json") + L"\" 1",
         L"missing.json: " + host::SystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))},
        {L"--screenshot x " + quoted, L"--screenshot works only with --edit"},
    };
    for (const auto& row : rows) {
        const test::ProgramRun run = Run(row.arguments);
        EXPECT_EQ(run.exitCode, 64u) << testing::PrintToString(row.arguments) << ": " << testing::PrintToString(run.err);
        EXPECT_NE(run.err.find(row.error), std::wstring::npos) << testing::PrintToString(run.err);
    }
    EXPECT_EQ(test::ReadFileBytes(script), kScript);
}

// The number of colours of a PNG that the editor wrote, and its size; 0 when the file is not one that it writes
// (a chunk cut short or with a wrong CRC, pixels that do not inflate, a row filter other than "Sub").
size_t CountColours(const std::string& png, unsigned& width, unsigned& height) {
    const auto number = [&](size_t at) {
        return unsigned{static_cast<unsigned char>(png[at])} << 24 | unsigned{static_cast<unsigned char>(png[at + 1])} << 16 |
               unsigned{static_cast<unsigned char>(png[at + 2])} << 8 | static_cast<unsigned char>(png[at + 3]);
    };
    if (png.size() < 33 || png.compare(0, 8, "\x89PNG\r\n\x1A\n") != 0 || png.compare(12, 4, "IHDR") != 0) return 0;
    width = number(16);
    height = number(20);
    std::string data;
    for (size_t at = 8; at + 12 <= png.size(); at += 12 + number(at)) {
        const size_t length = number(at);
        const auto crc = [&] { return ::crc32(0, reinterpret_cast<const Bytef*>(&png[at + 4]), static_cast<uInt>(length + 4)); };
        if (at + 12 + length > png.size() || crc() != number(at + 8 + length)) return 0;
        if (png.compare(at + 4, 4, "IDAT") == 0) data += png.substr(at + 8, length);
    }
    const size_t stride = size_t{width} * 3 + 1;
    std::vector<unsigned char> rows(stride * height);
    uLongf size = static_cast<uLongf>(rows.size());
    if (::uncompress(rows.data(), &size, reinterpret_cast<const Bytef*>(data.data()), static_cast<uLong>(data.size())) != Z_OK ||
        size != rows.size())
        return 0;
    std::set<unsigned> colours;
    for (unsigned char* row = rows.data(); row < rows.data() + rows.size(); row += stride) {
        if (row[0] != 1) return 0;   // the "Sub" filter: a byte minus the same byte of the pixel to its left
        for (size_t x = 4; x < stride; ++x) row[x] = static_cast<unsigned char>(row[x] + row[x - 3]);
        for (size_t x = 1; x < stride; x += 3) colours.insert(unsigned{row[x]} << 16 | unsigned{row[x + 1]} << 8 | row[x + 2]);
    }
    return colours.size();
}

TEST_F(StepEditor, PicturesOfEveryPage) {
    const test::ProgramRun run = Run(Edit(L"3 --screenshot \"" + (folder / L"pic") + L"\""));
    ASSERT_EQ(run.exitCode, 0u) << testing::PrintToString(run.err);
    for (const wchar_t* page : {L"pic-CopyFilesUI.png", L"pic-CopyFilesOptUI.png"}) {
        unsigned width = 0, height = 0;
        EXPECT_GT(CountColours(test::ReadFileBytes(folder / page), width, height), 3u) << "a window, not a blank";
        EXPECT_GT(width, 300u) << testing::PrintToString(page);
        EXPECT_GT(height, 200u);
    }
    EXPECT_EQ(test::ReadFileBytes(script), kScript);
}

// The script preview tab: the step's "Text" in our editor control, saved on OK; the control's settings that the
// user changes are stored for the user and come back in the next editor.
TEST_F(StepEditor, ScriptPageEditsTextInTheEditorControlAndKeepsItsSettings) {
    test::WriteFileBytes(script, R"({"steps": [{"action": "Write File",
        "properties": {"Filename": "C:\\a.js", "Text": "var a = 1;"}}]})");
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kEditorKey);
    {
        const EditorProcess editor(Edit(L"1 --script-page"), folder.path());
        ASSERT_TRUE(editor.window()) << editor.Errors();
        wchar_t text[64] = L"";   // another process's control: its text comes by message, not from its title
        editor.Send(L"Script", 1027, WM_GETTEXT, 64, reinterpret_cast<LPARAM>(text));
        EXPECT_STREQ(text, L"var a = 1;");
        editor.SetText(L"Script", 1027, L"function b() { return 2; } // two");
        editor.Send(L"Script", 1027, CMM_SETTABSIZE, 2, 0);
        editor.Send(L"Script", 1027, CMM_PROPSCHANGED, 0, 0);   // as when the user changes a setting
        ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();
    }
    EXPECT_EQ(Written()["steps"][0]["properties"]["Text"], "function b() { return 2; } // two");
    {
        const EditorProcess editor(Edit(L"1 --script-page"), folder.path());
        ASSERT_TRUE(editor.window()) << editor.Errors();
        EXPECT_EQ(editor.Send(L"Script", 1027, CMM_GETTABSIZE, 0, 0), 2u);
        EXPECT_EQ(editor.Press(IDCANCEL), 2u);
    }
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kEditorKey);
}

// Every page of every action: the sample script's steps open, one field of each page is changed, and OK writes that
// change while every other property of the step comes back as it was.
TEST_F(StepEditor, EveryPageOfEveryActionEditsItsStep) {
    const std::vector<std::vector<Change>> edits = {
        {{L"File", 1092, L"1200", "Encoding"}},
        {{L"INI File", 1064, L"Edited", "Section"}},
        {{L"Registry", 1008, L"Edited", "ValueName"}},
        {{L"Copy", 1047, L"C:\\edited", "SourceDir"}, {L"Options", 1010, L"3", "Retries"}},
        {{L"Replace", 1092, L"1252", "Encoding"}},
        {{L"Wait", 1032, L"00:00:02", "Criteria"}},
        {{L"Service", 1035, L"Edited Service", "Service"}},
        {{L"Global Assembly Cache", 1009, L"Edited", "AssemblyFolder"}},
        {{L"Application", 1028, L"7", "ShutdownAfter"}, {L"Properties", 1026, L"Edited", "Values"}},
        {{L"Component", 1062, L"30", "ComponentTransactionTimeout"}, {L"Properties", 1016, L"Edited", "Props"}},
        {{L"ZIP", 1047, L"C:\\edited", "Source"}, {L"Options", 1013, L"Edited", "Comment"}},
        {{L"UNZIP", 1009, L"C:\\edited", "Dest"}},
    };
    const std::string sample = test::ReadFileBytes(L"Z:" + tol::Widen(VELMORA_SOURCE_DIR "/examples/pages.json", CP_UTF8));
    ASSERT_EQ(json::parse(sample)["steps"].size(), edits.size());
    for (size_t step = 0; step < edits.size(); ++step) {
        test::WriteFileBytes(script, sample);
        const EditorProcess editor(Edit(std::to_wstring(step + 1)), folder.path());
        ASSERT_TRUE(editor.window()) << editor.Errors();
        for (const auto& edit : edits[step]) editor.SetText(edit.page, edit.id, edit.text);
        ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();
        json expected = json::parse(sample)["steps"][step]["properties"];
        for (const auto& edit : edits[step]) {
            json& value = expected[edit.property];
            if (value.is_array()) value[0] = host::Utf8(edit.text); else value = host::Utf8(edit.text);   // a list's first row
        }
        EXPECT_EQ(Written()["steps"][step]["properties"].dump(), expected.dump()) << "step " << step + 1;
    }
}

} // namespace
