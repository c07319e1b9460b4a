// Boost's Win32 regular-expression traits with the platform's answers asked once per expression: the library asks
// LCMapStringW or GetStringTypeExW for every character it folds or classifies, which makes a case-insensitive or
// class-heavy expression over a large file slow. These traits ask for the whole UTF-16 range up front and look the
// answers up; what they answer is what the Win32 traits answer.
#pragma once
#include <windows.h>
#include <boost/regex.hpp>
#include <boost/regex/v5/w32_regex_traits.hpp>
#include <memory>

namespace tol {

class PlatformRegexTraits : public boost::w32_regex_traits<wchar_t> {
    using Base = boost::w32_regex_traits<wchar_t>;

public:
    PlatformRegexTraits();

    using Base::translate;
    wchar_t translate(wchar_t c, bool icase) const noexcept { return icase ? tables_->lower[c] : c; }
    wchar_t translate_nocase(wchar_t c) const noexcept { return tables_->lower[c]; }
    wchar_t tolower(wchar_t c) const noexcept { return tables_->lower[c]; }
    wchar_t toupper(wchar_t c) const noexcept { return tables_->upper[c]; }
    bool isctype(wchar_t c, char_class_type classes) const noexcept;
    locale_type imbue(locale_type locale);

    struct Tables {
        wchar_t lower[0x10000];
        wchar_t upper[0x10000];
        WORD ctype1[0x10000];  // CT_CTYPE1 bits
    };

private:
    std::shared_ptr<const Tables> tables_;
};

} // namespace tol
