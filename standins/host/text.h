// Small text helpers of the host: system texts without their line end, UTF-8, HRESULTs as hex.
#pragma once
#include <windows.h>
#include <string>
#include <string_view>

namespace host {

std::wstring TrimLineEnd(std::wstring text);
// The system's text for the code, without the CR LF that system texts end in.
std::wstring SystemText(HRESULT code);
std::string Utf8(std::wstring_view text);
// "0x80004005"
std::wstring HexCode(HRESULT code);

} // namespace host
