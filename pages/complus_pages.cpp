// The pages of the COM+ actions: Application, Component, and the additional properties page both share.
#include "action_pages.h"
#include "actions/complus/catalog.h"
#include "frame/bstr.h"
#include "frame/errors.h"
#include "frame/messages.h"
#include "pickers.h"
#include <iterator>

namespace tol {
namespace {

constexpr int kOperation = 1065;
constexpr int kComputer = 1034;
constexpr int kApplication = 1080;
constexpr int kComponent = 1088;

constexpr UINT kInvalidApplication = 207; // "Invalid application name."
constexpr UINT kInvalidComponent = 208;   // "Invalid component name."

// In-process, in-process handler, local and remote servers: whatever serves the catalog.
constexpr DWORD kCatalogContext = CLSCTX_INPROC_SERVER | CLSCTX_INPROC_HANDLER | CLSCTX_LOCAL_SERVER | CLSCTX_REMOTE_SERVER;

constexpr FieldDescriptor kApplicationFields[] = {
    TypedRow(kOperation, L"Op", 0),
    TextRow(kComputer, L"Computer"),
    TextRow(kApplication, L"Application").Required(),
    TextRow(1026, L"Identity").Required().Default(L"Interactive User"),
    TextRow(1027, L"Password"),
    TypedRow(1070, L"Activation", 1, 2),
    TypedRow(1072, L"RunForever", 1, 2),
    TextRow(1028, L"ShutdownAfter").Default(L"3"),
};

constexpr FieldDescriptor kComponentFields[] = {
    TypedRow(kOperation, L"Op", 0),
    TextRow(kComputer, L"Computer"),
    TextRow(kApplication, L"Application").Required(),
    TextRow(kComponent, L"Component").Required().Layout(kGrowWidth).File(203).ReplaceOnInsert(),
    TypedRow(1068, L"Transaction", 1, 6),
    TypedRow(1074, L"Synchronization", 4, 6),
    TypedRow(1081, L"JustInTimeActivation", 1),
    TextRow(1062, L"ComponentTransactionTimeout"),
};

constexpr FieldDescriptor kPropertyFields[] = {
    TextRow(1016, L"Props").Count(10),
    TextRow(1026, L"Values").Count(10).Layout(kGrowWidth).File(),
};

com_ptr<ICOMAdminCatalog2> CreateSystemCatalog() noexcept {
    com_ptr<ICOMAdminCatalog2> catalog;
    if (FAILED(::CoCreateInstance(__uuidof(COMAdminCatalog), nullptr, kCatalogContext, __uuidof(ICOMAdminCatalog2),
                                  catalog.put_void())))
        catalog.reset();
    return catalog;
}

// The names of a collection at the catalog's top level.
std::vector<std::wstring> CollectionNames(ICOMAdminCatalog2* catalog, const wchar_t* name) {
    const bstr text(name);
    com_ptr<IDispatch> object;
    THROW_IF_HOST_FAILED(catalog, ICOMAdminCatalog2, catalog->GetCollection(text.get(), object.put()));
    const CatalogCollection collection(object);
    std::vector<std::wstring> names;
    for (long i = 0, count = collection.Count(); i < count; ++i) names.push_back(collection.Item(i).Name());
    return names;
}

void AddComboItems(HWND combo, const std::vector<std::wstring>& items) {
    for (const std::wstring& item : items) ::SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item.c_str()));
}

} // namespace

ComPlusPage::ComPlusPage(UINT dialogId, const FieldDescriptor* table, size_t rows, unsigned triggers) noexcept
    : RulePage(dialogId, table, rows, triggers), catalog_(CreateSystemCatalog()) {}

void ComPlusPage::AfterCreate() {
    FillOperations();
    FillCatalogLists();
}

// The lists come from this computer's catalog whatever the computer field holds. A catalog that cannot answer
// leaves them as they are: every name can still be typed.
void ComPlusPage::FillCatalogLists() {
    if (!catalog_) return;
    try {
        const bstr local(L"");
        com_ptr<IDispatch> root;
        THROW_IF_HOST_FAILED(catalog_.get(), ICOMAdminCatalog2, catalog_->Connect(local.get(), root.put()));
        AddComboItems(Item(kComputer), CollectionNames(catalog_.get(), L"ComputerList"));

        const std::vector<std::wstring> applications = CollectionNames(catalog_.get(), L"Applications");
        const HWND combo = Item(kApplication);
        const std::wstring typed = WindowText(combo);
        ::SendMessageW(combo, CB_RESETCONTENT, 0, 0);
        AddComboItems(combo, {L"*"});
        AddComboItems(combo, applications);
        ::SetWindowTextW(combo, typed.c_str());
    } catch (const comet::com_error&) {
    }
}

// "*" names every application: no operation can create one under that name (Add, on the component page).
bool ComPlusPage::PageRules() {
    if (Selection(kOperation) == 0 && WindowText(Item(kApplication)) == L"*")
        return Refuse(LoadResourceText(kInvalidApplication), kApplication);
    return true;
}

COMPlusAppUI::COMPlusAppUI() noexcept
    : ComPlusPage(1026, kApplicationFields, std::size(kApplicationFields), kOnClick | kOnSelection) {}

void COMPlusAppUI::FillOperations() { AddListItems(kOperation, {L"Create/Modify", L"Delete", L"Shutdown", L"Start"}); }

// Activation belongs to Create/Modify; identity and shutdown only to a server application.
void COMPlusAppUI::ApplyRules() {
    const bool modify = Selection(kOperation) == 0;
    EnableItems({1070, 1071}, modify);
    EnableItems({1026, 1027, 1072, 1073, 1028}, modify && IsChecked(1071));
}

COMPlusCompUI::COMPlusCompUI() noexcept
    : ComPlusPage(1027, kComponentFields, std::size(kComponentFields), kOnSelection) {}

void COMPlusCompUI::FillOperations() { AddListItems(kOperation, {L"Add", L"Modify", L"Delete", L"Report"}); }

// Delete and Report set no properties; the two "Default" buttons stay enabled.
void COMPlusCompUI::ApplyRules() {
    const long operation = Selection(kOperation);
    const bool setsProperties = operation != 2 && operation != 3;
    EnableItems({1068, 1069, 1070, 1071, 1072, 1074, 1075, 1076, 1077, 1078, 1062, 1081}, setsProperties);
}

bool COMPlusCompUI::PageRules() {
    if (!ComPlusPage::PageRules()) return false;
    if (Selection(kOperation) == 0 && WindowText(Item(kComponent)) == L"*")
        return Refuse(LoadResourceText(kInvalidComponent), kComponent);
    return true;
}

COMPlusPropUI::COMPlusPropUI() noexcept : PropertyPage(1028, kPropertyFields, std::size(kPropertyFields)) {}

} // namespace tol
