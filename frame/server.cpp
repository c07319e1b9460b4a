// The component server's entry points: class objects, unloading, and process attach.
#include "classes.h"
#include "component.h"
#include "messages.h"
#include "module.h"

using namespace tol;

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    const ClassEntry* entry = FindClass(clsid);
    return entry ? GetClassObject(*entry, iid, object) : CLASS_E_CLASSNOTAVAILABLE;
}

STDAPI DllCanUnloadNow() { return IsModuleLocked() ? S_FALSE : S_OK; }

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, void*) {
    if (reason == DLL_PROCESS_ATTACH) {
        SetResourceModule(instance);
        ::DisableThreadLibraryCalls(instance);
    }
    return TRUE;
}
