// The library's entry points: the window class, registered while the library is loaded, and the functions that
// it exports by ordinal.
#include "editor.h"
#include "shared.h"
#include <array>
#include <map>
#include <mutex>
#include <new>

namespace cmax {
namespace {

HINSTANCE g_instance = nullptr;

struct NameLess {
    bool operator()(const std::wstring& a, const std::wstring& b) const noexcept {
        return ::CompareStringOrdinal(a.c_str(), static_cast<int>(a.size()), b.c_str(), static_cast<int>(b.size()), TRUE) ==
               CSTR_LESS_THAN;
    }
};

struct SharedState {
    std::mutex lock;
    std::map<std::wstring, std::shared_ptr<const Language>, NameLess> languages;
    HotKeyTable hotkeys;
    std::array<std::vector<BYTE>, CM_MAX_MACROS> macros;
};

SharedState& Shared() {
    static SharedState state;
    return state;
}

bool ValidName(LPCWSTR name) noexcept { return name && *name; }

// Runs body under the shared lock; an allocation failure becomes the given answer.
template <class Result, class Body>
Result Locked(Result onFailure, Body body) noexcept {
    try {
        const std::lock_guard<std::mutex> guard(Shared().lock);
        return body(Shared());
    } catch (const std::exception&) {
        return onFailure;
    }
}

} // namespace

HINSTANCE Instance() noexcept { return g_instance; }

std::shared_ptr<const Language> FindLanguage(const std::wstring& name) {
    if (name.empty()) return nullptr;
    const std::lock_guard<std::mutex> guard(Shared().lock);
    const auto found = Shared().languages.find(name);
    return found == Shared().languages.end() ? nullptr : found->second;
}

int FindCommand(Stroke first, Stroke second) {
    const std::lock_guard<std::mutex> guard(Shared().lock);
    return Shared().hotkeys.Find(first, second);
}

bool StartsChord(Stroke first) {
    const std::lock_guard<std::mutex> guard(Shared().lock);
    return Shared().hotkeys.StartsChord(first);
}

} // namespace cmax

using namespace cmax;

extern "C" {

LONG WINAPI CMRegisterLanguage(LPCWSTR name, const CM_LANGUAGE* language) {
    if (!ValidName(name) || !language) return CME_BADARGUMENT;
    return Locked<LONG>(CME_OUTOFMEMORY, [&](SharedState& state) -> LONG {
        auto parsed = std::make_shared<const Language>(*language);
        if (!parsed->valid()) return CME_BADARGUMENT;
        state.languages[name] = std::move(parsed);
        return CME_SUCCESS;
    });
}

LONG WINAPI CMUnregisterLanguage(LPCWSTR name) {
    if (!ValidName(name)) return CME_BADARGUMENT;
    return Locked<LONG>(CME_OUTOFMEMORY,
                        [&](SharedState& state) -> LONG { return state.languages.erase(name) ? CME_SUCCESS : CME_NOTFOUND; });
}

DWORD WINAPI CMGetLanguageDef(LPCWSTR name, BYTE* buffer, DWORD size) {
    if (!ValidName(name)) return 0;
    return Locked<DWORD>(0, [&](SharedState& state) -> DWORD {
        const auto found = state.languages.find(name);
        return found == state.languages.end() ? 0 : found->second->CopyDefinition(buffer, size);
    });
}

DWORD WINAPI CMGetHotKeys(BYTE* buffer, DWORD size) {
    return Locked<DWORD>(0, [&](SharedState& state) { return state.hotkeys.Serialize(buffer, size); });
}

LONG WINAPI CMSetHotKeys(const BYTE* buffer, DWORD size) {
    return Locked<LONG>(CME_OUTOFMEMORY, [&](SharedState& state) { return state.hotkeys.Deserialize(buffer, size); });
}

LONG WINAPI CMRegisterHotKey(const CM_HOTKEY* key, WORD command) {
    if (!key) return CME_BADARGUMENT;
    return Locked<LONG>(CME_OUTOFMEMORY, [&](SharedState& state) { return state.hotkeys.Bind(*key, command); });
}

LONG WINAPI CMUnregisterHotKey(const CM_HOTKEY* key) {
    if (!key) return CME_BADARGUMENT;
    return Locked<LONG>(CME_OUTOFMEMORY, [&](SharedState& state) { return state.hotkeys.Unbind(*key); });
}

DWORD WINAPI CMGetMacro(int index, BYTE* buffer, DWORD size) {
    if (index < 0 || index >= CM_MAX_MACROS) return 0;
    return Locked<DWORD>(0, [&](SharedState& state) -> DWORD {
        const std::vector<BYTE>& macro = state.macros[index];
        if (buffer && size >= macro.size()) std::copy(macro.begin(), macro.end(), buffer);
        return static_cast<DWORD>(macro.size());
    });
}

LONG WINAPI CMSetMacro(int index, const BYTE* buffer, DWORD size) {
    if (index < 0 || index >= CM_MAX_MACROS) return CME_BADARGUMENT;
    return Locked<LONG>(CME_OUTOFMEMORY, [&](SharedState& state) -> LONG {
        if (buffer) {
            state.macros[index].assign(buffer, buffer + size);
        } else {
            state.macros[index].clear();
        }
        return CME_SUCCESS;
    });
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        g_instance = instance;
        ::DisableThreadLibraryCalls(instance);
        return RegisterEditorClass(instance) ? TRUE : FALSE;
    }
    if (reason == DLL_PROCESS_DETACH) ::UnregisterClassW(CODEMAX_CLASS, instance);
    return TRUE;
}

} // extern "C"
