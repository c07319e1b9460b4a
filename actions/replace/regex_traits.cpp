#include "regex_traits.h"
#include <algorithm>
#include <string>

namespace tol {
namespace {

using Implementation = boost::BOOST_REGEX_DETAIL_NS::w32_regex_traits_implementation<wchar_t>;

constexpr unsigned kCodeUnits = 0x10000;
constexpr unsigned kSurrogateFirst = 0xD800;
constexpr unsigned kSurrogateEnd = 0xE000;

// The platform is asked for long runs of code units, except that each surrogate is asked alone, as the library asks
// for one character: two neighbouring surrogates in a run could form a pair.
template <class Map>
void ForEachRun(Map map) {
    map(0u, kSurrogateFirst);
    for (unsigned c = kSurrogateFirst; c < kSurrogateEnd; ++c) map(c, 1u);
    map(kSurrogateEnd, kCodeUnits - kSurrogateEnd);
}

void MapCase(LCID locale, DWORD flags, wchar_t* table) {
    for (unsigned c = 0; c < kCodeUnits; ++c) table[c] = static_cast<wchar_t>(c);
    ForEachRun([&](unsigned first, unsigned count) {
        const std::wstring source(table + first, table + first + count);
        ::LCMapStringW(locale, flags, source.data(), static_cast<int>(count), table + first, static_cast<int>(count));
    });
}

void MapTypes(LCID locale, WORD* table) {
    std::fill(table, table + kCodeUnits, WORD{0});
    std::wstring units(kCodeUnits, L'\0');
    for (unsigned c = 0; c < kCodeUnits; ++c) units[c] = static_cast<wchar_t>(c);
    ForEachRun([&](unsigned first, unsigned count) {
        ::GetStringTypeExW(locale, CT_CTYPE1, units.data() + first, static_cast<int>(count), table + first);
    });
}

std::shared_ptr<const PlatformRegexTraits::Tables> BuildTables(LCID locale) {
    auto tables = std::make_shared<PlatformRegexTraits::Tables>();
    MapCase(locale, LCMAP_LOWERCASE, tables->lower);
    MapCase(locale, LCMAP_UPPERCASE, tables->upper);
    MapTypes(locale, tables->ctype1);
    return tables;
}

bool IsVerticalSpace(wchar_t c) noexcept { return boost::BOOST_REGEX_DETAIL_NS::is_separator(c) || c == L'\v'; }

} // namespace

PlatformRegexTraits::PlatformRegexTraits() : tables_(BuildTables(getloc())) {}

PlatformRegexTraits::locale_type PlatformRegexTraits::imbue(locale_type locale) {
    const locale_type previous = Base::imbue(locale);
    tables_ = BuildTables(getloc());
    return previous;
}

// The Win32 traits' rules, each platform question answered from the table.
bool PlatformRegexTraits::isctype(wchar_t c, char_class_type classes) const noexcept {
    const WORD types = tables_->ctype1[c];
    if (classes & types & Implementation::mask_base) return true;
    if ((classes & Implementation::mask_unicode) && boost::BOOST_REGEX_DETAIL_NS::is_extended(c)) return true;
    if ((classes & Implementation::mask_word) && c == L'_') return true;
    if ((classes & Implementation::mask_vertical) && IsVerticalSpace(c)) return true;
    return (classes & Implementation::mask_horizontal) && (types & C1_SPACE) && !IsVerticalSpace(c);
}

} // namespace tol
