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
    struct Search {
        DWORD process;
        const wchar_t* className;
        const wchar_t* title;
        HWND found;
    } search{process, className, title, nullptr};
    ::EnumWindows(
        [](HWND window, LPARAM l) -> BOOL {
            auto& s = *reinterpret_cast<Search*>(l);
            DWORD owner = 0;
            wchar_t name[64] = L"";
            ::GetWindowThreadProcessId(window, &owner);
            ::GetClassNameW(window, name, 64);
            if (owner != s.process || _wcsicmp(name, s.className) != 0 || !::IsWindowVisible(window)) return TRUE;
            if (s.title && WindowText(window) != s.title) return TRUE;
            s.found = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

template <class Probe>
auto WaitFor(Probe probe, DWORD milliseconds = 30000) {
    const ULONGLONG end = ::GetTickCount64() + milliseconds;
    for (;;) {
        if (auto found = probe(); found || ::GetTickCount64() > end) return found;
        ::Sleep(50);
    }
}

// velmora-run with its output in files of the folder, and its editor window once it shows.
class EditorProcess {
public:
    EditorProcess(const std::wstring& arguments, const std::wstring& folder) : folder_(folder) {
        SECURITY_ATTRIBUTES inherit{sizeof inherit, nullptr, TRUE};
        const auto create = [&](const wchar_t* name) {
            return tol::unique_file(::CreateFileW((folder + L"\\" + name).c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherit,
                                                  CREATE_ALWAYS, 0, nullptr));
        };
        const tol::unique_file out = create(L"stdout.txt"), err = create(L"stderr.txt");
        STARTUPINFOW startup{sizeof startup};
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = out.get();
        startup.hStdError = err.get();
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
    void SetText(const wchar_t* page, int id, const std::wstring& text) const {
        const HWND control = Control(page, id);
        ASSERT_TRUE(control) << testing::PrintToString(page) << " " << id;
        DWORD_PTR result = 0;
        ::SendMessageTimeoutW(control, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text.c_str()), SMTO_NORMAL, 10000, &result);
    }
    void Click(const wchar_t* page, int id) const {
        const HWND control = Control(page, id);
        ASSERT_TRUE(control) << testing::PrintToString(page) << " " << id;
        DWORD_PTR result = 0;
        ::SendMessageTimeoutW(control, BM_CLICK, 0, 0, SMTO_NORMAL, 10000, &result);
    }
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
    std::string Errors() const { return test::ReadFileBytes(folder_ + L"\\stderr.txt"); }

private:
    std::wstring folder_;
    tol::unique_process process_;
    DWORD id_ = 0;
    HWND window_ = nullptr;
};

class StepEditor : public testing::Test {
protected:
    static void SetUpTestSuite() { ASSERT_EQ(test::CallLibrary("DllRegisterServer"), S_OK); }
    static void TearDownTestSuite() { test::CallLibrary("DllUnregisterServer"); }

    void SetUp() override { test::WriteFileBytes(script, kScript); }

    json Written() const { return json::parse(test::ReadFileBytes(script)); }
    // Everything but the properties of one step is as it was, in content and in order.
    void ExpectOthersUnchanged(const json& written, size_t edited) const {
        json expected = json::parse(kScript), actual = written;
        if (edited < expected["steps"].size()) {
            expected["steps"][edited].erase("properties");
            actual["steps"][edited].erase("properties");
        } else if (edited < actual["steps"].size()) {
            actual["steps"].erase(edited);
        }
        EXPECT_EQ(actual.dump(), expected.dump());
    }

    test::ScratchFolder folder{L"velmora-edit \u00fc"};
    const std::wstring script = folder / L"script.json";
    const std::wstring quoted = L"\"" + script + L"\"";
};

TEST_F(StepEditor, WritesTheFieldsBackIntoTheirStep) {
    const EditorProcess editor(L"--edit " + quoted + L" 1", folder.path());
    ASSERT_TRUE(editor.window()) << editor.Errors();
    EXPECT_EQ(WindowText(editor.window()), L"Step 1: Write INI - script.json");
    editor.SetText(L"INI File", 1020, L"\"C:\\new.ini\""); // quotes around a path are dropped
    editor.SetText(L"INI File", 1008, L"");                // emptied: the property goes
    editor.Click(L"INI File", 1031);                       // "Delete the value"
    EXPECT_EQ(WindowText(editor.window()), L"Step 1: Write INI - script.json *");
    ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();

    const json written = Written();
    EXPECT_EQ(written["steps"][0]["properties"].dump(),
              R"({"Filename":"C:\\new.ini","Section":"S","ValueData":"42","Delete":true})");
    ExpectOthersUnchanged(written, 0);
    EXPECT_EQ(test::ReadFileBytes(script).substr(0, 19), "{\n  \"variables\": {\n") << "two-space indentation";
}

TEST_F(StepEditor, BothPagesOfAnActionSave) {
    const EditorProcess editor(L"--edit " + quoted + L" 2", folder.path());
    ASSERT_TRUE(editor.window()) << editor.Errors();
    editor.SetText(L"ZIP", 1009, L"C:\\new.zip");
    editor.SetText(L"Options", 1012, L"9"); // the second page, not shown
    editor.Click(L"Options", 1031);         // "Delete existing destination ZIP file"
    editor.Click(L"Options", 1053);         // "Include system and hidden files", now off: its default is on
    ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();

    // "Action" was missing: the list shows its first entry, which differs from the default "Update".
    const json written = Written();
    EXPECT_EQ(written["steps"][1]["properties"].dump(),
              R"({"Source":"C:\\src","Dest":"C:\\new.zip","Recurse":true,"Compression":"9","Hidden":false,"LogDetail":true,)"
              R"("Action":0,"Delete":true})");
    ExpectOthersUnchanged(written, 1);
}

// Properties that no page shows keep their values; check boxes that are on by default but missing from the step
// are saved as off.
TEST_F(StepEditor, PropertiesWithoutAFieldStayAsTheyAre) {
    const EditorProcess editor(L"--edit " + quoted + L" 3", folder.path());
    ASSERT_TRUE(editor.window()) << editor.Errors();
    ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();
    const json written = Written();
    EXPECT_EQ(written["steps"][2]["properties"].dump(),
              R"({"SourceDir":"C:\\src","DestDir":"C:\\dst","Retries":"2","Delay":"1","Unknown":"kept","Nothing":null,)"
              R"("Incremental":false,"LogCopied":false,"ReadOnly":false,"Restartable":false,"TBD":false})");
    ExpectOthersUnchanged(written, 2);
}

TEST_F(StepEditor, NewStepsTakeThePagesDefaults) {
    const struct {
        const wchar_t* action;
        const wchar_t* page;
        int required; // the control of a required field, filled in
        const char* action_name;
        json properties; // compared without regard to order
    } rows[] = {
        {L"\"copy files\"", L"Copy", 1009, "Copy Files",
         {{"DestDir", "C:\\d"}, {"Incremental", true}, {"LogCopied", true}, {"Restartable", true}, {"ReadOnly", true},
          {"TBD", true}, {"Retries", "10"}, {"Delay", "15"}}},
        {L"\"Write Registry\"", L"Registry", 1019, "Write Registry",
         {{"SubKey", "C:\\d"}, {"RootKey", -2147483647 - 1}, {"ValueType", 1}}},
    };
    for (const auto& row : rows) {
        test::WriteFileBytes(script, kScript);
        const EditorProcess editor(L"--edit " + quoted + L" new " + row.action, folder.path());
        ASSERT_TRUE(editor.window()) << editor.Errors();
        EXPECT_EQ(WindowText(editor.window()), std::wstring(L"New step: ") + tol::Widen(row.action_name) + L" - script.json");
        editor.SetText(row.page, row.required, L"C:\\d");
        ASSERT_EQ(editor.Press(IDOK), 0u) << row.action_name << ": " << editor.Errors();

        const json written = Written();
        ASSERT_EQ(written["steps"].size(), 4u) << row.action_name;
        const json& step = written["steps"][3];
        EXPECT_EQ(step["action"], row.action_name);
        EXPECT_FALSE(step.contains("name")) << row.action_name;
        EXPECT_EQ(nlohmann::json(step["properties"]), nlohmann::json(row.properties)) << row.action_name;
        ExpectOthersUnchanged(written, 3);
    }
}

// Browse serves the focused field: a file field opens the file picker, whose choice replaces the field's text.
TEST_F(StepEditor, BrowseFillsTheFocusedField) {
    const EditorProcess editor(L"--edit " + quoted + L" 1", folder.path());
    ASSERT_TRUE(editor.window()) << editor.Errors();
    const HWND browse = ::GetDlgItem(editor.window(), host::kEditorBrowseId);
    const HWND page = ::GetParent(editor.Control(L"INI File", 1008));
    ::PostMessageW(page, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(editor.Control(L"INI File", 1008)), TRUE); // "Value Name"
    EXPECT_TRUE(WaitFor([&] { return !::IsWindowEnabled(browse); }, 5000)) << "a field that offers no browsing";
    ::PostMessageW(page, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(editor.Control(L"INI File", 1020)), TRUE); // "Filename"
    ASSERT_TRUE(WaitFor([&] { return ::IsWindowEnabled(browse); }, 5000));
    ::PostMessageW(browse, BM_CLICK, 0, 0);

    const HWND picker = WaitFor([&] { return FindProcessWindow(editor.id(), L"#32770"); }, 10000);
    ASSERT_TRUE(picker);
    HWND name = nullptr; // the picker's file name field: its first edit control
    ::EnumChildWindows(
        picker,
        [](HWND child, LPARAM l) -> BOOL {
            wchar_t type[16] = L"";
            ::GetClassNameW(child, type, 16);
            if (_wcsicmp(type, L"Edit") != 0) return TRUE;
            *reinterpret_cast<HWND*>(l) = child;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&name));
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
    const std::string before = test::ReadFileBytes(script);
    const struct {
        const char* name;
        void (*cancel)(const EditorProcess& editor);
    } rows[] = {
        {"Cancel button", [](const EditorProcess& e) { ::PostMessageW(::GetDlgItem(e.window(), IDCANCEL), BM_CLICK, 0, 0); }},
        {"close box", [](const EditorProcess& e) { ::PostMessageW(e.window(), WM_CLOSE, 0, 0); }},
        {"Escape in a field", [](const EditorProcess& e) { ::PostMessageW(e.Control(L"Copy", 1009), WM_KEYDOWN, VK_ESCAPE, 0); }},
    };
    for (const auto& row : rows) {
        const EditorProcess editor(L"--edit " + quoted + L" 3", folder.path());
        ASSERT_TRUE(editor.window()) << row.name << ": " << editor.Errors();
        editor.SetText(L"Copy", 1009, L"C:\\elsewhere");
        editor.Click(L"Options", 1041);
        row.cancel(editor);
        EXPECT_EQ(editor.ExitCode(), 2u) << row.name;
        EXPECT_EQ(test::ReadFileBytes(script), before) << row.name;
    }
}

// A required field left empty: the page says so, its tab comes to the front and the editor stays open.
TEST_F(StepEditor, ARefusingPageKeepsTheEditorOpen) {
    const std::string before = test::ReadFileBytes(script);
    const struct {
        const wchar_t* step;
        const wchar_t* page;
        int field;
        int tab;
    } rows[] = {{L"1", L"INI File", 1064, 0}, {L"3", L"Options", 1010, 1}};
    for (const auto& row : rows) {
        const EditorProcess editor(L"--edit " + quoted + L" " + row.step, folder.path());
        ASSERT_TRUE(editor.window()) << editor.Errors();
        editor.SetText(row.page, row.field, L"");
        ::PostMessageW(::GetDlgItem(editor.window(), IDOK), BM_CLICK, 0, 0);
        const HWND box = WaitFor([&] { return FindProcessWindow(editor.id(), L"#32770", L"Velmora"); }, 10000);
        ASSERT_TRUE(box) << row.field;
        EXPECT_EQ(WindowText(::GetDlgItem(box, 0xFFFF)), L"Field is required.");
        ::PostMessageW(box, WM_COMMAND, IDOK, 0);
        ASSERT_TRUE(WaitFor([&] { return !::IsWindow(box); }, 10000)) << row.field;
        EXPECT_EQ(editor.ExitCode(500), 0xDEADu) << "the editor stays open";
        EXPECT_EQ(::SendMessageW(::GetDlgItem(editor.window(), host::kEditorTabId), TCM_GETCURSEL, 0, 0), row.tab);
        EXPECT_EQ(editor.Press(IDCANCEL), 2u);
        EXPECT_EQ(test::ReadFileBytes(script), before);
    }
}

TEST_F(StepEditor, BadArgumentsAreUsageErrors) {
    test::WriteFileBytes(folder / L"unknown.json", R"({"steps": [{"action": "No Such Action"}]})");
    const struct {
        std::wstring arguments;
        std::wstring error; // a part of stderr
    } rows[] = {
        {L"--edit " + quoted + L" 4", L"script.json has 3 steps: there is no step 4"},
        {L"--edit " + quoted + L" 0", L"--edit needs a step number from 1"},
        {L"--edit " + quoted + L" new \"Write Fil\"", L"unknown action \"Write Fil\"; the known actions are: COM+"},
        {L"--edit " + quoted + L" new", L"--edit SCRIPT new needs the name of an action"},
        {L"--edit " + quoted, L"--edit needs a script and a step number"},
        {L"--edit \"" + (folder / L"unknown.json") + L"\" 1", L"step 1: unknown action \"No Such Action\""},
        {L"--edit \"" + (folder / L"missing.json") + L"\" 1",
         L"missing.json: " + host::SystemText(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND))},
        {L"--screenshot x " + quoted, L"--screenshot works only with --edit"},
    };
    for (const auto& row : rows) {
        const test::ProgramRun run =
            test::RunProgram(L"\"" + test::BinFolder() + L"\\velmora-run.exe\" " + row.arguments, folder.path());
        EXPECT_EQ(run.exitCode, 64u) << testing::PrintToString(row.arguments) << ": " << testing::PrintToString(run.err);
        EXPECT_NE(run.err.find(row.error), std::wstring::npos) << testing::PrintToString(run.err);
    }
    EXPECT_EQ(test::ReadFileBytes(script), kScript);
}

// The pixels of a PNG that the editor wrote, unfiltered; empty when the file is not one that it writes.
std::vector<unsigned char> ReadPicture(const std::string& png, unsigned& width, unsigned& height) {
    const auto number = [&](size_t at) {
        return (unsigned{static_cast<unsigned char>(png[at])} << 24) | (unsigned{static_cast<unsigned char>(png[at + 1])} << 16) |
               (unsigned{static_cast<unsigned char>(png[at + 2])} << 8) | static_cast<unsigned char>(png[at + 3]);
    };
    if (png.size() < 33 || png.compare(0, 8, "\x89PNG\r\n\x1A\n") != 0 || png.compare(12, 4, "IHDR") != 0) return {};
    width = number(16);
    height = number(20);
    std::string data;
    for (size_t at = 8; at + 12 <= png.size(); at += 12 + number(at)) {
        const size_t length = number(at);
        const uLong crc = ::crc32(0, reinterpret_cast<const Bytef*>(png.data() + at + 4), static_cast<uInt>(length + 4));
        if (at + 12 + length > png.size() || crc != number(at + 8 + length)) return {};
        if (png.compare(at + 4, 4, "IDAT") == 0) data += png.substr(at + 8, length);
    }
    std::vector<unsigned char> rows((size_t{width} * 3 + 1) * height);
    uLongf size = static_cast<uLongf>(rows.size());
    if (::uncompress(rows.data(), &size, reinterpret_cast<const Bytef*>(data.data()), static_cast<uLong>(data.size())) != Z_OK ||
        size != rows.size())
        return {};
    std::vector<unsigned char> pixels;
    for (unsigned y = 0; y < height; ++y) {
        const unsigned char* row = rows.data() + (size_t{width} * 3 + 1) * y;
        if (row[0] != 1) return {}; // the "Sub" filter
        for (size_t x = 0; x < size_t{width} * 3; ++x)
            pixels.push_back(static_cast<unsigned char>(row[1 + x] + (x >= 3 ? pixels[pixels.size() - 3] : 0)));
    }
    return pixels;
}

TEST_F(StepEditor, PicturesOfEveryPage) {
    const test::ProgramRun run = test::RunProgram(
        L"\"" + test::BinFolder() + L"\\velmora-run.exe\" --edit " + quoted + L" 3 --screenshot \"" + (folder / L"pic") + L"\"",
        folder.path());
    ASSERT_EQ(run.exitCode, 0u) << testing::PrintToString(run.err);
    for (const wchar_t* page : {L"pic-CopyFilesUI.png", L"pic-CopyFilesOptUI.png"}) {
        unsigned width = 0, height = 0;
        const std::vector<unsigned char> pixels = ReadPicture(test::ReadFileBytes(folder / page), width, height);
        ASSERT_FALSE(pixels.empty()) << testing::PrintToString(page);
        EXPECT_GT(width, 300u);
        EXPECT_GT(height, 200u);
        std::set<unsigned> colours;
        for (size_t i = 0; i < pixels.size(); i += 3) colours.insert(pixels[i] << 16 | pixels[i + 1] << 8 | pixels[i + 2]);
        EXPECT_GT(colours.size(), 3u) << "a window, not a blank";
    }
    EXPECT_EQ(test::ReadFileBytes(script), kScript);
}

// The script preview tab: the step's "Text" in our editor control, saved on OK; the control's settings that the
// user changes are stored for the user and come back in the next editor.
TEST_F(StepEditor, ScriptPageEditsTextInTheEditorControlAndKeepsItsSettings) {
    test::WriteFileBytes(script, R"({"steps": [{"action": "Write File",
        "properties": {"Filename": "C:\\a.js", "Text": "var a = 1;"}}]})");
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kEditorKey);
    const auto sendTo = [](HWND control, UINT message, WPARAM w) {
        DWORD_PTR result = 0;
        ::SendMessageTimeoutW(control, message, w, 0, SMTO_NORMAL, 10000, &result);
        return result;
    };
    {
        const EditorProcess editor(L"--edit " + quoted + L" 1 --script-page", folder.path());
        ASSERT_TRUE(editor.window()) << editor.Errors();
        const HWND control = editor.Control(L"Script", 1027);
        ASSERT_TRUE(control);
        wchar_t text[64] = L"";   // another process's control: its text comes by message, not from its title
        DWORD_PTR copied = 0;
        ::SendMessageTimeoutW(control, WM_GETTEXT, 64, reinterpret_cast<LPARAM>(text), SMTO_NORMAL, 10000, &copied);
        EXPECT_STREQ(text, L"var a = 1;");
        editor.SetText(L"Script", 1027, L"function b() { return 2; } // two");
        sendTo(control, CMM_SETTABSIZE, 2);
        sendTo(control, CMM_PROPSCHANGED, 0);   // as when the user changes a setting
        ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();
    }
    EXPECT_EQ(Written()["steps"][0]["properties"]["Text"], "function b() { return 2; } // two");
    DWORD tabSize = 0, size = sizeof tabSize;
    EXPECT_EQ(::RegGetValueW(HKEY_CURRENT_USER, kEditorKey, L"TabSize", RRF_RT_REG_DWORD, nullptr, &tabSize, &size),
              ERROR_SUCCESS);
    EXPECT_EQ(tabSize, 2u);
    {
        const EditorProcess editor(L"--edit " + quoted + L" 1 --script-page", folder.path());
        const HWND control = editor.Control(L"Script", 1027);
        ASSERT_TRUE(control) << editor.Errors();
        EXPECT_EQ(sendTo(control, CMM_GETTABSIZE, 0), 2u);
        EXPECT_EQ(editor.Press(IDCANCEL), 2u);
    }
    ::RegDeleteTreeW(HKEY_CURRENT_USER, kEditorKey);
}

// Every page of every action: the sample script's steps open, one field of each page is changed, and OK writes that
// change while every other property of the step comes back as it was.
TEST_F(StepEditor, EveryPageOfEveryActionEditsItsStep) {
    struct Edit {
        const wchar_t* page;   // the template's caption
        int id;
        const char* property;
        const wchar_t* text;
    };
    const std::vector<std::vector<Edit>> edits = {
        {{L"File", 1092, "Encoding", L"1200"}},
        {{L"INI File", 1064, "Section", L"Edited"}},
        {{L"Registry", 1008, "ValueName", L"Edited"}},
        {{L"Copy", 1047, "SourceDir", L"C:\\edited"}, {L"Options", 1010, "Retries", L"3"}},
        {{L"Replace", 1092, "Encoding", L"1252"}},
        {{L"Wait", 1032, "Criteria", L"00:00:02"}},
        {{L"Service", 1035, "Service", L"Edited Service"}},
        {{L"Global Assembly Cache", 1009, "AssemblyFolder", L"Edited"}},
        {{L"Application", 1028, "ShutdownAfter", L"7"}, {L"Properties", 1026, "Values", L"Edited"}},
        {{L"Component", 1062, "ComponentTransactionTimeout", L"30"}, {L"Properties", 1016, "Props", L"Edited"}},
        {{L"ZIP", 1047, "Source", L"C:\\edited"}, {L"Options", 1013, "Comment", L"Edited"}},
        {{L"UNZIP", 1009, "Dest", L"C:\\edited"}},
    };
    const std::string sample = test::ReadFileBytes(L"Z:" + tol::Widen(VELMORA_SOURCE_DIR "/examples/pages.json", CP_UTF8));
    ASSERT_EQ(json::parse(sample)["steps"].size(), edits.size());
    for (size_t step = 0; step < edits.size(); ++step) {
        test::WriteFileBytes(script, sample);
        {
            const EditorProcess editor(L"--edit " + quoted + L" " + std::to_wstring(step + 1), folder.path());
            ASSERT_TRUE(editor.window()) << editor.Errors();
            for (const Edit& edit : edits[step]) editor.SetText(edit.page, edit.id, edit.text);
            ASSERT_EQ(editor.Press(IDOK), 0u) << editor.Errors();
        }
        json expected = json::parse(sample)["steps"][step]["properties"];
        for (const Edit& edit : edits[step]) {
            const std::string text = host::Utf8(edit.text);
            json& value = expected[edit.property];
            if (value.is_array()) value[0] = text; else value = text;   // the first row of a list of properties
        }
        EXPECT_EQ(Written()["steps"][step]["properties"].dump(), expected.dump()) << "step " << step + 1;
    }
}

} // namespace
