#include "support.h"
#include "frame/bstr.h"
#include "frame/classes.h"
#include "frame/component.h"
#include "frame/registry.h"
#include <algorithm>
#include <stdexcept>

namespace complus_test {
namespace {

constexpr wchar_t kStoreKey[] = L"Software\\Tolvane\\VelmoraComPlus";

// A failed set-up or read-back call ends the test with the call and its result code.
void Must(HRESULT hr, const char* what) {
    if (SUCCEEDED(hr)) return;
    char text[160];
    snprintf(text, sizeof text, "%s failed with 0x%08lx", what, static_cast<unsigned long>(hr));
    throw std::runtime_error(text);
}

tol::variant ToVariant(const Value& value) {
    if (auto text = std::get_if<std::wstring>(&value)) return tol::TextVariant(*text);
    if (auto number = std::get_if<long>(&value)) return tol::LongVariant(*number);
    return tol::BoolVariant(std::get<bool>(value));
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

tol::com_ptr<ICatalogCollection> Populated(const tol::com_ptr<IDispatch>& object) {
    tol::com_ptr<ICatalogCollection> collection = object.query<ICatalogCollection>();
    if (!collection) throw std::runtime_error("no ICatalogCollection");
    Must(collection->Populate(), "Populate");
    return collection;
}

std::wstring Text(ICatalogObject* object, HRESULT (STDMETHODCALLTYPE ICatalogObject::*get)(VARIANT*)) {
    tol::variant value;
    Must((object->*get)(value.receive()), "get_Name/get_Key");
    return V_VT(value.ptr()) == VT_BSTR && V_BSTR(value.ptr()) ? V_BSTR(value.ptr()) : L"";
}

std::vector<tol::com_ptr<ICatalogObject>> Items(ICatalogCollection* collection) {
    LONG count = 0;
    Must(collection->get_Count(&count), "get_Count");
    std::vector<tol::com_ptr<ICatalogObject>> items;
    for (long index = 0; index < count; ++index) {
        tol::com_ptr<IDispatch> object;
        Must(collection->get_Item(index, object.put()), "get_Item");
        items.push_back(object.query<ICatalogObject>());
    }
    return items;
}

Lines Names(ICatalogCollection* collection) {
    Lines names;
    for (auto& item : Items(collection)) names.push_back(Text(item.get(), &ICatalogObject::get_Name));
    return names;
}

tol::com_ptr<ICatalogObject> FindByName(ICatalogCollection* collection, const std::wstring& name) {
    for (auto& item : Items(collection))
        if (Text(item.get(), &ICatalogObject::get_Name) == name) return item;
    return nullptr;
}

tol::com_ptr<ICatalogCollection> OpenComponents(ICatalogCollection* applications, const std::wstring& application) {
    auto found = FindByName(applications, application);
    if (!found) throw std::runtime_error("no such application");
    tol::variant key;
    Must(found->get_Key(key.receive()), "get_Key");
    tol::com_ptr<IDispatch> object;
    Must(applications->GetCollection(tol::bstr(L"Components").get(), key.get(), object.put()), "GetCollection");
    return Populated(object);
}

std::wstring ValueOf(ICatalogObject* object, const wchar_t* property) {
    if (!object) return L"<none>";
    tol::variant value;
    Must(object->get_Value(tol::bstr(property).get(), value.receive()), "get_Value");
    return Describe(value.get());
}

void ClearStore() {
    const LONG status = tol::DeleteKeyTree(HKEY_LOCAL_MACHINE, kStoreKey);
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) Must(HRESULT_FROM_WIN32(status), "clearing the store");
}

} // namespace

void ComPlusTest::SetUp() {
    ASSERT_EQ(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK);
    ClearStore();
}

tol::com_ptr<ICOMAdminCatalog> NewCatalog() {
    tol::com_ptr<ICOMAdminCatalog> catalog;
    Must(::CoCreateInstance(__uuidof(COMAdminCatalog), nullptr, CLSCTX_INPROC_SERVER, __uuidof(ICOMAdminCatalog),
                            catalog.put_void()),
         "CoCreateInstance(COMAdminCatalog)");
    return catalog;
}

tol::com_ptr<ICatalogCollection> Open(ICOMAdminCatalog* catalog, const wchar_t* name) {
    tol::com_ptr<IDispatch> object;
    Must(catalog->GetCollection(tol::bstr(name).get(), object.put()), "GetCollection");
    return Populated(object);
}

void Put(ICatalogObject* object, const wchar_t* property, const Value& value) {
    Must(object->put_Value(tol::bstr(property).get(), ToVariant(value).get()), "put_Value");
}

void SeedApplications(const std::vector<std::pair<std::wstring, Properties>>& applications) {
    ClearStore();
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

void SeedComponents(const std::wstring& application, const std::wstring& dll) {
    const tol::bstr none(L"");
    Must(NewCatalog()->InstallComponent(tol::bstr(application).get(), tol::bstr(dll).get(), none.get(), none.get()),
         "InstallComponent");
}

Lines SavedApplications() { return Names(Open(NewCatalog().get(), L"Applications").get()); }

Lines SavedComponents(const std::wstring& application) {
    auto applications = Open(NewCatalog().get(), L"Applications");
    return Names(OpenComponents(applications.get(), application).get());
}

std::wstring SavedValue(const std::wstring& application, const wchar_t* property, const std::wstring& component) {
    auto applications = Open(NewCatalog().get(), L"Applications");
    if (component.empty()) return ValueOf(FindByName(applications.get(), application).get(), property);
    return ValueOf(FindByName(OpenComponents(applications.get(), application).get(), component).get(), property);
}

long ServerState(const std::wstring& application, const wchar_t* value) {
    auto found = FindByName(Open(NewCatalog().get(), L"Applications").get(), application);
    if (!found) return -1;
    const std::wstring path = std::wstring(kStoreKey) + L"\\State\\" + Text(found.get(), &ICatalogObject::get_Key);
    DWORD number = 0, size = sizeof number;
    if (::RegGetValueW(HKEY_LOCAL_MACHINE, path.c_str(), value, RRF_RT_REG_DWORD, nullptr, &number, &size) != ERROR_SUCCESS)
        return -1;
    return static_cast<long>(number);
}

void SetTexts(test::TestStep& step, const wchar_t* name, std::initializer_list<const wchar_t*> texts) {
    SAFEARRAY* array = ::SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(texts.size()));
    LONG index = 0;
    for (const wchar_t* text : texts) {
        Must(::SafeArrayPutElement(array, &index, ToVariant(std::wstring(text)).ptr()), "SafeArrayPutElement");
        ++index;
    }
    VARIANT v;
    V_VT(&v) = VT_ARRAY | VT_VARIANT;
    V_ARRAY(&v) = array;
    step.Set(name, v); // the step owns it now
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

bool LogMentions(const Lines& log, const std::wstring& text) {
    return std::any_of(log.begin(), log.end(), [&](const std::wstring& line) { return line.find(text) != std::wstring::npos; });
}

} // namespace complus_test
