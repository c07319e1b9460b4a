// What a page's lists hold, for the tests of the action pages.
#pragma once
#include <windows.h>
#include <string>
#include <vector>

namespace test {

inline std::vector<std::wstring> ListItems(HWND combo) {
    std::vector<std::wstring> items;
    const LRESULT count = ::SendMessageW(combo, CB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < count; ++i) {
        std::wstring item(static_cast<size_t>(::SendMessageW(combo, CB_GETLBTEXTLEN, i, 0)) + 1, L'\0');
        item.resize(static_cast<size_t>(::SendMessageW(combo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(item.data()))));
        items.push_back(item);
    }
    return items;
}

inline long Selection(HWND combo) { return static_cast<long>(::SendMessageW(combo, CB_GETCURSEL, 0, 0)); }

} // namespace test
