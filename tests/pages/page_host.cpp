#include "page_host.h"
#include "frame/errors.h"
#include "frame/step.h"
#include <commctrl.h>
#include <stdexcept>

namespace test {

STDMETHODIMP PageSite::QueryInterface(REFIID iid, void** object) {
    if (iid != __uuidof(IActionPageSite) && iid != IID_IUnknown) return *object = nullptr, E_NOINTERFACE;
    *object = static_cast<IActionPageSite*>(this);
    return S_OK;
}
STDMETHODIMP PageSite::FieldFocused(long flags) {
    focused.push_back(flags);
    return S_OK;
}
STDMETHODIMP PageSite::PageChanged() {
    ++changes;
    return S_OK;
}

STDMETHODIMP PageExpander::QueryInterface(REFIID iid, void** object) {
    if (iid != __uuidof(ITextExpander) && iid != IID_IUnknown) return *object = nullptr, E_NOINTERFACE;
    *object = static_cast<ITextExpander*>(this);
    return S_OK;
}

std::wstring PageExpander::Expand(const std::wstring& text, bool* resolved) const {
    std::wstring out;
    if (resolved) *resolved = true;
    for (size_t i = 0; i < text.size();) {
        const size_t open = text.find(L'%', i), close = open == std::wstring::npos ? open : text.find(L'%', open + 1);
        if (close == std::wstring::npos) {
            out += text.substr(i);
            break;
        }
        out += text.substr(i, open - i);
        const auto found = variables.find(text.substr(open + 1, close - open - 1));
        if (found != variables.end()) {
            out += found->second;
        } else {
            out += text.substr(open, close - open + 1);
            if (resolved) *resolved = false;
        }
        i = close + 1;
    }
    return out;
}

STDMETHODIMP PageExpander::ExpandText(BSTR text, long, BSTR* expanded, VARIANT_BOOL, long, long* unresolved) {
    bool resolved = true;
    *expanded = ::SysAllocString(Expand(text ? text : L"", &resolved).c_str());
    *unresolved = resolved ? 0 : 1;
    return S_OK;
}

STDMETHODIMP PageExpander::ExpandForDisplay(BSTR text, BSTR* expanded) {
    *expanded = ::SysAllocString(Expand(text ? text : L"").c_str());
    return S_OK;
}

PageStep::~PageStep() {
    for (auto& entry : values_) ::VariantClear(&entry.second);
}

void PageStep::Set(const std::wstring& name, const VARIANT& value) {
    VARIANT copy;
    ::VariantInit(&copy);
    THROW_IF_FAILED(::VariantCopy(&copy, const_cast<VARIANT*>(&value)));
    auto found = values_.find(name);
    if (found != values_.end()) ::VariantClear(&found->second);
    values_[name] = copy;
}

void PageStep::SetText(const std::wstring& name, const std::wstring& text) {
    tol::variant v;
    V_VT(v.ptr()) = VT_BSTR;
    V_BSTR(v.ptr()) = ::SysAllocString(text.c_str());
    Set(name, v.get());
}

void PageStep::SetLong(const std::wstring& name, long value) {
    VARIANT v;
    V_VT(&v) = VT_I4;
    V_I4(&v) = value;
    Set(name, v);
}

void PageStep::SetBool(const std::wstring& name, bool value) {
    VARIANT v;
    V_VT(&v) = VT_BOOL;
    V_BOOL(&v) = value ? VARIANT_TRUE : VARIANT_FALSE;
    Set(name, v);
}

const VARIANT& PageStep::Get(const std::wstring& name) const {
    const auto found = values_.find(name);
    if (found == values_.end()) throw std::out_of_range("no such property");
    return found->second;
}

std::wstring PageStep::Text(const std::wstring& name) const { return tol::VariantToText(Get(name)); }

std::vector<std::wstring> PageStep::Array(const std::wstring& name) const {
    const VARIANT& value = Get(name);
    if (V_VT(&value) != (VT_ARRAY | VT_VARIANT)) throw std::runtime_error("not an array of VARIANTs");
    LONG lower = 0, upper = -1;
    ::SafeArrayGetLBound(V_ARRAY(&value), 1, &lower);
    ::SafeArrayGetUBound(V_ARRAY(&value), 1, &upper);
    std::vector<std::wstring> result;
    for (LONG i = lower; i <= upper; ++i) {
        tol::variant element;
        THROW_IF_FAILED(::SafeArrayGetElement(V_ARRAY(&value), &i, element.ptr()));
        result.push_back(tol::VariantToText(element.get()));
    }
    return result;
}

STDMETHODIMP PageStep::QueryInterface(REFIID iid, void** object) {
    if (iid == __uuidof(IBuildStep) || iid == IID_IUnknown) {
        *object = static_cast<IBuildStep*>(this);
    } else if (iid == __uuidof(IBuildStepWriter)) {
        *object = static_cast<IBuildStepWriter*>(this);
    } else {
        *object = nullptr;
        return E_NOINTERFACE;
    }
    return S_OK;
}

STDMETHODIMP PageStep::GetStoredProperty(BSTR name, VARIANT* value) {
    ::VariantInit(value);
    const auto found = values_.find(name ? name : L"");
    return found == values_.end() ? S_OK : ::VariantCopy(value, &found->second);
}

STDMETHODIMP PageStep::SetProperty(BSTR name, VARIANT value) {
    Set(name ? name : L"", value);
    return S_OK;
}

STDMETHODIMP PageStep::RemoveProperty(BSTR name, VARIANT* previous) {
    ::VariantInit(previous);
    const std::wstring key = name ? name : L"";
    removed.push_back(key);
    const auto found = values_.find(key);
    if (found != values_.end()) {
        *previous = found->second;
        values_.erase(found);
    }
    return S_OK;
}

namespace {

const wchar_t kHostClass[] = L"VelmoraTestPageHost";

void RegisterHostClass() {
    static const bool registered = [] {
        INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES | ICC_TAB_CLASSES};
        ::InitCommonControlsEx(&controls);
        WNDCLASSW windowClass{};
        windowClass.lpfnWndProc = ::DefWindowProcW;
        windowClass.hInstance = ::GetModuleHandleW(nullptr);
        windowClass.lpszClassName = kHostClass;
        return ::RegisterClassW(&windowClass) != 0;
    }();
    (void)registered;
}

} // namespace

PageHost::PageHost(const wchar_t* className, bool tooltips) {
    RegisterHostClass();
    parent_ = ::CreateWindowExW(0, kHostClass, L"page host", WS_OVERLAPPEDWINDOW, 0, 0, 800, 600, nullptr, nullptr,
                                ::GetModuleHandleW(nullptr), nullptr);
    page_ = tol::CreatePropertyPage(className);
    if (!parent_ || !page_) throw std::runtime_error("cannot create the page host");
    if (!page_->Create(&site, &expander, parent_, tooltips)) throw std::runtime_error("cannot create the page");
    ::ShowWindow(parent_, SW_SHOWNOACTIVATE);
    ::ShowWindow(page_->window(), SW_SHOWNOACTIVATE);
    Pump();
}

PageHost::~PageHost() {
    page_.reset();
    ::DestroyWindow(parent_);
}

std::wstring PageHost::Text(int id) const {
    wchar_t buffer[4096] = {};
    ::GetWindowTextW(Item(id), buffer, 4096);
    return buffer;
}

void PageHost::SetText(int id, const std::wstring& text) {
    const HWND control = Item(id);
    ::SetWindowTextW(control, text.c_str());
    wchar_t name[16] = {};
    ::GetClassNameW(control, name, 16);
    const WORD code = ::lstrcmpiW(name, L"ComboBox") == 0 ? CBN_EDITCHANGE : EN_CHANGE;
    ::SendMessageW(window(), WM_COMMAND, MAKEWPARAM(id, code), reinterpret_cast<LPARAM>(control));
    Pump();
}

void PageHost::Click(int id) {
    ::SendMessageW(Item(id), BM_CLICK, 0, 0);
    Pump();
}

void PageHost::Select(int id, int index) {
    ::SendMessageW(Item(id), CB_SETCURSEL, index, 0);
    ::SendMessageW(window(), WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(Item(id)));
    Pump();
}

bool PageHost::Checked(int id) const { return ::SendMessageW(Item(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }

void PageHost::Pump() {
    MSG message;
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        ::TranslateMessage(&message);
        ::DispatchMessageW(&message);
    }
}

namespace {
MessageBoxAnswerer* g_answerer = nullptr;
int g_answer = IDOK;

BOOL CALLBACK AnswerBox(HWND window, LPARAM) {
    wchar_t name[16] = {};
    ::GetClassNameW(window, name, 16);
    if (::lstrcmpW(name, L"#32770") != 0 || !::IsWindowVisible(window)) return TRUE;
    wchar_t text[1024] = {};
    ::GetDlgItemTextW(window, 0xFFFF, text, 1024);
    wchar_t caption[64] = {};
    ::GetWindowTextW(window, caption, 64);
    g_answerer->texts.push_back(std::wstring(caption) + L": " + text);
    ::PostMessageW(window, WM_COMMAND, MAKEWPARAM(g_answer, BN_CLICKED), 0);
    return FALSE;
}
} // namespace

MessageBoxAnswerer::MessageBoxAnswerer(int answer) : timer_(::SetTimer(nullptr, 0, 30, Tick)) {
    g_answerer = this;
    g_answer = answer;
}

MessageBoxAnswerer::~MessageBoxAnswerer() {
    ::KillTimer(nullptr, timer_);
    g_answerer = nullptr;
}

void CALLBACK MessageBoxAnswerer::Tick(HWND, UINT, UINT_PTR, DWORD) {
    if (g_answerer) ::EnumThreadWindows(::GetCurrentThreadId(), AnswerBox, 0);
}

} // namespace test
