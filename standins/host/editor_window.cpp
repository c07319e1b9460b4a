#include "editor_window.h"
#include "browse.h"
#include "build_step.h"
#include "host_object.h"
#include "screenshot.h"
#include "text.h"
#include "text_expander.h"
#include "ActionUI.h"
#include "frame/bstr.h"
#include "frame/classes.h"
#include "frame/registry.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <commctrl.h>
#include <algorithm>
#include <exception>
#include <optional>

namespace host {
namespace {

constexpr int kMargin = 8, kGap = 6, kButtonWidth = 84, kButtonHeight = 25;
constexpr UINT kTakePictures = WM_APP + 1;

class EditorWindow;

// The pages' IActionPageSite: their focus and change reports go to the window while it lives.
class PageSite final : public HostObject<IActionPageSite> {
public:
    explicit PageSite(EditorWindow* window) noexcept : window_(window) {}
    void Detach() noexcept { window_ = nullptr; }
    STDMETHODIMP FieldFocused(long flags) override;
    STDMETHODIMP PageChanged() override;

private:
    EditorWindow* window_;
};

struct Page {
    std::wstring progId;
    tol::com_ptr<IActionPage> component;
    HWND window = nullptr; // owned by the component: DestroyPage destroys it
    std::wstring caption;
    SIZE size{}; // the client size of the page's template
};

// "VelmoraExt.WriteINIUI" -> "WriteINIUI"
std::wstring ClassOf(const std::wstring& progId) { return progId.substr(progId.find_last_of(L'.') + 1); }

// A failed call on a page: the page's error information (or the system's text) with the ProgID and the operation.
void Check(const Page& page, const wchar_t* operation, HRESULT hr) {
    if (SUCCEEDED(hr)) return;
    std::wstring reason = SystemText(hr);
    tol::com_ptr<IErrorInfo> info;
    tol::bstr description;
    if (::GetErrorInfo(0, info.put()) == S_OK && info && SUCCEEDED(info->GetDescription(description.receive())) &&
        !description.view().empty())
        reason = TrimLineEnd(description.str());
    throw tol::truntime_error(page.progId + L": " + operation + L" failed (" + HexCode(hr) + L"): " + reason);
}

// Hides the caption and frame of the page's template: inside a tab the page is a plain child.
void MakePlainChild(HWND page) {
    const LONG_PTR style = ::GetWindowLongPtrW(page, GWL_STYLE);
    ::SetWindowLongPtrW(page, GWL_STYLE, (style & ~(WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_POPUP | WS_VISIBLE)) | WS_CHILD);
    const LONG_PTR extended = ::GetWindowLongPtrW(page, GWL_EXSTYLE);
    ::SetWindowLongPtrW(page, GWL_EXSTYLE, (extended & ~(WS_EX_DLGMODALFRAME | WS_EX_WINDOWEDGE)) | WS_EX_CONTROLPARENT);
    ::SetWindowPos(page, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_FRAMECHANGED | SWP_NOACTIVATE);
}

std::wstring WindowText(HWND window) {
    std::wstring text(static_cast<size_t>(::GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(::GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return text;
}

// Runs the window's messages for a while: a new window gets mapped and painted under a real display.
void PumpMessages(DWORD milliseconds) {
    const ULONGLONG end = ::GetTickCount64() + milliseconds;
    for (;;) {
        MSG message;
        while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
            if (message.message == WM_QUIT) {
                ::PostQuitMessage(static_cast<int>(message.wParam));
                return;
            }
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
        const ULONGLONG now = ::GetTickCount64();
        if (now >= end) return;
        ::MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
    }
}

class EditorWindow {
public:
    explicit EditorWindow(const EditorSetup& setup)
        : setup_(setup), site_(tol::com_ptr<PageSite>::attach(new PageSite(this))), expander_(MakeTextExpander(setup.expander)),
          step_(MakeBuildStep(setup.properties, setup.expander)) {}

    ~EditorWindow() {
        DestroyPages();
        site_->Detach();
        if (window_) ::SetWindowLongPtrW(window_.get(), GWLP_USERDATA, 0);
    }
    EditorWindow(const EditorWindow&) = delete;
    EditorWindow& operator=(const EditorWindow&) = delete;

    EditOutcome Run() {
        Create();
        if (!setup_.screenshotPrefix.empty()) ::PostMessageW(window_.get(), kTakePictures, 0, 0);
        MSG message;
        while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
            if (SwitchesTab(message)) continue;
            if (window_ && ::IsDialogMessageW(window_.get(), &message)) continue;
            ::TranslateMessage(&message);
            ::DispatchMessageW(&message);
        }
        if (failure_) std::rethrow_exception(failure_);
        return outcome_.value_or(EditOutcome::Cancelled);
    }

    // Browse serves fields that have a browse kind (flag 2).
    void FieldFocused(long flags) noexcept {
        if (browse_) ::EnableWindow(browse_, (flags & 2) ? TRUE : FALSE);
    }

    void PageChanged() noexcept {
        if (modified_ || !window_) return;
        modified_ = true;
        ::SetWindowTextW(window_.get(), (setup_.title + L" *").c_str());
    }

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM w, LPARAM l) {
        if (message == WM_NCCREATE) {
            auto* self = static_cast<EditorWindow*>(reinterpret_cast<CREATESTRUCTW*>(l)->lpCreateParams);
            ::SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
            self->window_.reset(window);
        }
        auto* self = reinterpret_cast<EditorWindow*>(::GetWindowLongPtrW(window, GWLP_USERDATA));
        if (!self) return ::DefWindowProcW(window, message, w, l);
        try {
            return self->Handle(message, w, l);
        } catch (...) {
            // Nothing crosses the window procedure: the failure ends the loop and Run throws it.
            if (!self->failure_) self->failure_ = std::current_exception();
            self->Finish(EditOutcome::Cancelled);
            return 0;
        }
    }

    LRESULT Handle(UINT message, WPARAM w, LPARAM l) {
        const HWND window = window_.get();
        switch (message) {
        case WM_COMMAND: Command(LOWORD(w)); return 0;
        case WM_NOTIFY:
            if (reinterpret_cast<NMHDR*>(l)->idFrom == kEditorTabId && reinterpret_cast<NMHDR*>(l)->code == TCN_SELCHANGE)
                Select(TabCtrl_GetCurSel(tab_));
            return 0;
        case DM_GETDEFID: return MAKELRESULT(IDOK, DC_HASDEFID);
        case WM_SIZE: Layout(); return 0;
        case WM_GETMINMAXINFO: // set once the pages are measured
            if (minimum_.x > 0) reinterpret_cast<MINMAXINFO*>(l)->ptMinTrackSize = minimum_;
            return 0;
        case WM_ACTIVATE: // the focus comes back to where it was, as in a dialog
            if (LOWORD(w) == WA_INACTIVE) {
                focus_ = ::GetFocus();
            } else if (focus_ && ::IsWindow(focus_) && ::IsChild(window, focus_)) {
                ::SetFocus(focus_);
                return 0;
            }
            break;
        case WM_CLOSE: Finish(EditOutcome::Cancelled); return 0;
        case WM_DESTROY: ::PostQuitMessage(0); return 0;
        case WM_NCDESTROY: ::SetWindowLongPtrW(window, GWLP_USERDATA, 0); break;
        case kTakePictures: TakePictures(); return 0;
        default: break;
        }
        return ::DefWindowProcW(window, message, w, l);
    }

    // Ctrl+Tab and Ctrl+Shift+Tab, Ctrl+PageDown and Ctrl+PageUp move between the tabs.
    bool SwitchesTab(const MSG& message) {
        if (message.message != WM_KEYDOWN || ::GetKeyState(VK_CONTROL) >= 0 || pages_.size() < 2) return false;
        if (!window_ || (message.hwnd != window_.get() && !::IsChild(window_.get(), message.hwnd))) return false;
        const bool back = message.wParam == VK_PRIOR || (message.wParam == VK_TAB && ::GetKeyState(VK_SHIFT) < 0);
        if (message.wParam != VK_TAB && message.wParam != VK_NEXT && message.wParam != VK_PRIOR) return false;
        const int count = static_cast<int>(pages_.size());
        Select((current_ + (back ? count - 1 : 1)) % count);
        return true;
    }

    void Create() {
        RegisterClass();
        INITCOMMONCONTROLSEX controls{sizeof controls, ICC_WIN95_CLASSES | ICC_TAB_CLASSES};
        ::InitCommonControlsEx(&controls);
        NONCLIENTMETRICSW metrics{};
        metrics.cbSize = sizeof metrics;
        ::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof metrics, &metrics, 0);
        font_.reset(::CreateFontIndirectW(&metrics.lfMessageFont));
        // The procedure takes the window into window_ at WM_NCCREATE.
        if (!::CreateWindowExW(WS_EX_CONTROLPARENT, kEditorWindowClass, setup_.title.c_str(),
                               WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, CW_USEDEFAULT, CW_USEDEFAULT, 640, 480, nullptr, nullptr,
                               ::GetModuleHandleW(nullptr), this)) {
            window_.release(); // destroyed already, if it was made at all
            tol::ThrowLastError();
        }
        CreateControls();
        CreatePages();
        FitToPages();
        for (const Page& page : pages_)
            Check(page, L"LoadStep", page.component->LoadStep(setup_.newStep ? nullptr : step_.get(), VARIANT_FALSE));
        ::ShowWindow(window_.get(), SW_SHOW);
        Select(0);
        ::UpdateWindow(window_.get());
    }

    static void RegisterClass() {
        WNDCLASSEXW type{};
        type.cbSize = sizeof type;
        const HINSTANCE instance = ::GetModuleHandleW(nullptr);
        if (::GetClassInfoExW(instance, kEditorWindowClass, &type)) return;
        type.lpfnWndProc = Procedure;
        type.hInstance = instance;
        type.hCursor = ::LoadCursorW(nullptr, IDC_ARROW);
        type.hbrBackground = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1);
        type.lpszClassName = kEditorWindowClass;
        if (!::RegisterClassExW(&type)) tol::ThrowLastError();
    }

    HWND Control(const wchar_t* type, const wchar_t* text, int id, DWORD style) {
        const HWND control =
            ::CreateWindowExW(0, type, text, WS_CHILD | WS_VISIBLE | WS_TABSTOP | style, 0, 0, 0, 0, window_.get(),
                              reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), ::GetModuleHandleW(nullptr), nullptr);
        if (!control) tol::ThrowLastError();
        ::SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(font_.get()), FALSE);
        return control;
    }

    void CreateControls() {
        tab_ = Control(WC_TABCONTROLW, L"", kEditorTabId, WS_CLIPSIBLINGS);
        browse_ = Control(WC_BUTTONW, L"&Browse...", kEditorBrowseId, BS_PUSHBUTTON);
        ::EnableWindow(browse_, FALSE);
        Control(WC_BUTTONW, L"OK", IDOK, BS_DEFPUSHBUTTON);
        Control(WC_BUTTONW, L"Cancel", IDCANCEL, BS_PUSHBUTTON);
    }

    void CreatePages() {
        for (const std::wstring& progId : setup_.pageProgIds) {
            pages_.push_back(Page{progId});
            Page& page = pages_.back();
            if (progId == kScriptPreviewProgId) {
                CreatePreviewComponent(page);
            } else {
                CLSID clsid;
                Check(page, L"CLSIDFromProgID", ::CLSIDFromProgID(progId.c_str(), &clsid));
                Check(page, L"CoCreateInstance", ::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IActionPage,
                                                                    page.component.put_void()));
            }
            Check(page, L"CreatePage",
                  page.component->CreatePage(site_.get(), expander_.get(), window_.get(), VARIANT_TRUE, &page.window));
            if (!page.window) Check(page, L"CreatePage", E_FAIL);
            RECT client{};
            ::GetClientRect(page.window, &client);
            page.size = {client.right, client.bottom};
            page.caption = WindowText(page.window);
            MakePlainChild(page.window);
            TCITEMW item{};
            item.mask = TCIF_TEXT;
            item.pszText = page.caption.data();
            TabCtrl_InsertItem(tab_, static_cast<int>(pages_.size() - 1), &item);
        }
    }

    // The script preview is a page class of the library that is not registered: its class object comes straight
    // from the library that serves the action's first page.
    void CreatePreviewComponent(Page& page) {
        CLSID first;
        Check(page, L"CLSIDFromProgID", ::CLSIDFromProgID(setup_.pageProgIds.front().c_str(), &first));
        tol::unique_hkey key;
        const std::wstring name = L"CLSID\\" + tol::GuidText(first) + L"\\InprocServer32";
        std::wstring path;
        if (::RegOpenKeyExW(HKEY_CLASSES_ROOT, name.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS ||
            !tol::ReadStringValue(key.get(), nullptr, path))
            Check(page, L"finding the page library", REGDB_E_CLASSNOTREG);
        library_.reset(::LoadLibraryW(path.c_str()));
        if (!library_) Check(page, L"LoadLibrary", HRESULT_FROM_WIN32(::GetLastError()));
        using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
        const auto get = reinterpret_cast<GetClassObject>(::GetProcAddress(library_.get(), "DllGetClassObject"));
        if (!get) Check(page, L"DllGetClassObject", HRESULT_FROM_WIN32(::GetLastError()));
        tol::com_ptr<IClassFactory> factory;
        Check(page, L"DllGetClassObject", get(tol::CLSID_ScriptPreviewUI, IID_IClassFactory, factory.put_void()));
        Check(page, L"CreateInstance", factory->CreateInstance(nullptr, IID_IActionPage, page.component.put_void()));
    }

    // The window's first size shows the largest page at its template size; it never gets smaller.
    void FitToPages() {
        RECT display{};
        for (const Page& page : pages_) {
            display.right = std::max(display.right, page.size.cx);
            display.bottom = std::max(display.bottom, page.size.cy);
        }
        TabCtrl_AdjustRect(tab_, TRUE, &display);
        const LONG tabWidth = display.right - display.left, tabHeight = display.bottom - display.top;
        RECT frame{0, 0, std::max<LONG>(tabWidth, 3 * kButtonWidth + 2 * kGap) + 2 * kMargin,
                   tabHeight + 3 * kMargin + kButtonHeight};
        ::AdjustWindowRectEx(&frame, WS_OVERLAPPEDWINDOW, FALSE, WS_EX_CONTROLPARENT);
        minimum_ = {frame.right - frame.left, frame.bottom - frame.top};
        RECT work{};
        ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
        ::SetWindowPos(window_.get(), nullptr, std::max(work.left, (work.left + work.right - minimum_.x) / 2),
                       std::max(work.top, (work.top + work.bottom - minimum_.y) / 2), minimum_.x, minimum_.y,
                       SWP_NOZORDER | SWP_NOACTIVATE);
        Layout();
    }

    void Layout() {
        if (!tab_) return;
        RECT client{};
        ::GetClientRect(window_.get(), &client);
        const int buttonsTop = client.bottom - kMargin - kButtonHeight;
        ::MoveWindow(tab_, kMargin, kMargin, client.right - 2 * kMargin, buttonsTop - 2 * kMargin, TRUE);
        ::MoveWindow(browse_, kMargin, buttonsTop, kButtonWidth, kButtonHeight, TRUE);
        ::MoveWindow(::GetDlgItem(window_.get(), IDOK), client.right - kMargin - 2 * kButtonWidth - kGap, buttonsTop,
                     kButtonWidth, kButtonHeight, TRUE);
        ::MoveWindow(::GetDlgItem(window_.get(), IDCANCEL), client.right - kMargin - kButtonWidth, buttonsTop, kButtonWidth,
                     kButtonHeight, TRUE);
        RECT display{kMargin, kMargin, client.right - kMargin, buttonsTop - kMargin};
        TabCtrl_AdjustRect(tab_, FALSE, &display);
        for (const Page& page : pages_)
            if (page.window)
                ::SetWindowPos(page.window, HWND_TOP, display.left, display.top, display.right - display.left,
                               display.bottom - display.top, SWP_NOACTIVATE);
    }

    void Select(int index) {
        if (index < 0 || index >= static_cast<int>(pages_.size())) return;
        if (current_ >= 0 && current_ != index) {
            Check(pages_[current_], L"DeactivatePage", pages_[current_].component->DeactivatePage());
            ::ShowWindow(pages_[current_].window, SW_HIDE);
        }
        current_ = index;
        TabCtrl_SetCurSel(tab_, index);
        ::ShowWindow(pages_[index].window, SW_SHOW);
        Check(pages_[index], L"ActivatePage", pages_[index].component->ActivatePage());
    }

    void Command(int id) {
        if (id == IDOK) Accept();
        if (id == IDCANCEL) Finish(EditOutcome::Cancelled);
        if (id == kEditorBrowseId) Browse();
    }

    // Every page validates (the first refusal shows its page and keeps the editor open), then every page saves.
    void Accept() {
        if (busy_) return;
        busy_ = true;
        struct Reset {
            bool& flag;
            ~Reset() { flag = false; }
        } reset{busy_};
        for (size_t i = 0; i < pages_.size(); ++i) {
            VARIANT_BOOL valid = VARIANT_FALSE;
            Check(pages_[i], L"ValidatePage", pages_[i].component->ValidatePage(&valid));
            if (valid == VARIANT_FALSE) {
                if (static_cast<int>(i) != current_) Select(static_cast<int>(i));
                return;
            }
        }
        for (const Page& page : pages_) Check(page, L"SaveStep", page.component->SaveStep(step_.get()));
        busy_ = false;
        Finish(EditOutcome::Saved);
    }

    // The focused field's browse kind picks the dialog; the choice goes into the field.
    void Browse() {
        if (current_ < 0 || busy_) return;
        const Page& page = pages_[current_];
        tol::com_ptr<IActionField> field;
        if (FAILED(page.component->GetActiveField(field.put())) || !field) return;
        long kind = 0;
        tol::bstr filter, text;
        Check(page, L"GetBrowseKind", field->GetBrowseKind(&kind));
        Check(page, L"GetBrowseFilter", field->GetBrowseFilter(filter.receive()));
        Check(page, L"GetFieldText", field->GetFieldText(text.receive()));
        busy_ = true;
        const std::optional<std::wstring> chosen = kind == 1   ? BrowseForFolder(window_.get())
                                                   : kind == 2 ? BrowseForFile(window_.get(), filter.view(), text.str())
                                                               : std::nullopt;
        busy_ = false;
        if (chosen) Check(page, L"InsertText", field->InsertText(tol::bstr(*chosen).get(), VARIANT_FALSE));
    }

    void TakePictures() {
        PumpMessages(500);
        for (size_t i = 0; i < pages_.size() && window_; ++i) {
            Select(static_cast<int>(i));
            ::RedrawWindow(window_.get(), nullptr, nullptr,
                           RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
            PumpMessages(200);
            SaveWindowPicture(window_.get(), setup_.screenshotPrefix + L"-" + ClassOf(pages_[i].progId) + L".png");
        }
        Finish(EditOutcome::Cancelled);
    }

    // Ends the editor: the pages go first, then the window, which ends the message loop.
    void Finish(EditOutcome outcome) noexcept {
        if (outcome_ || (busy_ && !failure_)) return;
        outcome_ = outcome;
        DestroyPages();
        window_.reset();
    }

    void DestroyPages() noexcept {
        for (Page& page : pages_)
            if (page.component && page.window) {
                page.component->DestroyPage();
                page.window = nullptr;
            }
    }

    const EditorSetup& setup_;
    const tol::com_ptr<PageSite> site_;
    const tol::com_ptr<ITextExpander> expander_;
    const tol::com_ptr<IBuildStep> step_;
    tol::unique_module library_; // the library of the script preview page; released after the pages
    tol::unique_gdi_object font_;
    tol::unique_window window_;
    HWND tab_ = nullptr;
    HWND browse_ = nullptr;
    HWND focus_ = nullptr;
    std::vector<Page> pages_;
    int current_ = -1;
    bool modified_ = false;
    bool busy_ = false; // a page's validation or a browse dialog is running: Cancel waits
    POINT minimum_{};
    std::optional<EditOutcome> outcome_;
    std::exception_ptr failure_;
};

STDMETHODIMP PageSite::FieldFocused(long flags) {
    if (window_) window_->FieldFocused(flags);
    return S_OK;
}

STDMETHODIMP PageSite::PageChanged() {
    if (window_) window_->PageChanged();
    return S_OK;
}

} // namespace

EditOutcome RunEditor(const EditorSetup& setup) {
    EditorWindow editor(setup);
    return editor.Run();
}

} // namespace host
