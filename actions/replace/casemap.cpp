#include "casemap.h"

namespace tol {
namespace {

constexpr unsigned kCodeUnits = 0x10000;
constexpr unsigned kSurrogateFirst = 0xD800;
constexpr unsigned kSurrogateEnd = 0xE000;

// Every code unit in order, mapped in two runs around the surrogates so that no two units form a pair.
std::unique_ptr<wchar_t[]> MapAll(DWORD (WINAPI* map)(LPWSTR, DWORD)) {
    std::unique_ptr<wchar_t[]> table(new wchar_t[kCodeUnits]);
    for (unsigned c = 0; c < kCodeUnits; ++c) table[c] = static_cast<wchar_t>(c);
    map(table.get(), kSurrogateFirst);
    map(table.get() + kSurrogateEnd, kCodeUnits - kSurrogateEnd);
    return table;
}

} // namespace

CaseMap::CaseMap() : lower_(MapAll(::CharLowerBuffW)), upper_(MapAll(::CharUpperBuffW)) {}

} // namespace tol
