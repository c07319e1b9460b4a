#include "editor_control.h"
#include "standins/cmax/codemax.h"
#include "fileutil/paths.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include "frame/registry.h"
#include <algorithm>
#include <cstring>
#include <optional>
#include <vector>

namespace tol {
namespace {

// ---- The control library -------------------------------------------------------------------------------------

std::wstring LibraryFolder() {
    std::wstring name(260, L'\0');
    for (;;) {
        const DWORD length = ::GetModuleFileNameW(ResourceModule(), name.data(), static_cast<DWORD>(name.size()));
        THROW_LAST_ERROR_IF(length == 0);
        if (length < name.size()) return DirectoryPart(std::wstring_view(name).substr(0, length), false);
        name.resize(name.size() * 2);
    }
}

// cmax20u.dll: from our own folder, else wherever the system finds it. Loaded once, at the first use; a failed
// load is tried again at the next.
class ControlLibrary {
public:
    ControlLibrary() {
        module_.reset(::LoadLibraryW(CombinePath(LibraryFolder(), CODEMAX_LIBRARY).c_str()));
        if (!module_) module_.reset(::LoadLibraryW(CODEMAX_LIBRARY));
        if (!module_) ThrowLibraryLoadFailure(CODEMAX_LIBRARY);
    }

    template <class Function>
    Function Get(int ordinal) const {
        const FARPROC function = ::GetProcAddress(module_.get(), MAKEINTRESOURCEA(ordinal));
        if (!function) ThrowLibraryLoadFailure(CODEMAX_LIBRARY);
        return reinterpret_cast<Function>(function);
    }

private:
    unique_module module_;
};

const ControlLibrary& Library() {
    static const ControlLibrary library;
    return library;
}

void CheckResult(LONG result) {
    if (result != CME_SUCCESS) throw comet::com_error(result == CME_OUTOFMEMORY ? E_OUTOFMEMORY : E_INVALIDARG);
}

// ---- Script languages ----------------------------------------------------------------------------------------

// Keywords and operators are separated by blanks here (none contains one); the other lists by line feeds.
struct ScriptLanguage {
    const wchar_t* name;
    bool caseSensitive;
    const wchar_t* keywords;
    const wchar_t* operators;
    const wchar_t* lineComments;
    const wchar_t* commentStart;
    const wchar_t* commentEnd;
    const wchar_t* scopeOpen;
    const wchar_t* scopeClose;
    const wchar_t* strings;
    wchar_t escape;
    wchar_t terminator;
    const wchar_t* words[3];
};

const ScriptLanguage kScriptLanguages[] = {
    {L"JScript", true,
        L"@cc_on @if @set abs acos ActiveXObject anchor apply arguments Array asin Assignments atan atan2 "
        L"atEnd big blink bold Boolean break call calee caller catch ceil cherAt CharCodeAt Compileconcat "
        L"constructor continue cos Date decodeURI DecodeURIComponent Decrement description Dictionary "
        L"dimensions E encodeURI encodeURIcomponent Enumerator Error escape eval exec exp FileSystemObject "
        L"fixed floor fontcolor fontsize for fromCharCode function getDate getDay getFullYear getHours getItem "
        L"getMilleseconds getMinutes getMonth GetObject getSeconds getTime getTimeZoneOffset getUTCDate "
        L"getUtcDay getUTCFullYear getUTCHours getUTSMilliseconds getUTCMonth getUtcSeconds getVarDate getYear "
        L"Global hasOwnProperty ignoreCase index indexOf Inequality Infinity input instanceOf isFinite isNan "
        L"isPrototypeOf italics item join Labled lastIndex lastIndexOf lastMatch lastparen lbound leftContext "
        L"length link LN2 LN10 localeCompare log LOG2E LOG10E match Math max MAX_VALUE message min MIN_VALUE "
        L"moveFirst moveNext multiline name Nan NEGATIVE_INFINITY new nonidentity Number Object Operator parse "
        L"parseFloat parseInt PI pop POSITIVE_INFINITY pow propertyIsEnumerable prototype push random RegExp "
        L"replace return reverse righContext round ScriptEngine ScrriptEngineBuildVersion "
        L"ScriptEngineMajorVersion ScriptEngineMinorVersion search setDate SetFullYear SetHours "
        L"SetMilliseconds setMinutes setMonth setSeconds setTime SetUTCDate setUTCFullYear setUTCHours "
        L"SetUTCMinutes setUTCSeconds setYear shift sin slice small sort source splice split sqrt SQRT1_2 "
        L"AQRT2 strike String sub substr substring sup swith tan test this throw toArray toDateString "
        L"toExponential toFixed toGMTSting toLocaleDateString toLocaleLowercase toLocaleUpperCase toLowerCase "
        L"toString toPrecision toTimeString toUpperCase toUTCString try typeof ubound undefinited unescape "
        L"unishift UTC ValueOf var VBArray void while with do for if in else switch case default true false "
        L"value write writeln",
        L"! != !== % %= & &= && * *= + ++ += . - -- -= / /= < < <<= <= = == === > >= >> >>= >>> >>>= ?: ~ | { "
        L"} ; |= || ^ ^=",
        L"//", L"/*", L"*/", L"{", L"}", L"\"\n'", L'\\', L';', {nullptr, L"<%\n%>", nullptr}},
    {L"VBScript", false,
        L"#Const #Else #If Array As Asc Base Call Case Choose Chr Close Cls Const Data Declare Def Dim "
        L"DoEvents Each Else ElseIf Erase Error Exit False Format Get GoSub GoTo Hex If In Input IsArray "
        L"LBound LCase Let Me Module New Oct On Open Option Peek Poke Preserve Print Private Property Public "
        L"Put Read ReDim Restore Resume Return Select Set Shared Static Step Stop Str Sub Switch Then To True "
        L"Type UBound UCase Write",
        L"^ - * / \\ + & = <> < > <= >= Mod Is Like And Eqv Imp Not Or Xor",
        L"'\nRem", nullptr, nullptr, L"Begin\nWhile\nFor\nDo\nWith\nFunction", L"End\nWend\nNext\nLoop\nEnd With\nEnd Function",
        L"\"", 0, 0, {nullptr, nullptr, nullptr}},
};

std::wstring LineFeedSeparated(const wchar_t* blankSeparated) {
    std::wstring list(blankSeparated);
    std::replace(list.begin(), list.end(), L' ', L'\n');
    return list;
}

// ---- Settings ------------------------------------------------------------------------------------------------

// A message that carries no selector takes the value in wParam; one with a selector takes it in lParam.
struct IntegerSetting {
    const wchar_t* name;
    DWORD fallback;
    UINT apply, read;
    int selector;   // -1: none
};

constexpr IntegerSetting kIntegerSettings[] = {
    {L"ColorSyntax", 1, CMM_SETCOLORSYNTAX, CMM_GETCOLORSYNTAX, -1},
    {L"HScrollBar", 1, CMM_SHOWSCROLLBAR, CMM_HASSCROLLBAR, 1},
    {L"VScrollBar", 1, CMM_SHOWSCROLLBAR, CMM_HASSCROLLBAR, 0},
    {L"HSplitter", 0, CMM_ENABLESPLITTER, CMM_ISSPLITTERENABLED, 1},
    {L"VSplitter", 0, CMM_ENABLESPLITTER, CMM_ISSPLITTERENABLED, 0},
    {L"WholeWord", 0, CMM_SETWHOLEWORD, CMM_GETWHOLEWORD, -1},
    {L"AutoIndentMode", 2, CMM_SETAUTOINDENTMODE, CMM_GETAUTOINDENTMODE, -1},
    {L"SmoothScrolling", 0, CMM_SETSMOOTHSCROLL, CMM_GETSMOOTHSCROLL, -1},
    {L"LineToolTips", 1, CMM_SETLINETOOLTIPS, CMM_GETLINETOOLTIPS, -1},
    {L"LeftMargin", 0, CMM_SETLEFTMARGIN, CMM_GETLEFTMARGIN, -1},
    {L"ColumnSel", 1, CMM_SETCOLUMNSEL, CMM_GETCOLUMNSEL, -1},
    {L"DragDrop", 1, CMM_SETDRAGDROP, CMM_GETDRAGDROP, -1},
    {L"CaseSensitive", 0, CMM_SETCASESENSITIVE, CMM_GETCASESENSITIVE, -1},
    {L"PreserveCase", 0, CMM_SETPRESERVECASE, CMM_GETPRESERVECASE, -1},
    {L"TabExpand", 0, CMM_SETTABEXPAND, CMM_GETTABEXPAND, -1},
    {L"TabSize", 4, CMM_SETTABSIZE, CMM_GETTABSIZE, -1},
    {L"NormalizeCase", 1, CMM_SETNORMALIZECASE, CMM_GETNORMALIZECASE, -1},
    {L"SelBounds", 1, CMM_SETSELBOUNDS, CMM_GETSELBOUNDS, -1},
};

// Records travel by pointer in lParam.
struct RecordSetting {
    const wchar_t* name;
    DWORD size;
    UINT apply, read;
};

constexpr RecordSetting kRecordSettings[] = {
    {L"Colors", sizeof(CM_COLORS), CMM_SETCOLORS, CMM_GETCOLORS},
    {L"FontStyles", sizeof(CM_FONTSTYLES), CMM_SETFONTSTYLES, CMM_GETFONTSTYLES},
    {L"LineNumbering", sizeof(CM_LINENUMBERING), CMM_SETLINENUMBERING, CMM_GETLINENUMBERING},
};

static_assert(sizeof(CM_COLORS) == 124 && sizeof(CM_FONTSTYLES) == 12 && sizeof(CM_LINENUMBERING) == 12 &&
              sizeof(LOGFONTW) == 92);

std::wstring MacroName(int index) { return L"Macro" + std::to_wstring(index); }

// Absent: the fallback. Stored with another type than REG_DWORD: ERROR_INVALID_DATATYPE.
DWORD ReadDword(HKEY key, const wchar_t* name, DWORD fallback) {
    DWORD type = 0, value = 0, size = sizeof value;
    const LONG status = ::RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(&value), &size);
    if (status == ERROR_FILE_NOT_FOUND) return fallback;
    if (status == ERROR_MORE_DATA || (status == ERROR_SUCCESS && (type != REG_DWORD || size != sizeof value)))
        ThrowWin32(ERROR_INVALID_DATATYPE);
    THROW_IF_WIN32_ERROR(status);
    return value;
}

// A REG_BINARY value of any size; nothing when it is absent or of another type.
std::optional<std::vector<BYTE>> ReadBinary(HKEY key, const wchar_t* name) {
    DWORD type = 0, size = 0;
    if (::RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) != ERROR_SUCCESS || type != REG_BINARY)
        return std::nullopt;
    std::vector<BYTE> data(size);
    if (::RegQueryValueExW(key, name, nullptr, &type, data.data(), &size) != ERROR_SUCCESS || type != REG_BINARY)
        return std::nullopt;
    data.resize(size);
    return data;
}

void WriteValue(HKEY key, const wchar_t* name, DWORD type, const void* data, size_t size) {
    THROW_IF_WIN32_ERROR(::RegSetValueExW(key, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)));
}

// The bytes of a library function that answers the size it needs: asked again while the size grows.
template <class Get>
std::vector<BYTE> Fetch(Get get) {
    std::vector<BYTE> data;
    DWORD needed = get(nullptr, 0);
    while (needed > data.size()) {
        data.resize(needed);
        needed = get(data.data(), static_cast<DWORD>(data.size()));
    }
    data.resize(needed);
    return data;
}

unique_gdi_object CreateEditorFont() {
    int pixelsPerInch = 96;
    if (HDC screen = ::GetDC(nullptr)) {
        pixelsPerInch = ::GetDeviceCaps(screen, LOGPIXELSY);
        ::ReleaseDC(nullptr, screen);
    }
    unique_gdi_object font(::CreateFontW(-(90 * pixelsPerInch / 720), 0, 0, 0, FW_NORMAL, FALSE, FALSE, FALSE,
                                         DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS, DEFAULT_QUALITY,
                                         DEFAULT_PITCH | FF_DONTCARE, L"Courier New"));
    THROW_LAST_ERROR_IF(!font);
    return font;
}

void BindCtrlKey(CMREGISTERHOTKEY bind, BYTE key, WORD command) {
    const CM_HOTKEY hotkey{CM_MOD_CTRL, key, 0, 0};
    CheckResult(bind(&hotkey, command));
}

LRESULT Send(HWND control, UINT message, WPARAM w = 0, LPARAM l = 0) { return ::SendMessageW(control, message, w, l); }

} // namespace

void LoadEditorControlLibrary() { Library(); }

void RegisterScriptLanguages() {
    const auto registerLanguage = Library().Get<CMREGISTERLANGUAGE>(CM_ORDINAL_REGISTERLANGUAGE);
    for (const ScriptLanguage& language : kScriptLanguages) {
        const std::wstring keywords = LineFeedSeparated(language.keywords);
        const std::wstring operators = LineFeedSeparated(language.operators);
        const CM_LANGUAGE record{CMLS_PROCEDURAL, language.caseSensitive, keywords.c_str(), operators.c_str(),
                                 language.lineComments, language.commentStart, language.commentEnd, language.scopeOpen,
                                 language.scopeClose, language.strings, language.escape, language.terminator,
                                 language.words[0], language.words[1], language.words[2]};
        CheckResult(registerLanguage(language.name, &record));
    }
}

unique_gdi_object SetUpEditorControl(HWND control) {
    RegisterScriptLanguages();
    Send(control, CMM_RESETPROPS);
    unique_gdi_object font = CreateEditorFont();
    Send(control, CMM_ENABLESPLITTER, 1, 0);
    Send(control, CMM_ENABLESPLITTER, 0, 0);
    Send(control, CMM_SETLEFTMARGIN, 0);
    Send(control, CMM_SETSELBOUNDS, 1);
    Send(control, CMM_SETNORMALIZECASE, 1);
    Send(control, CMM_SETCOLORSYNTAX, 1);
    const auto bind = Library().Get<CMREGISTERHOTKEY>(CM_ORDINAL_REGISTERHOTKEY);
    BindCtrlKey(bind, 'A', CMD_SELECTALL);
    BindCtrlKey(bind, 'H', CMD_FINDREPLACE);
    Send(control, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), TRUE);
    try {
        if (unique_gdi_object stored = LoadEditorSettings(control)) font = std::move(stored);
    } catch (...) {
        Send(control, WM_SETFONT, 0, FALSE);   // the font dies with this failure: the control must not keep it
        throw;
    }
    return font;
}

// The font comes last: nothing that follows can fail and leave the control with a deleted font.
unique_gdi_object LoadEditorSettings(HWND control) {
    unique_hkey key;
    const LONG status = ::RegOpenKeyExW(HKEY_CURRENT_USER, kEditorSettingsKey, 0, KEY_READ, key.put());
    if (status == ERROR_FILE_NOT_FOUND) return unique_gdi_object();
    THROW_IF_WIN32_ERROR(status);

    for (const IntegerSetting& setting : kIntegerSettings) {
        const DWORD value = ReadDword(key.get(), setting.name, setting.fallback);
        if (setting.selector < 0) {
            Send(control, setting.apply, value);
        } else {
            Send(control, setting.apply, static_cast<WPARAM>(setting.selector), value);
        }
    }
    for (const RecordSetting& setting : kRecordSettings) {
        const auto record = ReadBinary(key.get(), setting.name);
        if (record && record->size() == setting.size) Send(control, setting.apply, 0, reinterpret_cast<LPARAM>(record->data()));
    }
    // Macros and bindings that the library refuses (a damaged record) are left out.
    const auto setMacro = Library().Get<CMSETMACRO>(CM_ORDINAL_SETMACRO);
    for (int index = 0; index < CM_MAX_MACROS; ++index) {
        if (const auto macro = ReadBinary(key.get(), MacroName(index).c_str()))
            setMacro(index, macro->data(), static_cast<DWORD>(macro->size()));
    }
    if (const auto hotkeys = ReadBinary(key.get(), L"Hotkeys"))
        Library().Get<CMSETHOTKEYS>(CM_ORDINAL_SETHOTKEYS)(hotkeys->data(), static_cast<DWORD>(hotkeys->size()));

    const auto stored = ReadBinary(key.get(), L"Font");
    if (!stored || stored->size() != sizeof(LOGFONTW)) return unique_gdi_object();
    LOGFONTW description;
    std::memcpy(&description, stored->data(), sizeof description);
    description.lfFaceName[LF_FACESIZE - 1] = L'\0';
    unique_gdi_object font(::CreateFontIndirectW(&description));
    if (font) Send(control, WM_SETFONT, reinterpret_cast<WPARAM>(font.get()), TRUE);
    return font;
}

void SaveEditorSettings(HWND control) {
    const unique_hkey key = CreateKey(HKEY_CURRENT_USER, kEditorSettingsKey);
    for (const IntegerSetting& setting : kIntegerSettings) {
        const WPARAM selector = setting.selector < 0 ? 0 : static_cast<WPARAM>(setting.selector);
        const DWORD value = static_cast<DWORD>(Send(control, setting.read, selector));
        WriteValue(key.get(), setting.name, REG_DWORD, &value, sizeof value);
    }
    for (const RecordSetting& setting : kRecordSettings) {
        std::vector<BYTE> record(setting.size);
        if (Send(control, setting.read, 0, reinterpret_cast<LPARAM>(record.data())) == CME_SUCCESS)
            WriteValue(key.get(), setting.name, REG_BINARY, record.data(), record.size());
    }
    LOGFONTW font;
    const auto handle = reinterpret_cast<HFONT>(Send(control, WM_GETFONT));
    if (handle && ::GetObjectW(handle, sizeof font, &font) == sizeof font)
        WriteValue(key.get(), L"Font", REG_BINARY, &font, sizeof font);

    const auto getMacro = Library().Get<CMGETMACRO>(CM_ORDINAL_GETMACRO);
    for (int index = 0; index < CM_MAX_MACROS; ++index) {
        const std::vector<BYTE> macro = Fetch([&](BYTE* buffer, DWORD size) { return getMacro(index, buffer, size); });
        if (!macro.empty()) WriteValue(key.get(), MacroName(index).c_str(), REG_BINARY, macro.data(), macro.size());
    }
    const std::vector<BYTE> hotkeys = Fetch(Library().Get<CMGETHOTKEYS>(CM_ORDINAL_GETHOTKEYS));
    WriteValue(key.get(), L"Hotkeys", REG_BINARY, hotkeys.data(), hotkeys.size());
}

bool HandleEditorKey(HWND control, UINT virtualKey) {
    if ((virtualKey == VK_NEXT || virtualKey == VK_PRIOR) && ::GetKeyState(VK_CONTROL) < 0) {
        // Tab belongs to the editor: these keys move the focus on through the page.
        ::PostMessageW(::GetParent(control), WM_NEXTDLGCTL, virtualKey == VK_PRIOR ? 1 : 0, FALSE);
        return true;
    }
    if (virtualKey == VK_ESCAPE) {
        HWND top = control;
        while (top && (::GetWindowLongW(top, GWL_STYLE) & WS_CHILD)) top = ::GetParent(top);
        if (top) ::PostMessageW(top, WM_COMMAND, MAKEWPARAM(IDCANCEL, 0), 0);
        return true;
    }
    return false;
}

std::wstring GetEditorText(HWND control) {
    Send(control, CMM_SETTEXTSCOPE, CM_SCOPE_ALL);
    const size_t length = static_cast<size_t>(std::max<LRESULT>(Send(control, CMM_GETTEXTLENGTH), 0));
    std::wstring text(length + 1, L'\0');
    const LRESULT copied = Send(control, CMM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
    text.resize(std::min(static_cast<size_t>(std::max<LRESULT>(copied, 0)), length));
    return text;
}

void InsertEditorText(HWND control, const std::wstring& text) {
    Send(control, CMM_REPLACESEL, 0, reinterpret_cast<LPARAM>(text.c_str()));
    ::PostMessageW(::GetParent(control), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control), TRUE);
}

} // namespace tol
