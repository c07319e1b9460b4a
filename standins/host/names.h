// Names of properties and variables compare without regard to case, as environment variable names do.
#pragma once
#include "frame/variant.h"
#include <windows.h>
#include <map>
#include <string>

namespace host {

struct NoCaseLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const noexcept {
        return ::CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(), static_cast<int>(b.size()), TRUE) ==
               CSTR_LESS_THAN;
    }
};

using VariableMap = std::map<std::wstring, std::wstring, NoCaseLess>;
using PropertyMap = std::map<std::wstring, tol::variant, NoCaseLess>;

} // namespace host
