#include "rules.h"

namespace complus {
namespace {

// Accounts that a server application may run as without a password.
constexpr const wchar_t* kBuiltInIdentities[] = {L"Interactive User", L"NT AUTHORITY\\LocalService",
                                                 L"NT AUTHORITY\\NetworkService", L"NT AUTHORITY\\System"};

bool IsBuiltInIdentity(const std::wstring& identity) noexcept {
    for (const wchar_t* builtIn : kBuiltInIdentities) {
        if (SameText(identity, builtIn)) return true;
    }
    return false;
}

void Refuse(SaveCheck& check, const Item& item, HRESULT code, const std::wstring& description) {
    check.errors.push_back(NewError(item.Name(), code));
    if (check.description.empty()) check.description = description;
}

// The password itself never appears in a description.
void CheckApplication(SaveCheck& check, const Item& application) {
    const std::wstring name = application.Name();
    if (name.empty()) return Refuse(check, application, COMADMIN_E_OBJECTINVALID, L"An application needs a name.");
    if (application.Number(L"Activation") == 0) return;
    const std::wstring identity = application.Text(L"Identity");
    if (identity.empty() || (!IsBuiltInIdentity(identity) && application.Text(L"Password").empty()))
        Refuse(check, application, COMADMIN_E_USERPASSWDNOTVALID,
               L"The application '" + name + L"' cannot run as '" + identity + L"' without that account's password.");
}

} // namespace

SaveCheck CheckChanges(const CollectionSchema& schema, const ItemList& items, const ItemList& removed) {
    SaveCheck check;
    if (&schema != &ApplicationsSchema()) return check;
    for (const ItemPtr& application : removed) {
        if (application->Number(L"Deleteable") == 0)
            Refuse(check, *application, COMADMIN_E_NOTDELETEABLE,
                   L"The application '" + application->Name() + L"' cannot be deleted: it is not deleteable.");
    }
    for (const ItemPtr& application : items) {
        if (application->dirty) CheckApplication(check, *application);
    }
    return check;
}

} // namespace complus
