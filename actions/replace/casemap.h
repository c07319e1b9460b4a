// The platform's lower- and upper-case form of every UTF-16 code unit, asked once and then looked up.
#pragma once
#include <windows.h>
#include <memory>

namespace tol {

class CaseMap {
public:
    // Asks CharLowerBuffW and CharUpperBuffW for the whole range at once: the answers are those of CharLowerW and
    // CharUpperW for each single character. Surrogate code units map to themselves.
    CaseMap();

    wchar_t Lower(wchar_t c) const noexcept { return lower_[c]; }
    wchar_t Upper(wchar_t c) const noexcept { return upper_[c]; }

private:
    std::unique_ptr<wchar_t[]> lower_;
    std::unique_ptr<wchar_t[]> upper_;
};

} // namespace tol
