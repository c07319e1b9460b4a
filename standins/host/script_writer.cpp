#include "script_writer.h"
#include "script.h"
#include "text.h"
#include "values.h"
#include "frame/errors.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <nlohmann/json.hpp>
#include <set>

namespace host {
namespace {

using json = nlohmann::ordered_json;

std::string Utf8Text(BSTR text) { return Utf8(BstrView(text)); }

json ListJson(const VARIANT& value) {
    SAFEARRAY* array = V_ARRAY(&value);
    LONG lower = 0, upper = -1;
    THROW_IF_FAILED(::SafeArrayGetLBound(array, 1, &lower));
    THROW_IF_FAILED(::SafeArrayGetUBound(array, 1, &upper));
    json list = json::array();
    for (LONG i = lower; i <= upper; ++i) {
        tol::variant element, text;
        THROW_IF_FAILED(::SafeArrayGetElement(array, &i, element.ptr()));
        if (element.type() != VT_EMPTY)
            THROW_IF_FAILED(::VariantChangeTypeEx(text.receive(), element.ptr(), LOCALE_INVARIANT, 0, VT_BSTR));
        list.push_back(element.type() == VT_EMPTY ? std::string() : Utf8Text(V_BSTR(text.ptr())));
    }
    return list;
}

// The JSON form of a value, as ParseScript reads it back; VT_EMPTY has none.
std::optional<json> ValueJson(const VARIANT& value) {
    switch (V_VT(&value)) {
    case VT_EMPTY: return std::nullopt;
    case VT_NULL: return json(nullptr);
    case VT_BSTR: return json(Utf8Text(V_BSTR(&value)));
    case VT_BOOL: return json(V_BOOL(&value) != VARIANT_FALSE);
    case VT_I1: return json(V_I1(&value));
    case VT_I2: return json(V_I2(&value));
    case VT_I4: return json(V_I4(&value));
    case VT_INT: return json(V_INT(&value));
    case VT_I8: return json(V_I8(&value));
    case VT_UI1: return json(V_UI1(&value));
    case VT_UI2: return json(V_UI2(&value));
    // A script holds 32-bit signed integers: an unsigned value keeps its bits (0x80000000 is written as
    // -2147483648, which reads back as the same VT_I4 bits).
    case VT_UI4: return json(static_cast<LONG>(V_UI4(&value)));
    case VT_UINT: return json(static_cast<LONG>(V_UINT(&value)));
    case VT_UI8: return json(V_UI8(&value));
    default: break;
    }
    if (IsVariantArray(value)) return ListJson(value);
    // Anything else (a date, a real number) is kept as its text.
    tol::variant text;
    THROW_IF_FAILED(::VariantChangeTypeEx(text.receive(), const_cast<VARIANT*>(&value), LOCALE_INVARIANT, 0, VT_BSTR));
    return json(Utf8Text(V_BSTR(text.ptr())));
}

// Values of the file's own keys change in place; the map's other names are appended.
void MergeProperties(json& target, const PropertyMap& properties) {
    std::set<std::wstring, NoCaseLess> seen;
    json merged = json::object();
    for (auto& [key, old] : target.items()) {
        const std::wstring name = tol::Widen(key, CP_UTF8);
        seen.insert(name);
        const auto found = properties.find(name);
        if (found == properties.end()) continue;
        std::optional<json> value = ValueJson(found->second.get());
        if (value)
            merged[key] = *value == old ? old : std::move(*value);
        else if (old.is_null())
            merged[key] = old; // null reads as empty already
    }
    for (const auto& [name, value] : properties) {
        if (seen.count(name)) continue;
        if (std::optional<json> text = ValueJson(value.get())) merged[Utf8(name)] = std::move(*text);
    }
    target = std::move(merged);
}

json& TargetStep(json& root, const StepTarget& target) {
    if (!root.is_object() || !root.contains("steps") || !root["steps"].is_array())
        throw ScriptError(L"the script has no list of \"steps\"");
    json& steps = root["steps"];
    if (!target.index) {
        steps.push_back(json{{"action", Utf8(target.action)}});
        return steps.back();
    }
    if (*target.index >= steps.size() || !steps[*target.index].is_object())
        throw ScriptError(L"the script has no step " + std::to_wstring(*target.index + 1) + L" any more");
    return steps[*target.index];
}

void ReplaceFile(const std::wstring& path, const std::string& bytes) {
    const std::wstring temporary = path + L".velmora-edit";
    {
        const tol::unique_file file(
            ::CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        if (!file || !::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) ||
            written != bytes.size()) {
            const HRESULT hr = tol::HResultFromLastError();
            ::DeleteFileW(temporary.c_str());
            throw ScriptError(temporary + L": " + SystemText(hr));
        }
    }
    if (!::MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        const HRESULT hr = tol::HResultFromLastError();
        ::DeleteFileW(temporary.c_str());
        throw ScriptError(path + L": " + SystemText(hr));
    }
}

std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    return text;
}

} // namespace

void WriteStepProperties(const std::wstring& path, const StepTarget& target, const PropertyMap& properties) {
    json root;
    std::string text;
    try {
        text = ReadScriptFile(path);
        root = json::parse(text.begin() + (text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0), text.end());
    } catch (const json::exception& e) {
        throw ScriptError(path + L": " + tol::Widen(e.what(), CP_UTF8));
    } catch (const ScriptError& e) {
        throw ScriptError(path + L": " + TrimLineEnd(e.message()));
    }
    json* step = nullptr;
    try {
        step = &TargetStep(root, target);
    } catch (const ScriptError& e) {
        throw ScriptError(path + L": " + e.message());
    }
    const bool had = step->contains("properties");
    json merged = had && (*step)["properties"].is_object() ? (*step)["properties"] : json::object();
    MergeProperties(merged, properties);
    if (had || !merged.empty()) (*step)["properties"] = std::move(merged);

    // The file keeps its byte order mark and its line ends.
    std::string out = root.dump(2, ' ', false, json::error_handler_t::replace) + "\n";
    if (text.find("\r\n") != std::string::npos) out = ReplaceAll(out, "\n", "\r\n");
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0) out.insert(0, "\xEF\xBB\xBF");
    ReplaceFile(path, out);
}

} // namespace host
