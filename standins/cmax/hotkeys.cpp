#include "hotkeys.h"
#include <algorithm>
#include <cstring>

namespace cmax {
namespace {

constexpr WORD kCommands[] = {CMD_COPY, CMD_CUT, CMD_PASTE, CMD_UNDO, CMD_REDO, CMD_SELECTALL, CMD_FINDREPLACE};

// The stored record: "CMHK", the number of bindings, then per binding modifiers and key of both strokes and the
// command (little-endian), two bytes of padding.
constexpr BYTE kMagic[4] = {'C', 'M', 'H', 'K'};
constexpr DWORD kHeaderSize = 8;
constexpr DWORD kEntrySize = 8;

constexpr BYTE kModifierMask = CM_MOD_SHIFT | CM_MOD_CTRL | CM_MOD_ALT;

bool ValidStrokes(Stroke first, Stroke second) noexcept {
    return first.key != 0 && !(first.modifiers & ~kModifierMask) && !(second.modifiers & ~kModifierMask) &&
           (second.key != 0 || second.modifiers == 0);
}

// A key record in the table's terms; false when it holds no valid key.
bool ToStrokes(const CM_HOTKEY& key, Stroke& first, Stroke& second) noexcept {
    if (key.virtualKey1 > 0xFE || key.virtualKey2 > 0xFE) return false;
    first = {key.modifiers1, static_cast<BYTE>(key.virtualKey1)};
    second = {key.modifiers2, static_cast<BYTE>(key.virtualKey2)};
    return ValidStrokes(first, second);
}

} // namespace

bool IsCommand(WORD command) noexcept { return std::find(std::begin(kCommands), std::end(kCommands), command) != std::end(kCommands); }

HotKeyTable::HotKeyTable() {
    bindings_ = {
        {{CM_MOD_CTRL, 'C'}, {}, CMD_COPY},         {{CM_MOD_CTRL, VK_INSERT}, {}, CMD_COPY},
        {{CM_MOD_CTRL, 'X'}, {}, CMD_CUT},          {{CM_MOD_SHIFT, VK_DELETE}, {}, CMD_CUT},
        {{CM_MOD_CTRL, 'V'}, {}, CMD_PASTE},        {{CM_MOD_SHIFT, VK_INSERT}, {}, CMD_PASTE},
        {{CM_MOD_CTRL, 'Z'}, {}, CMD_UNDO},         {{CM_MOD_ALT, VK_BACK}, {}, CMD_UNDO},
        {{CM_MOD_CTRL, 'Y'}, {}, CMD_REDO},
    };
}

LONG HotKeyTable::Bind(const CM_HOTKEY& key, WORD command) {
    Stroke first, second;
    if (!ToStrokes(key, first, second) || !IsCommand(command)) return CME_BADARGUMENT;
    for (Binding& binding : bindings_) {
        if (binding.first == first && binding.second == second) {
            binding.command = command;
            return CME_SUCCESS;
        }
    }
    bindings_.push_back({first, second, command});
    return CME_SUCCESS;
}

LONG HotKeyTable::Unbind(const CM_HOTKEY& key) {
    Stroke first, second;
    if (!ToStrokes(key, first, second)) return CME_BADARGUMENT;
    const auto found = std::find_if(bindings_.begin(), bindings_.end(),
                                    [&](const Binding& b) { return b.first == first && b.second == second; });
    if (found == bindings_.end()) return CME_NOTFOUND;
    bindings_.erase(found);
    return CME_SUCCESS;
}

DWORD HotKeyTable::Serialize(BYTE* buffer, DWORD size) const {
    const DWORD needed = kHeaderSize + kEntrySize * static_cast<DWORD>(bindings_.size());
    if (!buffer || size < needed) return needed;
    const DWORD count = static_cast<DWORD>(bindings_.size());
    std::memcpy(buffer, kMagic, 4);
    std::memcpy(buffer + 4, &count, 4);
    BYTE* entry = buffer + kHeaderSize;
    for (const Binding& b : bindings_) {
        const BYTE bytes[kEntrySize] = {b.first.modifiers, b.first.key, b.second.modifiers, b.second.key,
                                        static_cast<BYTE>(b.command & 0xFF), static_cast<BYTE>(b.command >> 8), 0, 0};
        std::memcpy(entry, bytes, kEntrySize);
        entry += kEntrySize;
    }
    return needed;
}

LONG HotKeyTable::Deserialize(const BYTE* buffer, DWORD size) {
    if (!buffer || size < kHeaderSize || std::memcmp(buffer, kMagic, 4) != 0) return CME_BADARGUMENT;
    DWORD count = 0;
    std::memcpy(&count, buffer + 4, 4);
    if (count > (size - kHeaderSize) / kEntrySize || size != kHeaderSize + count * kEntrySize) return CME_BADARGUMENT;
    std::vector<Binding> bindings;
    for (const BYTE* entry = buffer + kHeaderSize; count-- > 0; entry += kEntrySize) {
        const Binding b{{entry[0], entry[1]}, {entry[2], entry[3]}, static_cast<WORD>(entry[4] | entry[5] << 8)};
        if (!ValidStrokes(b.first, b.second) || !IsCommand(b.command)) return CME_BADARGUMENT;
        bindings.push_back(b);
    }
    bindings_ = std::move(bindings);
    return CME_SUCCESS;
}

int HotKeyTable::Find(Stroke first, Stroke second) const noexcept {
    for (const Binding& b : bindings_)
        if (b.first == first && b.second == second) return b.command;
    return -1;
}

bool HotKeyTable::StartsChord(Stroke first) const noexcept {
    return std::any_of(bindings_.begin(), bindings_.end(), [&](const Binding& b) { return b.first == first && b.second.key; });
}

} // namespace cmax
