#include "script.h"
#include "text.h"
#include "values.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include <nlohmann/json.hpp>
#include <climits>

namespace host {
namespace {

using json = nlohmann::json;

std::wstring Text(const std::string& utf8) { return tol::Widen(utf8, CP_UTF8); }
std::wstring Quoted(const std::wstring& text) { return L"\"" + text + L"\""; }

// Line and column (from 1, in characters) of the byte that the parser stopped at (byte counts from 1).
std::wstring Position(std::string_view text, size_t byte) {
    const size_t offset = std::min(byte > 0 ? byte - 1 : 0, text.size());
    size_t line = 1, column = 1;
    for (size_t i = 0; i < offset; ++i) {
        if (text[i] == '\n') {
            ++line;
            column = 1;
        } else if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) {
            ++column;
        }
    }
    return L"line " + std::to_wstring(line) + L", column " + std::to_wstring(column);
}

// The parser's own words without its prefix ("[json.exception.parse_error.101] parse error at ...: ").
std::wstring ParserReason(const json::parse_error& e) {
    const std::string what = e.what();
    const size_t start = what.find("parse error");
    const size_t colon = start == std::string::npos ? start : what.find(": ", start);
    return Text(colon == std::string::npos ? what : what.substr(colon + 2));
}

json ParseJson(std::string_view text) {
    try {
        return json::parse(text.begin(), text.end());
    } catch (const json::parse_error& e) {
        throw ScriptError(Position(text, e.byte) + L": " + ParserReason(e));
    }
}

tol::variant IntegerValue(const json& value) {
    const bool fits = value.is_number_unsigned() ? value.get<std::uint64_t>() <= INT_MAX
                                                 : value.get<std::int64_t>() >= INT_MIN && value.get<std::int64_t>() <= INT_MAX;
    if (!fits) throw ScriptError(Text(value.dump()) + L" is outside the range of a 32-bit integer");
    tol::variant v;
    V_I4(v.ptr()) = static_cast<LONG>(value.get<std::int64_t>());
    V_VT(v.ptr()) = VT_I4;
    return v;
}

tol::variant ListValue(const json& value) {
    std::vector<std::wstring> texts;
    for (const json& element : value) {
        if (!element.is_string())
            throw ScriptError(L"a list may hold only texts, not " + Text(element.dump()) + L" (element " +
                              std::to_wstring(texts.size() + 1) + L")");
        texts.push_back(Text(element.get<std::string>()));
    }
    return MakeTextArray(texts);
}

tol::variant PropertyValue(const json& value) {
    tol::variant v;
    if (value.is_null()) return v;
    if (value.is_string()) return MakeText(Text(value.get<std::string>()));
    if (value.is_boolean()) {
        V_BOOL(v.ptr()) = value.get<bool>() ? VARIANT_TRUE : VARIANT_FALSE;
        V_VT(v.ptr()) = VT_BOOL;
        return v;
    }
    if (value.is_number_integer()) return IntegerValue(value);
    if (value.is_array()) return ListValue(value);
    if (value.is_number()) throw ScriptError(L"the number " + Text(value.dump()) + L" is not an integer");
    throw ScriptError(L"an object is not a property value; use a text, true/false, an integer, a list of texts or null");
}

// Adds the entry unless the name is empty or already there (in any case); the caller's message names the entry.
template <class Map, class Value>
void AddUnique(Map& map, const std::wstring& name, Value value) {
    if (name.empty()) throw ScriptError(L"a name cannot be empty");
    if (auto found = map.find(name); found != map.end())
        throw ScriptError(L"given twice (also as " + Quoted(found->first) + L")");
    map.emplace(name, std::move(value));
}

PropertyMap ParseProperties(const json& properties) {
    if (!properties.is_object()) throw ScriptError(L"\"properties\" must be an object");
    PropertyMap map;
    for (const auto& [key, value] : properties.items()) {
        const std::wstring name = Text(key);
        try {
            AddUnique(map, name, PropertyValue(value));
        } catch (const ScriptError& e) {
            throw ScriptError(L"property " + Quoted(name) + L": " + e.message());
        }
    }
    return map;
}

const json& Expect(const json& value, bool ok, const wchar_t* key, const wchar_t* what) {
    if (!ok) throw ScriptError(Quoted(key) + L" must be " + what);
    return value;
}

void ParseStepKey(ScriptStep& step, const std::string& key, const json& value) {
    if (key == "name") {
        step.name = Text(Expect(value, value.is_string(), L"name", L"a text").get<std::string>());
    } else if (key == "action") {
        step.action = Text(Expect(value, value.is_string(), L"action", L"a text").get<std::string>());
    } else if (key == "disabled") {
        step.disabled = Expect(value, value.is_boolean(), L"disabled", L"true or false").get<bool>();
    } else if (key == "properties") {
        step.properties = ParseProperties(value);
    } else {
        throw ScriptError(L"unknown key " + Quoted(Text(key)) +
                          L" (a step has \"name\", \"action\", \"disabled\" and "
                          L"\"properties\")");
    }
}

ScriptStep ParseStep(const json& value, size_t number) {
    ScriptStep step;
    if (value.is_object() && value.contains("name") && value["name"].is_string())
        step.name = Text(value["name"].get<std::string>());
    try {
        if (!value.is_object()) throw ScriptError(L"a step must be an object, not " + Text(value.dump()));
        for (const auto& [key, item] : value.items()) ParseStepKey(step, key, item);
        if (step.action.empty()) throw ScriptError(L"the step names no \"action\"");
    } catch (const ScriptError& e) {
        throw ScriptError(StepTitle(number, step) + L": " + e.message());
    }
    return step;
}

VariableMap ParseVariables(const json& variables) {
    if (!variables.is_object()) throw ScriptError(L"\"variables\" must be an object of texts");
    VariableMap map;
    for (const auto& [key, value] : variables.items()) {
        const std::wstring name = Text(key);
        try {
            if (!value.is_string()) throw ScriptError(L"must be a text");
            AddUnique(map, name, Text(value.get<std::string>()));
        } catch (const ScriptError& e) {
            throw ScriptError(L"variable " + Quoted(name) + L": " + e.message());
        }
    }
    return map;
}

std::vector<ScriptStep> ParseSteps(const json& steps) {
    if (!steps.is_array()) throw ScriptError(L"\"steps\" must be a list of steps");
    std::vector<ScriptStep> result;
    for (const json& step : steps) result.push_back(ParseStep(step, result.size() + 1));
    return result;
}

} // namespace

std::string ReadScriptFile(const std::wstring& path) {
    tol::unique_file file(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) throw ScriptError(SystemText(tol::HResultFromLastError()));
    std::string bytes;
    char buffer[16384];
    for (DWORD read = 0;; bytes.append(buffer, read)) {
        if (!::ReadFile(file.get(), buffer, sizeof buffer, &read, nullptr))
            throw ScriptError(SystemText(tol::HResultFromLastError()));
        if (read == 0) return bytes;
    }
}

Script ParseScript(std::string_view text) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
    const json root = ParseJson(text);
    if (!root.is_object()) throw ScriptError(L"a script must be a JSON object with \"steps\"");
    Script script;
    for (const auto& [key, value] : root.items()) {
        if (key == "variables")
            script.variables = ParseVariables(value);
        else if (key == "steps")
            script.steps = ParseSteps(value);
        else
            throw ScriptError(L"unknown key " + Quoted(Text(key)) + L" (a script has \"variables\" and \"steps\")");
    }
    if (!root.contains("steps")) throw ScriptError(L"the script has no \"steps\"");
    return script;
}

Script LoadScript(const std::wstring& path) {
    try {
        return ParseScript(ReadScriptFile(path));
    } catch (const ScriptError& e) {
        throw ScriptError(path + L": " + TrimLineEnd(e.message()));
    }
}

std::wstring StepTitle(size_t number, const ScriptStep& step) {
    std::wstring title = L"step " + std::to_wstring(number);
    if (!step.name.empty()) title += L" (" + step.name + L")";
    return title;
}

} // namespace host
