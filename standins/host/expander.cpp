#include "expander.h"
#include "values.h"
#include "frame/errors.h"

namespace host {
namespace {

void CheckLength(const std::wstring& text) {
    if (text.size() > Expander::kLongestText)
        throw tol::truntime_error(L"Expanding the %references% gives a text of more than " +
                                  std::to_wstring(Expander::kLongestText) + L" characters; do variables refer to each other?");
}

void ExpandArrayElements(const Expander& expander, SAFEARRAY* array, bool& unresolved) {
    LONG lower = 0, upper = -1;
    THROW_IF_FAILED(::SafeArrayGetLBound(array, 1, &lower));
    THROW_IF_FAILED(::SafeArrayGetUBound(array, 1, &upper));
    for (LONG i = lower; i <= upper; ++i) {
        tol::variant element;
        THROW_IF_FAILED(::SafeArrayGetElement(array, &i, element.receive()));
        if (element.type() != VT_BSTR) continue;
        tol::variant expanded = MakeText(expander.Expand(BstrView(V_BSTR(element.ptr())), unresolved));
        THROW_IF_FAILED(::SafeArrayPutElement(array, &i, expanded.ptr()));
    }
}

const std::wstring* Find(const VariableMap& variables, const std::wstring& name) {
    const auto found = variables.find(name);
    return found == variables.end() ? nullptr : &found->second;
}

} // namespace

Expander::Expander(VariableMap scriptVariables, VariableMap commandLineVariables)
    : script_(std::move(scriptVariables)), commandLine_(std::move(commandLineVariables)) {}

std::wstring Expander::Expand(std::wstring_view text, bool& unresolved) const {
    std::wstring out;
    ExpandInto(out, text, 0, unresolved);
    return out;
}

void Expander::ExpandInto(std::wstring& out, std::wstring_view text, int depth, bool& unresolved) const {
    size_t pos = 0;
    while (pos < text.size()) {
        const size_t open = text.find(L'%', pos);
        const size_t close = open == std::wstring_view::npos ? open : text.find(L'%', open + 1);
        if (close == std::wstring_view::npos) {
            out.append(text.substr(pos));
            break;
        }
        out.append(text.substr(pos, open - pos));
        const std::wstring name(text.substr(open + 1, close - open - 1));
        if (!name.empty() && AppendReference(out, name, depth, unresolved)) {
            pos = close + 1;
        } else {
            // Not a reference that resolves: keep "%NAME" and let the closing "%" open the next reference.
            if (!name.empty()) unresolved = true;
            out.append(text.substr(open, close - open));
            pos = close;
        }
        CheckLength(out);
    }
}

bool Expander::AppendReference(std::wstring& out, const std::wstring& name, int depth, bool& unresolved) const {
    const std::wstring* value = Find(script_, name);
    if (!value) value = Find(commandLine_, name);
    if (value) {
        if (depth >= kDepthLimit) return false;
        ExpandInto(out, *value, depth + 1, unresolved);
        return true;
    }
    if (std::optional<std::wstring> environment = EnvironmentValue(name)) {
        out.append(*environment);
        return true;
    }
    return false;
}

std::optional<std::wstring> EnvironmentValue(const std::wstring& name) {
    std::wstring value(64, L'\0');
    for (;;) {
        ::SetLastError(ERROR_SUCCESS);
        const DWORD length = ::GetEnvironmentVariableW(name.c_str(), value.data(), static_cast<DWORD>(value.size()));
        if (length == 0 && ::GetLastError() == ERROR_ENVVAR_NOT_FOUND) return std::nullopt;
        if (length < value.size()) {
            value.resize(length);
            return value;
        }
        value.resize(length);
    }
}

tol::variant ExpandValue(const Expander& expander, const VARIANT& value, bool& unresolved) {
    if (V_VT(&value) == VT_BSTR) return MakeText(expander.Expand(BstrView(V_BSTR(&value)), unresolved));
    tol::variant copy = CopyValue(value);
    if (IsVariantArray(copy.get())) ExpandArrayElements(expander, V_ARRAY(copy.ptr()), unresolved);
    return copy;
}

} // namespace host
