// What all controls of the process share: the registered languages, the key bindings and the macros.
#pragma once
#include "hotkeys.h"
#include "language.h"
#include <memory>
#include <string>

namespace cmax {

HINSTANCE Instance() noexcept;

// The language registered under name (compared without case), or null.
std::shared_ptr<const Language> FindLanguage(const std::wstring& name);

int FindCommand(Stroke first, Stroke second);
bool StartsChord(Stroke first);

} // namespace cmax
