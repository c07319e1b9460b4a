#include "language.h"
#include <algorithm>
#include <cstring>
#include <cwctype>

namespace cmax {
namespace {

enum List { kKeywords, kOperators, kLineComments, kCommentStarts, kCommentEnds, kScopeOpen, kScopeClose, kStrings,
            kWords1, kWords2, kWords3, kListCount };

constexpr LPCWSTR CM_LANGUAGE::*kListMembers[kListCount] = {
    &CM_LANGUAGE::keywords,           &CM_LANGUAGE::operators,         &CM_LANGUAGE::singleLineComments,
    &CM_LANGUAGE::multiLineCommentStart, &CM_LANGUAGE::multiLineCommentEnd, &CM_LANGUAGE::scopeKeywordsOpen,
    &CM_LANGUAGE::scopeKeywordsClose, &CM_LANGUAGE::stringDelimiters, &CM_LANGUAGE::words1,
    &CM_LANGUAGE::words2,             &CM_LANGUAGE::words3,
};

// The lists whose items are coloured wherever they occur, and their classes.
constexpr std::pair<List, BYTE> kColoured[] = {
    {kKeywords, CMT_KEYWORD}, {kOperators, CMT_OPERATOR}, {kScopeOpen, CMT_SCOPEKEYWORD}, {kScopeClose, CMT_SCOPEKEYWORD},
    {kWords1, CMT_WORDS1},    {kWords2, CMT_WORDS2},      {kWords3, CMT_WORDS3},
};

std::vector<std::wstring> SplitList(LPCWSTR text) {
    std::vector<std::wstring> items;
    if (!text) return items;
    std::wstring_view rest(text);
    while (!rest.empty()) {
        const size_t end = rest.find(L'\n');
        std::wstring_view item = rest.substr(0, end);
        if (!item.empty() && item.back() == L'\r') item.remove_suffix(1);
        if (!item.empty()) items.emplace_back(item);
        if (end == std::wstring_view::npos) break;
        rest.remove_prefix(end + 1);
    }
    return items;
}

} // namespace

bool IsWordChar(wchar_t c) noexcept { return c == L'_' || ::IsCharAlphaNumericW(c); }

Language::Language(const CM_LANGUAGE& record)
    : style_(record.style), caseSensitive_(record.caseSensitive != FALSE), escape_(record.escapeChar),
      terminator_(record.terminatorChar) {
    for (int i = 0; i < kListCount; ++i) lists_[i] = SplitList(record.*kListMembers[i]);
    valid_ = style_ == CMLS_PROCEDURAL && lists_[kCommentStarts].size() == lists_[kCommentEnds].size();
    for (const auto& [list, tokenClass] : kColoured)
        for (const std::wstring& text : lists_[list]) items_.push_back({text, tokenClass});
    std::stable_sort(items_.begin(), items_.end(), [](const Item& a, const Item& b) { return a.text.size() > b.text.size(); });
    for (size_t i = 0; i < items_.size(); ++i) byFirst_[Fold(items_[i].text.front())].push_back(i);
}

wchar_t Language::Fold(wchar_t c) const noexcept { return caseSensitive_ ? c : static_cast<wchar_t>(std::towlower(c)); }

// An item matches where its characters are, and a word only where no word character joins it on either side.
bool Language::Matches(std::wstring_view line, size_t at, std::wstring_view item) const {
    if (item.empty() || at + item.size() > line.size()) return false;
    for (size_t i = 0; i < item.size(); ++i)
        if (Fold(line[at + i]) != Fold(item[i])) return false;
    if (IsWordChar(item.front()) && at > 0 && IsWordChar(line[at - 1])) return false;
    const size_t end = at + item.size();
    return !(IsWordChar(item.back()) && end < line.size() && IsWordChar(line[end]));
}

int Language::MatchAny(std::wstring_view line, size_t at, const std::vector<std::wstring>& items) const {
    for (size_t i = 0; i < items.size(); ++i)
        if (Matches(line, at, items[i])) return static_cast<int>(i);
    return -1;
}

size_t Language::Find(std::wstring_view line, size_t from, std::wstring_view item) const {
    for (size_t at = from; at + item.size() <= line.size(); ++at)
        if (Matches(line, at, item)) return at;
    return std::wstring_view::npos;
}

const Language::Item* Language::MatchItem(std::wstring_view line, size_t at) const {
    const auto found = byFirst_.find(Fold(line[at]));
    if (found == byFirst_.end()) return nullptr;
    for (size_t index : found->second)
        if (Matches(line, at, items_[index].text)) return &items_[index];
    return nullptr;
}

size_t Language::StringEnd(std::wstring_view line, size_t at, std::wstring_view delimiter) const {
    while (at < line.size()) {
        if (escape_ && line[at] == escape_) {
            at += 2;
        } else if (line.compare(at, delimiter.size(), delimiter) == 0) {
            return at + delimiter.size();
        } else {
            ++at;
        }
    }
    return line.size();
}

int Language::ScanLine(std::wstring_view line, int state, BYTE* classes) const {
    const auto mark = [classes](size_t from, size_t to, BYTE tokenClass) {
        if (classes) std::fill(classes + from, classes + to, tokenClass);
    };
    if (state < 0 || static_cast<size_t>(state) > lists_[kCommentEnds].size()) state = 0;   // another language's
    size_t at = 0;
    while (at < line.size() || state > 0) {
        if (state > 0) {   // inside a multi-line comment
            const std::wstring& end = lists_[kCommentEnds][state - 1];
            const size_t found = Find(line, at, end);
            const size_t stop = found == std::wstring_view::npos ? line.size() : found + end.size();
            mark(at, stop, CMT_COMMENT);
            if (found == std::wstring_view::npos) return state;
            at = stop;
            state = 0;
            continue;
        }
        if (const int start = MatchAny(line, at, lists_[kCommentStarts]); start >= 0) {
            mark(at, at + lists_[kCommentStarts][start].size(), CMT_COMMENT);
            at += lists_[kCommentStarts][start].size();
            state = start + 1;
            continue;
        }
        if (MatchAny(line, at, lists_[kLineComments]) >= 0) {
            mark(at, line.size(), CMT_COMMENT);
            return 0;
        }
        size_t next = at + 1;
        BYTE tokenClass = CMT_TEXT;
        if (const int quote = MatchAny(line, at, lists_[kStrings]); quote >= 0) {
            next = StringEnd(line, at + lists_[kStrings][quote].size(), lists_[kStrings][quote]);
            tokenClass = CMT_STRING;
        } else if (std::iswdigit(line[at]) && (at == 0 || !IsWordChar(line[at - 1]))) {
            while (next < line.size() && (IsWordChar(line[next]) || line[next] == L'.')) ++next;
            tokenClass = CMT_NUMBER;
        } else if (const Item* item = MatchItem(line, at)) {
            next = at + item->text.size();
            tokenClass = item->tokenClass;
        } else if (terminator_ && line[at] == terminator_) {
            tokenClass = CMT_OPERATOR;
        } else if (IsWordChar(line[at])) {
            while (next < line.size() && IsWordChar(line[next])) ++next;
        }
        mark(at, std::min(next, line.size()), tokenClass);
        at = next;
    }
    return 0;
}

std::wstring_view Language::Normalized(std::wstring_view word) const {
    if (caseSensitive_ || word.empty()) return {};
    const auto found = byFirst_.find(Fold(word.front()));
    if (found == byFirst_.end()) return {};
    for (size_t index : found->second) {
        const std::wstring& text = items_[index].text;
        if (text.size() == word.size() && Matches(word, 0, text)) return text;
    }
    return {};
}

bool Language::OpensScope(std::wstring_view line) const {
    const size_t first = line.find_first_not_of(L" \t");
    const size_t last = line.find_last_not_of(L" \t");
    if (first == std::wstring_view::npos) return false;
    line = line.substr(0, last + 1);
    if (MatchAny(line, first, lists_[kScopeOpen]) >= 0) return true;
    if (MatchAny(line, first, lists_[kScopeClose]) >= 0) return false;
    for (const std::wstring& item : lists_[kScopeOpen])
        if (item.size() <= line.size() - first && Matches(line, line.size() - item.size(), item)) return true;
    return false;
}

DWORD Language::CopyDefinition(BYTE* buffer, DWORD size) const {
    std::wstring texts;
    size_t offsets[kListCount];
    for (int i = 0; i < kListCount; ++i) {
        offsets[i] = texts.size();
        for (const std::wstring& item : lists_[i]) texts.append(item).push_back(L'\n');
        if (!lists_[i].empty()) texts.back() = L'\0';
    }
    const size_t needed = sizeof(CM_LANGUAGE) + texts.size() * sizeof(wchar_t);
    if (!buffer || size < needed) return static_cast<DWORD>(needed);

    BYTE* const textStart = buffer + sizeof(CM_LANGUAGE);
    CM_LANGUAGE record{};
    record.style = style_;
    record.caseSensitive = caseSensitive_;
    record.escapeChar = escape_;
    record.terminatorChar = terminator_;
    for (int i = 0; i < kListCount; ++i)
        record.*kListMembers[i] = lists_[i].empty() ? nullptr : reinterpret_cast<LPCWSTR>(textStart) + offsets[i];
    std::memcpy(buffer, &record, sizeof record);
    std::memcpy(textStart, texts.data(), texts.size() * sizeof(wchar_t));
    return static_cast<DWORD>(needed);
}

} // namespace cmax
