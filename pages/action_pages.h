// The fifteen pages of the actions: each a page template, a field table and the few hooks it needs (list contents,
// enabling rules, value mapping, page rules). CreatePropertyPage (pages.cpp) makes them by class name.
#pragma once
#include "page.h"
#include <comadmin.h>
#include <initializer_list>
#include <string>

namespace tol {

// A page whose controls enable one another. The rules run after every load and, before the engine's own
// handling, on every notification the page names (a click, a list selection, or both).
class RulePage : public PropertyPage {
public:
    enum Trigger : unsigned { kOnClick = 1, kOnSelection = 2 };

protected:
    RulePage(UINT dialogId, const FieldDescriptor* table, size_t rows, unsigned triggers = kOnClick) noexcept
        : PropertyPage(dialogId, table, rows), triggers_(triggers) {}

    virtual void ApplyRules() = 0;
    void AfterLoad(IBuildStep* step) override;
    bool OnCommand(WORD id, WORD code, HWND control) override;

    long Selection(int listId) const noexcept; // the selected index of a list, -1 when none
    void EnableItems(std::initializer_list<int> ids, bool enable) const noexcept;

private:
    unsigned triggers_;
};

class WriteFileUI final : public PropertyPage {
public:
    WriteFileUI() noexcept;
};

class WriteINIUI final : public RulePage {
public:
    WriteINIUI() noexcept;

private:
    void ApplyRules() override;
};

// The step keeps the registry root handle value and the registry type; the controls show indexes.
class WriteRegUI final : public RulePage {
public:
    WriteRegUI() noexcept;

private:
    void AfterCreate() override;
    void ApplyRules() override;
    void BeforeShow(const wchar_t* property, VARIANT& value) override;
    void BeforeSave(const wchar_t* property, VARIANT& value) override;
};

class FileReplaceUI final : public PropertyPage {
public:
    FileReplaceUI() noexcept;
};

// The label above the criteria edit says what the chosen wait expects.
class WaitUI final : public RulePage {
public:
    WaitUI() noexcept;

private:
    void ApplyRules() override;
};

class GACInstallUI final : public PropertyPage {
public:
    GACInstallUI() noexcept;
};

class CopyFilesUI final : public RulePage {
public:
    CopyFilesUI() noexcept;

private:
    void ApplyRules() override;
};

class CopyFilesOptUI final : public RulePage {
public:
    CopyFilesOptUI() noexcept;

private:
    void ApplyRules() override;
};

class ZipFilesUI final : public RulePage {
public:
    ZipFilesUI() noexcept;

private:
    void AfterCreate() override;
    void ApplyRules() override;
};

class ZipFilesOptUI final : public PropertyPage {
public:
    ZipFilesOptUI() noexcept;
};

class UnzipFilesUI final : public PropertyPage {
public:
    UnzipFilesUI() noexcept;

private:
    void AfterCreate() override;
};

// The computer and service pick lists; the service list follows the computer field when it loses the focus.
class ServiceUI final : public PropertyPage {
public:
    ServiceUI() noexcept;

private:
    void AfterCreate() override;
    bool OnCommand(WORD id, WORD code, HWND control) override;
};

// The COM+ Application and Component pages: the system catalog, made with the page object, fills the computer and
// application lists; the operation list and the page rules are the page's own.
class ComPlusPage : public RulePage {
protected:
    ComPlusPage(UINT dialogId, const FieldDescriptor* table, size_t rows, unsigned triggers) noexcept;

    virtual void FillOperations() = 0;
    void AfterCreate() override;
    bool PageRules() override;

private:
    void FillCatalogLists();

    com_ptr<ICOMAdminCatalog2> catalog_; // null when the system has no catalog: the page works without lists
};

class COMPlusAppUI final : public ComPlusPage {
public:
    COMPlusAppUI() noexcept;

private:
    void FillOperations() override;
    void ApplyRules() override;
};

class COMPlusCompUI final : public ComPlusPage {
public:
    COMPlusCompUI() noexcept;

private:
    void FillOperations() override;
    void ApplyRules() override;
    bool PageRules() override;
};

class COMPlusPropUI final : public PropertyPage {
public:
    COMPlusPropUI() noexcept;
};

// Not an action's page: a step's "Text" in the script editor control, for the step editor's script preview.
class ScriptPreviewUI final : public PropertyPage {
public:
    ScriptPreviewUI() noexcept;

private:
    void AfterCreate() override;
};

} // namespace tol
