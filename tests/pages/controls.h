// What a page's lists hold and what a saved value reads as, for the tests of the action pages.
#pragma once
#include <windows.h>
#include <oleauto.h>
#include "frame/variant.h"
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

// 1 (long), true (bool), "x" (text), ["a",""] (array of VARIANTs).
inline std::wstring Describe(const VARIANT& value) {
    switch (V_VT(&value)) {
    case VT_I4: return std::to_wstring(V_I4(&value));
    case VT_BOOL: return V_BOOL(&value) ? L"true" : L"false";
    case VT_BSTR: return L"\"" + std::wstring(V_BSTR(&value) ? V_BSTR(&value) : L"") + L"\"";
    case VT_ARRAY | VT_VARIANT: {
        std::wstring text = L"[";
        LONG low = 0, high = -1;
        ::SafeArrayGetLBound(V_ARRAY(&value), 1, &low);
        ::SafeArrayGetUBound(V_ARRAY(&value), 1, &high);
        for (LONG i = low; i <= high; ++i) {
            tol::variant element;
            ::SafeArrayGetElement(V_ARRAY(&value), &i, element.receive());
            text += (i > low ? L"," : L"") + Describe(element.get());
        }
        return text + L"]";
    }
    default: return L"<vt " + std::to_wstring(V_VT(&value)) + L">";
    }
}

} // namespace test
