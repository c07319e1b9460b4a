// Conversions between the narrow texts of the command blocks and archive names and the wide texts of the file system.
#pragma once
#include "format/entry.h"
#include <windows.h>
#include <string>
#include <string_view>

namespace zipwin {

constexpr UINT kOemNames = 437;  // the code page of archive names that are not marked UTF-8

std::wstring ToWide(std::string_view text, UINT codePage);
// Characters that the code page lacks become its default character.
std::string ToNarrow(std::wstring_view text, UINT codePage);

bool IsAscii(std::wstring_view text) noexcept;

// The code page of an entry's name: UTF-8 when the entry is marked so; also when it was made on Unix or macOS and its
// bytes are valid UTF-8 (such tools store the names as their locale has them, which is UTF-8 there); otherwise
// otherNames.
UINT NameCodePage(const zipformat::Entry& entry, UINT otherNames) noexcept;

// Upper case without regard to locale, for comparing names as the file system does.
std::wstring FoldCase(std::wstring_view text);

} // namespace zipwin
