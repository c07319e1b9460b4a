// Copies and builds the VARIANT values that steps hold.
#pragma once
#include "names.h"
#include <string>
#include <string_view>
#include <vector>

namespace host {

// A deep copy; a by-reference value is copied as the value it refers to. Failures throw comet::com_error.
tol::variant CopyValue(const VARIANT& value);
PropertyMap CopyProperties(const PropertyMap& properties);

// Every character of a BSTR, embedded NULs included; a null BSTR is empty.
inline std::wstring_view BstrView(BSTR text) noexcept {
    return text ? std::wstring_view(text, ::SysStringLen(text)) : std::wstring_view();
}

tol::variant MakeText(std::wstring_view text);
// A one-dimensional SAFEARRAY of VARIANTs, each a BSTR (VT_ARRAY | VT_VARIANT).
tol::variant MakeTextArray(const std::vector<std::wstring>& texts);
bool IsVariantArray(const VARIANT& value) noexcept;

} // namespace host
