#include "support.h"
#include "frame/bstr.h"
#include "frame/classes.h"
#include "frame/component.h"
#include "frame/handles.h"
#include "frame/messages.h"
#include "frame/registry.h"
#include <stdexcept>

namespace complus_test {
namespace {

// A failed set-up or read-back call ends the test with the call and its result code.
void Must(HRESULT hr, const char* what) {
    if (SUCCEEDED(hr)) return;
    char text[160];
    snprintf(text, sizeof text, "%s failed with 0x%08lx", what, static_cast<unsigned long>(hr));
    throw std::runtime_error(text);
}

std::wstring ModuleFolder() {
    std::wstring path(4096, L'\0');
    path.resize(::GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\'));
}

// The store key of the application with that Name, found with the registry API; empty when there is none.
std::wstring ApplicationStoreKey(const std::wstring& application) {
    const std::wstring root = std::wstring(kStoreKey) + L"\\Applications";
    tol::unique_hkey applications;
    if (::RegOpenKeyExW(HKEY_LOCAL_MACHINE, root.c_str(), 0, KEY_READ, applications.put()) != ERROR_SUCCESS) return {};
    for (DWORD index = 0;; ++index) {
        wchar_t slot[256];
        DWORD length = 256;
        if (::RegEnumKeyExW(applications.get(), index, slot, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
            return {};
        tol::unique_hkey key;
        std::wstring name;
        if (::RegOpenKeyExW(applications.get(), slot, 0, KEY_READ, key.put()) == ERROR_SUCCESS &&
            tol::ReadStringValue(key.get(), L"Name", name) && name == application)
            return root + L"\\" + slot;
    }
}

} // namespace

void ClearStore() {
    const LONG status = tol::DeleteKeyTree(HKEY_LOCAL_MACHINE, kStoreKey);
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) Must(HRESULT_FROM_WIN32(status), "clearing the store");
}

void ComPlusTest::SetUpTestSuite() {
    tol::unique_module standIn(::LoadLibraryW(StandInDll().c_str()));
    ASSERT_TRUE(standIn) << ::GetLastError();
    auto registerServer = reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(::GetProcAddress(standIn.get(), "DllRegisterServer"));
    ASSERT_NE(registerServer, nullptr);
    ASSERT_EQ(registerServer(), S_OK);
}

void ComPlusTest::SetUp() {
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    ClearStore();
}

void ComPlusTest::TearDown() { ::CoUninitialize(); }

std::wstring BinFolder() { return ModuleFolder(); }
std::wstring ExtensionDll() { return BinFolder() + L"\\VelmoraExt.dll"; }
std::wstring ExtensionTypeLibrary() { return BinFolder() + L"\\..\\idl\\VelmoraExt.tlb"; }
std::wstring StandInDll() { return BinFolder() + L"\\VelmoraComAdmin.dll"; }

tol::variant ToVariant(const Value& value) {
    tol::variant result;
    VARIANT* slot = result.receive();
    if (auto text = std::get_if<std::wstring>(&value)) {
        V_VT(slot) = VT_BSTR;
        V_BSTR(slot) = ::SysAllocStringLen(text->data(), static_cast<UINT>(text->size()));
    } else if (auto number = std::get_if<long>(&value)) {
        V_VT(slot) = VT_I4;
        V_I4(slot) = *number;
    } else {
        V_VT(slot) = VT_BOOL;
        V_BOOL(slot) = std::get<bool>(value) ? VARIANT_TRUE : VARIANT_FALSE;
    }
    return result;
}

std::wstring Describe(const VARIANT& value) {
    switch (V_VT(&value)) {
    case VT_BSTR:
        return L"text " + std::wstring(V_BSTR(&value) ? V_BSTR(&value) : L"");
    case VT_I4:
        return L"long " + std::to_wstring(V_I4(&value));
    case VT_BOOL:
        return V_BOOL(&value) == VARIANT_TRUE ? L"bool true" : V_BOOL(&value) == VARIANT_FALSE ? L"bool false" : L"bool ?";
    default:
        return L"<vt " + std::to_wstring(V_VT(&value)) + L">";
    }
}

tol::com_ptr<ICOMAdminCatalog> NewCatalog() {
    tol::com_ptr<ICOMAdminCatalog> catalog;
    Must(::CoCreateInstance(__uuidof(COMAdminCatalog), nullptr, CLSCTX_INPROC_SERVER, __uuidof(ICOMAdminCatalog),
                            catalog.put_void()),
         "CoCreateInstance(COMAdminCatalog)");
    return catalog;
}

static tol::com_ptr<ICatalogCollection> Populated(tol::com_ptr<IDispatch> object) {
    tol::com_ptr<ICatalogCollection> collection = object.query<ICatalogCollection>();
    if (!collection) throw std::runtime_error("no ICatalogCollection");
    Must(collection->Populate(), "Populate");
    return collection;
}

tol::com_ptr<ICatalogCollection> Open(ICOMAdminCatalog* catalog, const wchar_t* name) {
    tol::com_ptr<IDispatch> object;
    Must(catalog->GetCollection(tol::bstr(name).get(), object.put()), "GetCollection");
    return Populated(object);
}

tol::com_ptr<ICatalogCollection> OpenComponents(ICatalogCollection* applications, const std::wstring& application) {
    auto found = FindByName(applications, application);
    if (!found) throw std::runtime_error("no such application");
    tol::variant key;
    Must(found->get_Key(key.receive()), "get_Key");
    tol::com_ptr<IDispatch> object;
    Must(applications->GetCollection(tol::bstr(L"Components").get(), key.get(), object.put()), "GetCollection(Components)");
    return Populated(object);
}

tol::com_ptr<ICatalogObject> ItemAt(ICatalogCollection* collection, long index) {
    tol::com_ptr<IDispatch> object;
    Must(collection->get_Item(index, object.put()), "get_Item");
    return object.query<ICatalogObject>();
}

std::wstring NameOf(ICatalogObject* object) {
    tol::variant name;
    Must(object->get_Name(name.receive()), "get_Name");
    return V_VT(name.ptr()) == VT_BSTR && V_BSTR(name.ptr()) ? V_BSTR(name.ptr()) : L"";
}

std::wstring KeyOf(ICatalogObject* object) {
    tol::variant key;
    Must(object->get_Key(key.receive()), "get_Key");
    return V_VT(key.ptr()) == VT_BSTR && V_BSTR(key.ptr()) ? V_BSTR(key.ptr()) : L"";
}

std::vector<std::wstring> Names(ICatalogCollection* collection) {
    LONG count = 0;
    Must(collection->get_Count(&count), "get_Count");
    std::vector<std::wstring> names;
    for (long index = 0; index < count; ++index) names.push_back(NameOf(ItemAt(collection, index).get()));
    return names;
}

tol::com_ptr<ICatalogObject> FindByName(ICatalogCollection* collection, const std::wstring& name) {
    LONG count = 0;
    Must(collection->get_Count(&count), "get_Count");
    for (long index = 0; index < count; ++index) {
        auto item = ItemAt(collection, index);
        if (NameOf(item.get()) == name) return item;
    }
    return nullptr;
}

std::wstring ValueOf(ICatalogObject* object, const wchar_t* property) {
    tol::variant value;
    Must(object->get_Value(tol::bstr(property).get(), value.receive()), "get_Value");
    return Describe(value.get());
}

void Put(ICatalogObject* object, const wchar_t* property, const Value& value) {
    Must(object->put_Value(tol::bstr(property).get(), ToVariant(value).get()), "put_Value");
}

void SeedApplications(const std::vector<std::pair<std::wstring, Properties>>& applications) {
    auto catalog = NewCatalog();
    auto collection = Open(catalog.get(), L"Applications");
    for (const auto& [name, properties] : applications) {
        tol::com_ptr<IDispatch> added;
        Must(collection->Add(added.put()), "Add");
        auto application = added.query<ICatalogObject>();
        Put(application.get(), L"Name", name);
        for (const auto& [property, value] : properties) Put(application.get(), property, value);
    }
    LONG changes = 0;
    Must(collection->SaveChanges(&changes), "SaveChanges");
}

void SeedComponents(const std::wstring& application, const std::wstring& dll, const std::wstring& typeLibrary) {
    auto catalog = NewCatalog();
    Must(catalog->InstallComponent(tol::bstr(application).get(), tol::bstr(dll).get(), tol::bstr(typeLibrary).get(),
                                   tol::bstr(L"").get()),
         "InstallComponent");
}

std::vector<std::wstring> SavedApplications() {
    auto catalog = NewCatalog();
    return Names(Open(catalog.get(), L"Applications").get());
}

std::vector<std::wstring> SavedComponents(const std::wstring& application) {
    auto catalog = NewCatalog();
    auto applications = Open(catalog.get(), L"Applications");
    return Names(OpenComponents(applications.get(), application).get());
}

std::wstring SavedValue(const std::wstring& application, const wchar_t* property) {
    auto catalog = NewCatalog();
    auto applications = Open(catalog.get(), L"Applications");
    auto found = FindByName(applications.get(), application);
    return found ? ValueOf(found.get(), property) : L"<no application>";
}

std::wstring SavedComponentValue(const std::wstring& application, const std::wstring& component, const wchar_t* property) {
    auto catalog = NewCatalog();
    auto applications = Open(catalog.get(), L"Applications");
    auto components = OpenComponents(applications.get(), application);
    auto found = FindByName(components.get(), component);
    return found ? ValueOf(found.get(), property) : L"<no component>";
}

long ServerState(const std::wstring& application, const wchar_t* value) {
    auto catalog = NewCatalog();
    auto found = FindByName(Open(catalog.get(), L"Applications").get(), application);
    if (!found) return -1;
    const std::wstring path = std::wstring(kStoreKey) + L"\\State\\" + KeyOf(found.get());
    DWORD number = 0, size = sizeof number;
    if (::RegGetValueW(HKEY_LOCAL_MACHINE, path.c_str(), value, RRF_RT_REG_DWORD, nullptr, &number, &size) != ERROR_SUCCESS)
        return -1;
    return static_cast<long>(number);
}

std::wstring StoredText(const std::wstring& application, const wchar_t* value) {
    const std::wstring path = ApplicationStoreKey(application);
    tol::unique_hkey key;
    if (path.empty() || ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS)
        return L"<none>";
    std::wstring text;
    return tol::ReadStringValue(key.get(), value, text) ? text : L"<none>";
}

void SetLong(test::TestStep& step, const wchar_t* name, long value) {
    VARIANT v;
    V_VT(&v) = VT_I4;
    V_I4(&v) = value;
    step.Set(name, v);
}

void SetBool(test::TestStep& step, const wchar_t* name, bool value) {
    VARIANT v;
    V_VT(&v) = VT_BOOL;
    V_BOOL(&v) = value ? VARIANT_TRUE : VARIANT_FALSE;
    step.Set(name, v);
}

void SetTexts(test::TestStep& step, const wchar_t* name, std::initializer_list<const wchar_t*> texts) {
    SAFEARRAY* array = ::SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size()));
    LONG index = 0;
    for (const wchar_t* text : texts) {
        tol::variant element;
        V_VT(element.ptr()) = VT_BSTR;
        V_BSTR(element.ptr()) = ::SysAllocString(text);
        Must(::SafeArrayPutElement(array, &index, element.ptr()), "SafeArrayPutElement");
        ++index;
    }
    VARIANT v;
    V_VT(&v) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&v) = array;
    step.Set(name, v); // the step owns it now
}

StoppingBuild::StoppingBuild(std::wstring prefix, int nth)
    : prefix_(std::move(prefix)), remaining_(nth), stop_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {}

STDMETHODIMP StoppingBuild::QueryInterface(REFIID iid, void** object) {
    if (iid == IID_IUnknown || iid == IID_IBuildRun) {
        *object = static_cast<IBuildRun*>(this);
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP StoppingBuild::GetTextExpander(ITextExpander** expander) {
    *expander = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP StoppingBuild::RunCommandLine(BSTR, BSTR, VARIANT*, long, BSTR, long, long, VARIANT_BOOL, BSTR, long*) {
    return E_NOTIMPL;
}

STDMETHODIMP StoppingBuild::LogMessage(BSTR text, VARIANT_BOOL) {
    log.emplace_back(text ? text : L"");
    if (log.back().compare(0, prefix_.size(), prefix_) == 0 && --remaining_ == 0) ::SetEvent(stop_.get());
    return S_OK;
}

STDMETHODIMP StoppingBuild::GetStopEvent(long* event) {
    *event = ::HandleToLong(stop_.get());
    return S_OK;
}

Outcome Execute(const CLSID& action, IBuildRun* build, test::TestStep& step) {
    tol::com_ptr<IBuildAction> component;
    Must(tol::CreateComponent(*tol::FindClass(action), IID_IBuildAction, component.put_void()), "CreateComponent");
    Outcome outcome;
    ::SetErrorInfo(0, nullptr);
    outcome.hr = component->Execute(build, &step, &outcome.status);
    tol::com_ptr<IErrorInfo> info;
    if (FAILED(outcome.hr) && ::GetErrorInfo(0, info.put()) == S_OK) {
        tol::bstr description;
        info->GetDescription(description.receive());
        outcome.error = description.str();
    }
    return outcome;
}

bool LogMentions(const std::vector<std::wstring>& log, const std::wstring& text) {
    for (const std::wstring& line : log) {
        if (line.find(text) != std::wstring::npos) return true;
    }
    return false;
}

std::wstring SystemText(HRESULT code) { return tol::SystemErrorText(code); }

} // namespace complus_test
