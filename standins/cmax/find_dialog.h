// The find and replace dialog, and replacing every occurrence of a text.
#pragma once
#include <windows.h>
#include <string>

namespace cmax {

struct ReplaceRequest {
    std::wstring find, replacement;
    bool wholeWord = false;
    bool caseSensitive = false;
    bool preserveCase = false;   // the replacement takes the case of the text found: upper, lower or capitalised
};

// Shows the dialog over owner, starting from request; false when the user cancels, else request holds the choice.
bool RunFindReplaceDialog(HWND owner, ReplaceRequest& request);

// Replaces every occurrence in text; answers how many were replaced.
size_t ReplaceAll(std::wstring& text, const ReplaceRequest& request);

} // namespace cmax
