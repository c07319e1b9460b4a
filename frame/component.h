// The component objects: the action component shared by the twelve actions, and the class object.
#pragma once
#include "ActionUI.h"
#include "classes.h"
#include <ocidl.h>

namespace tol {

// Creates the component of a class and asks it for an interface; aggregation is the caller's to refuse.
HRESULT CreateComponent(const ClassEntry& entry, REFIID iid, void** object) noexcept;

// Returns the class object of a class, asked for the requested interface.
HRESULT GetClassObject(const ClassEntry& entry, REFIID iid, void** object) noexcept;

} // namespace tol
