// Key bindings: keys (one or two strokes) bound to commands, with the record that stores them all.
#pragma once
#include "codemax.h"
#include <vector>

namespace cmax {

struct Stroke {
    BYTE modifiers = 0;   // CM_MOD_
    BYTE key = 0;         // virtual key; 0: none
    bool operator==(const Stroke& other) const noexcept { return modifiers == other.modifiers && key == other.key; }
};

bool IsCommand(WORD command) noexcept;

class HotKeyTable {
public:
    HotKeyTable();   // the default bindings: clipboard and undo keys

    LONG Bind(const CM_HOTKEY& key, WORD command);
    LONG Unbind(const CM_HOTKEY& key);
    DWORD Serialize(BYTE* buffer, DWORD size) const;
    LONG Deserialize(const BYTE* buffer, DWORD size);

    // The command of a one-stroke binding (second.key 0) or a two-stroke binding; -1 when none.
    int Find(Stroke first, Stroke second) const noexcept;
    // Whether first is the first stroke of a two-stroke binding.
    bool StartsChord(Stroke first) const noexcept;

private:
    struct Binding {
        Stroke first, second;
        WORD command;
    };
    std::vector<Binding> bindings_;
};

} // namespace cmax
