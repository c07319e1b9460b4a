// A registered language: its word lists and markers, and the scanner that gives each character a token class.
#pragma once
#include "codemax.h"
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace cmax {

bool IsWordChar(wchar_t c) noexcept;

class Language {
public:
    // Copies the record; false in valid() when it is not one the control can use.
    explicit Language(const CM_LANGUAGE& record);

    bool valid() const noexcept { return valid_; }
    bool caseSensitive() const noexcept { return caseSensitive_; }

    // Classes the characters of one line (CMT_ per character) when classes is not null. state is 0 outside a
    // multi-line comment, else the number of the open comment's start marker; answers the state after the line.
    int ScanLine(std::wstring_view line, int state, BYTE* classes) const;

    // The spelling of the keyword or scope keyword that equals word but for case; empty when there is none.
    std::wstring_view Normalized(std::wstring_view word) const;

    // Whether a line (its text up to the caret) opens a scope: it starts with a scope opening, or ends with one
    // and does not start with a scope closing.
    bool OpensScope(std::wstring_view line) const;

    // The record, its texts after it in the same buffer (see CMGETLANGUAGEDEF); answers the size needed and
    // copies only when size is large enough.
    DWORD CopyDefinition(BYTE* buffer, DWORD size) const;

private:
    struct Item {
        std::wstring text;
        BYTE tokenClass;
    };

    const Item* MatchItem(std::wstring_view line, size_t at) const;
    bool Matches(std::wstring_view line, size_t at, std::wstring_view item) const;
    int MatchAny(std::wstring_view line, size_t at, const std::vector<std::wstring>& items) const;
    size_t Find(std::wstring_view line, size_t from, std::wstring_view item) const;
    size_t StringEnd(std::wstring_view line, size_t at, std::wstring_view delimiter) const;
    wchar_t Fold(wchar_t c) const noexcept;

    bool valid_ = false;
    DWORD style_ = 0;
    bool caseSensitive_ = false;
    // The lists in record order: keywords, operators, single-line comments, comment starts, comment ends, scope
    // openings, scope closings, string delimiters, words 1 to 3.
    std::vector<std::wstring> lists_[11];
    wchar_t escape_ = 0;
    wchar_t terminator_ = 0;
    std::vector<Item> items_;                           // the coloured words and symbols, longest first
    std::map<wchar_t, std::vector<size_t>> byFirst_;    // items_ by folded first character, longest first
};

} // namespace cmax
