#include "page_host.h"
#include <commctrl.h>
#include <stdexcept>

namespace test {

STDMETHODIMP PageExpander::ExpandText(BSTR text, long, BSTR* expanded, VARIANT_BOOL, long, long* unresolved) {
    const std::wstring in = text ? text : L"";
    std::wstring out;
    size_t i = 0;
    *unresolved = 0;
    for (size_t open, close; (open = in.find(L'%', i)) != in.npos && (close = in.find(L'%', open + 1)) != in.npos;
         i = close + 1) {
        const auto found = variables.find(in.substr(open + 1, close - open - 1));
        if (found == variables.end()) *unresolved = 1;
        out += in.substr(i, open - i) + (found != variables.end() ? found->second : in.substr(open, close - open + 1));
    }
    *expanded = ::SysAllocString((out + in.substr(i)).c_str());
    return S_OK;
}

void PageStep::SetText(const std::wstring& name, const std::wstring& text) {
    VARIANT& value = *values_[name].receive();
    V_VT(&value) = VT_BSTR;
    V_BSTR(&value) = ::SysAllocString(text.c_str());
}

void PageStep::SetLong(const std::wstring& name, long number) {
    VARIANT& value = *values_[name].receive();
    V_VT(&value) = VT_I4;
    V_I4(&value) = number;
}

std::vector<std::wstring> PageStep::Array(const std::wstring& name) const {
    const VARIANT& value = Get(name);
    if (V_VT(&value) != (VT_ARRAY | VT_VARIANT)) throw std::runtime_error("not an array of VARIANTs");
    const VARIANT* elements = static_cast<const VARIANT*>(V_ARRAY(&value)->pvData);
    std::vector<std::wstring> result;
    for (ULONG i = 0; i < V_ARRAY(&value)->rgsabound[0].cElements; ++i) result.push_back(tol::VariantToText(elements[i]));
    return result;
}

STDMETHODIMP PageStep::GetStoredProperty(BSTR name, VARIANT* value) {
    ::VariantInit(value);
    const auto found = values_.find(name ? name : L"");
    return found == values_.end() ? S_OK : ::VariantCopy(value, found->second.ptr());
}

STDMETHODIMP PageStep::SetProperty(BSTR name, VARIANT value) {
    return ::VariantCopy(values_[name ? name : L""].receive(), &value);
}

STDMETHODIMP PageStep::RemoveProperty(BSTR name, VARIANT* previous) {
    removed.push_back(name ? name : L"");
    const auto found = values_.find(removed.back());
    *previous = found == values_.end() ? tol::variant().release() : found->second.release();
    if (found != values_.end()) values_.erase(found);
    return S_OK;
}

PageHost::PageHost(const wchar_t* className, bool tooltips) {
    static const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES | ICC_TAB_CLASSES};
    ::InitCommonControlsEx(&controls);
    parent_ = ::CreateWindowExW(0, L"STATIC", L"page host", WS_OVERLAPPEDWINDOW, 0, 0, 800, 600, nullptr, nullptr,
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

std::vector<std::wstring> PageHost::ListItems(int id) const {
    std::vector<std::wstring> items;
    for (LRESULT i = 0, count = ::SendMessageW(Item(id), CB_GETCOUNT, 0, 0); i < count; ++i) {
        std::wstring item(static_cast<size_t>(::SendMessageW(Item(id), CB_GETLBTEXTLEN, i, 0)) + 1, L'\0');
        item.resize(static_cast<size_t>(::SendMessageW(Item(id), CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(item.data()))));
        items.push_back(item);
    }
    return items;
}

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
    if (!g_answerer) return;
    ::EnumThreadWindows(::GetCurrentThreadId(), [](HWND window, LPARAM) -> BOOL {
        wchar_t name[16] = {}, text[1024] = {}, caption[64] = {};
        ::GetClassNameW(window, name, 16);
        if (::lstrcmpW(name, L"#32770") != 0 || !::IsWindowVisible(window)) return TRUE;
        ::GetDlgItemTextW(window, 0xFFFF, text, 1024);
        ::GetWindowTextW(window, caption, 64);
        g_answerer->texts.push_back(std::wstring(caption) + L": " + text);
        ::PostMessageW(window, WM_COMMAND, MAKEWPARAM(g_answer, BN_CLICKED), 0);
        return FALSE;
    }, 0);
}

} // namespace test
