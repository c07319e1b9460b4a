#include "install.h"
#include "failure.h"
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include "frame/handles.h"
#include "frame/registry.h"
#include "store.h"
#include <vector>

namespace complus {
namespace {

struct ComponentClass {
    std::wstring clsid, progId, description;
};

void FailIfErrors(const ItemList& errors, const std::wstring& description) {
    if (!errors.empty()) Fail(COMADMIN_E_OBJECTERRORS, description);
}

void CheckFile(const std::wstring& path, ItemList& errors) {
    if (path.empty() || ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return;
    const DWORD code = ::GetLastError();
    errors.push_back(NewError(path, HRESULT_FROM_WIN32(code ? code : ERROR_FILE_NOT_FOUND)));
}

ComponentClass DescribeClass(ITypeLib* library, UINT index, const std::wstring& libraryName) {
    tol::com_ptr<ITypeInfo> info;
    THROW_IF_FAILED(library->GetTypeInfo(index, info.put()));
    TYPEATTR* attributes = nullptr;
    THROW_IF_FAILED(info->GetTypeAttr(&attributes));
    const GUID clsid = attributes->guid;
    info->ReleaseTypeAttr(attributes);
    tol::bstr name, description;
    THROW_IF_FAILED(library->GetDocumentation(static_cast<INT>(index), name.receive(), description.receive(), nullptr, nullptr));
    return {tol::GuidText(clsid), libraryName + L"." + name.str(), description.str()};
}

// Why a type library did not load: a module without a type library resource says so in the system's words;
// anything else keeps the loader's code.
HRESULT TypeLibraryProblem(const std::wstring& path, HRESULT loaded) {
    tol::unique_module module(::LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
    if (module && !::FindResourceW(module.get(), MAKEINTRESOURCEW(1), L"TYPELIB"))
        return HRESULT_FROM_WIN32(ERROR_RESOURCE_TYPE_NOT_FOUND);
    return loaded;
}

// The classes of the type library; an unreadable library or one without classes is an error entry.
std::vector<ComponentClass> ReadClasses(const std::wstring& path, ItemList& errors) {
    tol::com_ptr<ITypeLib> library;
    const HRESULT loaded = ::LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.put());
    if (FAILED(loaded)) {
        errors.push_back(NewError(path, TypeLibraryProblem(path, loaded)));
        return {};
    }
    tol::bstr libraryName;
    THROW_IF_FAILED(library->GetDocumentation(-1, libraryName.receive(), nullptr, nullptr, nullptr));
    std::vector<ComponentClass> classes;
    for (UINT index = 0; index < library->GetTypeInfoCount(); ++index) {
        TYPEKIND kind = TKIND_MAX;
        if (SUCCEEDED(library->GetTypeInfoType(index, &kind)) && kind == TKIND_COCLASS)
            classes.push_back(DescribeClass(library.get(), index, libraryName.str()));
    }
    if (classes.empty()) errors.push_back(NewError(path, COMADMIN_E_COMPFILE_CLASSNOTAVAIL));
    return classes;
}

ItemPtr FindComponent(const ItemList& components, const std::wstring& clsid) {
    for (const ItemPtr& component : components) {
        if (SameText(component->Key(), clsid)) return component;
    }
    return nullptr;
}

// A class may be a component of one application only.
void CheckNotElsewhere(const std::wstring& applicationId, const std::vector<ComponentClass>& classes, ItemList& errors) {
    for (const ItemPtr& other : LoadItems(ApplicationsSchema(), ApplicationsSchema().name)) {
        if (SameText(other->Key(), applicationId)) continue;
        const ItemList installed = LoadItems(ComponentsSchema(), CollectionPath(ComponentsSchema(), other->Key()));
        for (const ComponentClass& added : classes) {
            if (FindComponent(installed, added.clsid)) errors.push_back(NewError(added.progId, COMADMIN_E_ALREADYINSTALLED));
        }
    }
}

void WriteComponents(const std::wstring& applicationId, const std::vector<ComponentClass>& classes, const std::wstring& dll) {
    const std::wstring path = CollectionPath(ComponentsSchema(), applicationId);
    const ItemList installed = LoadItems(ComponentsSchema(), path);
    for (const ComponentClass& added : classes) {
        ItemPtr component = FindComponent(installed, added.clsid);
        if (!component) component = NewItem(ComponentsSchema());
        component->Put(L"CLSID", added.clsid);
        component->Put(L"ProgID", added.progId);
        component->Put(L"DLL", dll);
        component->Put(L"Description", added.description);
        SaveItem(path, *component);
    }
}

} // namespace

void InstallComponents(const std::wstring& application, const std::wstring& dll, const std::wstring& typeLibrary,
                       const std::wstring& proxyStub, ItemList& errors) {
    if (dll.empty()) Fail(E_INVALIDARG, L"No component DLL was named.");
    const std::optional<ItemPtr> target = FindStoredApplication(application);
    if (!target) Fail(COMADMIN_E_OBJECT_DOES_NOT_EXIST, L"The application '" + application + L"' does not exist.");
    const std::wstring applicationId = (*target)->Key();

    for (const std::wstring* file : {&dll, &typeLibrary, &proxyStub}) CheckFile(*file, errors);
    FailIfErrors(errors, L"The files of the component '" + dll + L"' cannot be read.");
    const std::vector<ComponentClass> classes = ReadClasses(typeLibrary.empty() ? dll : typeLibrary, errors);
    FailIfErrors(errors, L"The type library of the component '" + dll + L"' cannot be read.");
    CheckNotElsewhere(applicationId, classes, errors);
    FailIfErrors(errors, L"Classes of the component '" + dll + L"' are installed in another application.");
    WriteComponents(applicationId, classes, dll);
}

} // namespace complus
