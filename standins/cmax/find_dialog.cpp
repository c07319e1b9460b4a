#include "find_dialog.h"
#include "language.h"
#include "shared.h"
#include <vector>

namespace cmax {
namespace {

enum : WORD { kFind = 1001, kReplacement, kWholeWord, kCaseSensitive, kPreserveCase };
enum : WORD { kButton = 0x0080, kEdit = 0x0081, kStatic = 0x0082 };

// A dialog template built in memory: the header, then one item after another on DWORD boundaries.
class DialogTemplate {
public:
    DialogTemplate(const wchar_t* title, short width, short height) {
        Add32(DS_MODALFRAME | DS_SETFONT | DS_CENTER | WS_POPUP | WS_CAPTION | WS_SYSMENU);
        Add32(0);
        data_.insert(data_.end(), {0, 0, 0, static_cast<WORD>(width), static_cast<WORD>(height), 0, 0});
        Text(title);
        data_.push_back(8);
        Text(L"MS Shell Dlg");
    }

    void Add(WORD id, WORD type, DWORD style, short x, short y, short width, short height, const wchar_t* text) {
        if (data_.size() % 2) data_.push_back(0);
        Add32(style | WS_CHILD | WS_VISIBLE);
        Add32(0);
        data_.insert(data_.end(), {static_cast<WORD>(x), static_cast<WORD>(y), static_cast<WORD>(width),
                                   static_cast<WORD>(height), id, 0xFFFF, type});
        Text(text);
        data_.push_back(0);   // no creation data
        ++data_[4];           // the item count of the header
    }

    const DLGTEMPLATE* get() const noexcept { return reinterpret_cast<const DLGTEMPLATE*>(data_.data()); }

private:
    void Add32(DWORD value) { data_.insert(data_.end(), {LOWORD(value), HIWORD(value)}); }
    void Text(const wchar_t* text) {
        while (*text) data_.push_back(*text++);
        data_.push_back(0);
    }

    std::vector<WORD> data_;
};

std::wstring ItemText(HWND dialog, int id) {
    std::wstring text(static_cast<size_t>(::GetWindowTextLengthW(::GetDlgItem(dialog, id))) + 1, L'\0');
    text.resize(static_cast<size_t>(::GetDlgItemTextW(dialog, id, text.data(), static_cast<int>(text.size()))));
    return text;
}

void Show(HWND dialog, const ReplaceRequest& request) {
    ::SetDlgItemTextW(dialog, kFind, request.find.c_str());
    ::SetDlgItemTextW(dialog, kReplacement, request.replacement.c_str());
    ::CheckDlgButton(dialog, kWholeWord, request.wholeWord ? BST_CHECKED : BST_UNCHECKED);
    ::CheckDlgButton(dialog, kCaseSensitive, request.caseSensitive ? BST_CHECKED : BST_UNCHECKED);
    ::CheckDlgButton(dialog, kPreserveCase, request.preserveCase ? BST_CHECKED : BST_UNCHECKED);
}

void Read(HWND dialog, ReplaceRequest& request) {
    request.find = ItemText(dialog, kFind);
    request.replacement = ItemText(dialog, kReplacement);
    request.wholeWord = ::IsDlgButtonChecked(dialog, kWholeWord) == BST_CHECKED;
    request.caseSensitive = ::IsDlgButtonChecked(dialog, kCaseSensitive) == BST_CHECKED;
    request.preserveCase = ::IsDlgButtonChecked(dialog, kPreserveCase) == BST_CHECKED;
}

INT_PTR CALLBACK FindReplaceProc(HWND dialog, UINT message, WPARAM w, LPARAM l) {
    if (message == WM_INITDIALOG) ::SetWindowLongPtrW(dialog, DWLP_USER, l);
    auto* request = reinterpret_cast<ReplaceRequest*>(::GetWindowLongPtrW(dialog, DWLP_USER));
    try {
        if (message == WM_INITDIALOG) {
            Show(dialog, *request);
            return TRUE;
        }
        if (message == WM_COMMAND && (LOWORD(w) == IDOK || LOWORD(w) == IDCANCEL)) {
            if (LOWORD(w) == IDOK) Read(dialog, *request);
            ::EndDialog(dialog, LOWORD(w));
            return TRUE;
        }
    } catch (const std::exception&) {
        ::EndDialog(dialog, IDCANCEL);
    }
    return FALSE;
}

bool MatchesAt(const std::wstring& text, size_t at, const ReplaceRequest& request) {
    const std::wstring& find = request.find;
    const int length = static_cast<int>(find.size());
    if (request.caseSensitive ? text.compare(at, find.size(), find) != 0
                              : ::CompareStringOrdinal(text.data() + at, length, find.data(), length, TRUE) != CSTR_EQUAL)
        return false;
    const size_t end = at + find.size();
    return !request.wholeWord ||
           ((at == 0 || !IsWordChar(text[at - 1])) && (end == text.size() || !IsWordChar(text[end])));
}

std::wstring CaseLike(std::wstring_view found, std::wstring replacement) {
    bool upper = false, lower = false;
    for (wchar_t c : found) {
        upper = upper || ::IsCharUpperW(c);
        lower = lower || ::IsCharLowerW(c);
    }
    const DWORD length = static_cast<DWORD>(replacement.size());
    if (upper && !lower) {
        ::CharUpperBuffW(replacement.data(), length);
    } else if (lower && !upper) {
        ::CharLowerBuffW(replacement.data(), length);
    } else if (!found.empty() && ::IsCharUpperW(found.front()) && length > 0) {
        ::CharUpperBuffW(replacement.data(), 1);
    }
    return replacement;
}

} // namespace

bool RunFindReplaceDialog(HWND owner, ReplaceRequest& request) {
    DialogTemplate dialog(L"Replace", 230, 95);
    dialog.Add(0xFFFF, kStatic, SS_LEFT, 7, 9, 50, 8, L"Fi&nd what:");
    dialog.Add(kFind, kEdit, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, 60, 7, 163, 12, L"");
    dialog.Add(0xFFFF, kStatic, SS_LEFT, 7, 27, 50, 8, L"Re&place with:");
    dialog.Add(kReplacement, kEdit, ES_AUTOHSCROLL | WS_BORDER | WS_TABSTOP, 60, 25, 163, 12, L"");
    dialog.Add(kWholeWord, kButton, BS_AUTOCHECKBOX | WS_TABSTOP, 7, 45, 110, 10, L"Match &whole word only");
    dialog.Add(kCaseSensitive, kButton, BS_AUTOCHECKBOX | WS_TABSTOP, 7, 58, 110, 10, L"Match &case");
    dialog.Add(kPreserveCase, kButton, BS_AUTOCHECKBOX | WS_TABSTOP, 7, 71, 110, 10, L"P&reserve case");
    dialog.Add(IDOK, kButton, BS_DEFPUSHBUTTON | WS_TABSTOP, 120, 74, 50, 14, L"Replace &All");
    dialog.Add(IDCANCEL, kButton, BS_PUSHBUTTON | WS_TABSTOP, 173, 74, 50, 14, L"Cancel");
    return ::DialogBoxIndirectParamW(Instance(), dialog.get(), owner, FindReplaceProc, reinterpret_cast<LPARAM>(&request)) ==
           IDOK;
}

size_t ReplaceAll(std::wstring& text, const ReplaceRequest& request) {
    const size_t length = request.find.size();
    if (length == 0) return 0;
    std::wstring result;
    size_t count = 0, copied = 0;
    for (size_t at = 0; at + length <= text.size();) {
        if (!MatchesAt(text, at, request)) {
            ++at;
            continue;
        }
        result.append(text, copied, at - copied);
        result += request.preserveCase ? CaseLike(std::wstring_view(text).substr(at, length), request.replacement)
                                       : request.replacement;
        at += length;
        copied = at;
        ++count;
    }
    if (count > 0) text = result.append(text, copied);
    return count;
}

} // namespace cmax
