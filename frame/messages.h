// Texts: the string table, insert formatting, system error texts and exception texts.
#pragma once
#include <windows.h>
#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace tol {

// One insert of a formatted message: a text ("%1") or a signed integer ("%1!d!", "%1!x!").
class MessageArg {
public:
    MessageArg(std::wstring_view text) : text_(text), is_text_(true) {}
    MessageArg(const wchar_t* text) : text_(text ? text : L""), is_text_(true) {}
    MessageArg(const std::wstring& text) : text_(text), is_text_(true) {}
    MessageArg(long value) : number_(value) {}
    MessageArg(int value) : number_(value) {}
    MessageArg(unsigned long value) : number_(static_cast<long>(value)) {}

    DWORD_PTR as_argument() const noexcept;

private:
    std::wstring text_;
    long number_ = 0;
    bool is_text_ = false;
};

// The module whose resources hold the texts; the DLL records itself when it is loaded.
void SetResourceModule(HMODULE module) noexcept;
HMODULE ResourceModule() noexcept;

std::wstring LoadResourceText(UINT id);
std::wstring FormatMessageText(const std::wstring& pattern, std::initializer_list<MessageArg> inserts = {});
std::wstring FormatResourceMessage(UINT id, std::initializer_list<MessageArg> inserts = {});
std::wstring SystemErrorText(HRESULT code);
[[nodiscard]] HRESULT HResultFromLastError() noexcept;
std::wstring ExceptionMessage(const std::exception& e);

// A library or one of its functions that could not be loaded: the last error as comet::com_error, with the
// description "FILE: system text".
[[noreturn]] void ThrowLibraryLoadFailure(const wchar_t* file);

// The non-empty runs of text between any of the delimiter characters, in order; nothing is trimmed.
std::vector<std::wstring> SplitTokens(std::wstring_view text, std::wstring_view delimiters);

std::wstring Widen(std::string_view text, UINT codePage = CP_ACP);

} // namespace tol
