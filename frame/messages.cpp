#include "messages.h"
#include "errors.h"
#include "com_ptr.h"
#include "handles.h"

extern "C" IMAGE_DOS_HEADER __ImageBase;

namespace tol {
namespace {
HMODULE g_resourceModule = reinterpret_cast<HMODULE>(&__ImageBase);
constexpr int kResourceTextLimit = 2048;
constexpr int kExceptionTextLimit = 1024;
} // namespace

void SetResourceModule(HMODULE module) noexcept { g_resourceModule = module; }
HMODULE ResourceModule() noexcept { return g_resourceModule; }

DWORD_PTR MessageArg::as_argument() const noexcept {
    if (is_text_) return reinterpret_cast<DWORD_PTR>(text_.c_str());
    return static_cast<DWORD_PTR>(static_cast<LONG_PTR>(number_));
}

std::wstring LoadResourceText(UINT id) {
    wchar_t buffer[kResourceTextLimit];
    const int length = ::LoadStringW(g_resourceModule, id, buffer, kResourceTextLimit);
    return length > 0 ? std::wstring(buffer, length) : std::wstring();
}

std::wstring FormatMessageText(const std::wstring& pattern, std::initializer_list<MessageArg> inserts) {
    std::vector<DWORD_PTR> arguments;
    arguments.reserve(inserts.size() + 1);
    for (const MessageArg& insert : inserts) arguments.push_back(insert.as_argument());
    arguments.push_back(0);

    wchar_t* text = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_STRING | FORMAT_MESSAGE_ARGUMENT_ARRAY, pattern.c_str(), 0, 0,
        reinterpret_cast<LPWSTR>(&text), 0, reinterpret_cast<va_list*>(arguments.data()));
    unique_hlocal owner(text);
    if (length == 0 || !text) return pattern;
    return std::wstring(text, length);
}

std::wstring FormatResourceMessage(UINT id, std::initializer_list<MessageArg> inserts) {
    const std::wstring pattern = LoadResourceText(id);
    return pattern.empty() ? std::wstring() : FormatMessageText(pattern, inserts);
}

std::wstring SystemErrorText(HRESULT code) {
    wchar_t* text = nullptr;
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_FROM_SYSTEM, nullptr,
        static_cast<DWORD>(code), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<LPWSTR>(&text), 0, nullptr);
    unique_hlocal owner(text);
    if (length == 0 || !text) return L"Unknown error";
    std::wstring result(text, length);
    while (!result.empty() && result.back() == L'\n') result.pop_back();
    return result;
}

HRESULT HResultFromLastError() noexcept {
    const DWORD code = ::GetLastError();
    return static_cast<LONG>(code) > 0 ? static_cast<HRESULT>(0x80070000u | (code & 0xFFFFu)) : static_cast<HRESULT>(code);
}

std::wstring Widen(std::string_view text, UINT codePage) {
    if (text.empty()) return {};
    const int length = ::MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    if (length <= 0) return {};
    std::wstring result(length, L'\0');
    ::MultiByteToWideChar(codePage, 0, text.data(), static_cast<int>(text.size()), result.data(), length);
    return result;
}

// A narrow text longer than the exception buffer is cut to what fits (1023 characters).
std::wstring ExceptionMessage(const std::exception& e) {
    try {
        const char* what = e.what();
        if (!what) return {};
        if (::lstrcmpA(what, "tol::texception") == 0) {
            const auto* te = dynamic_cast<const texception*>(&e);
            return te ? te->message() : std::wstring();
        }
        std::wstring text = Widen(what);
        if (text.size() > kExceptionTextLimit - 1) text.resize(kExceptionTextLimit - 1);
        return text;
    } catch (...) {
        return {};
    }
}

std::vector<std::wstring> SplitTokens(std::wstring_view text, std::wstring_view delimiters) {
    std::vector<std::wstring> tokens;
    size_t start = 0;
    while (start < text.size()) {
        const size_t end = text.find_first_of(delimiters, start);
        const size_t stop = end == std::wstring_view::npos ? text.size() : end;
        if (stop > start) tokens.emplace_back(text.substr(start, stop - start));
        start = stop + 1;
    }
    return tokens;
}

void ThrowLibraryLoadFailure(const wchar_t* file) {
    const HRESULT hr = HResultFromLastError();
    SetErrorDescription(FormatMessageText(L"%1: %2", {file, SystemErrorText(hr)}));
    com_ptr<IErrorInfo> info;
    if (::GetErrorInfo(0, info.put()) != S_OK) info.reset();
    throw comet::com_error(hr, std::move(info));
}

} // namespace tol
