// InstallComponent: one component per class of the DLL's type library (or of the type library named beside it),
// named by its ProgID (the library's name, a dot and the class's name), with DLL set to the path as given.
// Components are written to the store at once; a class already in the application is refreshed.
#pragma once
#include "item.h"
#include <string>

namespace complus {

// Files that cannot be read and classes installed in another application are reported as entries of errors,
// and the call fails with COMADMIN_E_OBJECTERRORS; an unknown application fails with
// COMADMIN_E_OBJECT_DOES_NOT_EXIST and no entry.
void InstallComponents(const std::wstring& application, const std::wstring& dll, const std::wstring& typeLibrary,
                       const std::wstring& proxyStub, ItemList& errors);

} // namespace complus
