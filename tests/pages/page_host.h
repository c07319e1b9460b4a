// A host for one page in a test: a hidden parent window, the page site, a text expander and a step that
// records what the page writes, plus an answerer for the page's message boxes.
#pragma once
#include "host_doubles.h"
#include "ActionUI.h"
#include "frame/step.h"
#include "pages/pages.h"
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace test {

// For an object with one interface beside IUnknown.
template <class Interface>
HRESULT QueryOne(Interface* self, REFIID iid, void** object) {
    *object = iid == __uuidof(Interface) || iid == IID_IUnknown ? self : nullptr;
    return *object ? S_OK : E_NOINTERFACE;
}

class PageSite final : public StackObject<IActionPageSite> {
public:
    std::vector<long> focused;   // the flags of every FieldFocused call
    int changes = 0;
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override { return QueryOne<IActionPageSite>(this, iid, object); }
    STDMETHODIMP FieldFocused(long flags) override { return focused.push_back(flags), S_OK; }
    STDMETHODIMP PageChanged() override { return ++changes, S_OK; }
};

// Replaces %NAME% with the variable's value; an unknown name stays and is reported unresolved.
class PageExpander final : public StackObject<ITextExpander> {
public:
    std::map<std::wstring, std::wstring> variables;
    STDMETHODIMP QueryInterface(REFIID iid, void** object) override { return QueryOne<ITextExpander>(this, iid, object); }
    STDMETHODIMP ExpandText(BSTR text, long options, BSTR* expanded, VARIANT_BOOL interactive, long reserved,
                            long* unresolved) override;
    STDMETHODIMP ExpandForDisplay(BSTR text, BSTR* expanded) override {
        long unresolved = 0;
        return ExpandText(text, 0, expanded, VARIANT_FALSE, 0, &unresolved);
    }
};

// A step of stored properties that the page can also write to.
class PageStep final : public StackObject<IBuildStep, IBuildStepWriter> {
public:
    void SetText(const std::wstring& name, const std::wstring& text);
    void SetLong(const std::wstring& name, long value);
    bool Has(const std::wstring& name) const { return values_.count(name) != 0; }
    const VARIANT& Get(const std::wstring& name) const { return values_.at(name).get(); }
    std::wstring Text(const std::wstring& name) const { return tol::VariantToText(Get(name)); }   // numbers too
    std::vector<std::wstring> Array(const std::wstring& name) const;
    std::vector<std::wstring> removed;

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override {
        if (iid == __uuidof(IBuildStepWriter)) return *object = static_cast<IBuildStepWriter*>(this), S_OK;
        return QueryOne<IBuildStep>(this, iid, object);
    }
    STDMETHODIMP GetStoredProperty(BSTR name, VARIANT* value) override;
    STDMETHODIMP GetEvaluatedProperty(IBuildRun*, BSTR, VARTYPE, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP SetProperty(BSTR name, VARIANT value) override;
    STDMETHODIMP RemoveProperty(BSTR name, VARIANT* previous) override;

private:
    std::map<std::wstring, tol::variant> values_;
};

// Creates a page of the library by class name inside a hidden top-level window.
class PageHost {
public:
    explicit PageHost(const wchar_t* className, bool tooltips = false);
    ~PageHost();

    tol::PropertyPage& page() { return *page_; }
    HWND window() const { return page_->window(); }
    HWND Item(int id) const { return page_->Item(id); }
    std::wstring Text(int id) const;
    void SetText(int id, const std::wstring& text);   // as typing would: the page sees the change
    void Click(int id);                               // a click on a button
    void Select(int id, int index);                   // a selection in a list, notified as the user's
    std::vector<std::wstring> ListItems(int id) const;
    long Selection(int id) const { return static_cast<long>(::SendMessageW(Item(id), CB_GETCURSEL, 0, 0)); }
    bool Checked(int id) const { return ::SendMessageW(Item(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }
    bool Enabled(int id) const { return ::IsWindowEnabled(Item(id)) != FALSE; }
    void Load(IBuildStep* step, bool several = false) { page_->Load(step, several); Pump(); }
    bool Validate() { const bool valid = page_->Validate(); Pump(); return valid; }
    bool Save(PageStep& step) { return Validate() && (page_->Save(&step), true); }   // what OK does
    static void Pump();   // runs the posted messages of this thread

    PageSite site;
    PageExpander expander;

private:
    HWND parent_ = nullptr;
    std::unique_ptr<tol::PropertyPage> page_;
};

// Answers the message boxes shown while it lives with the given button and keeps their texts.
class MessageBoxAnswerer {
public:
    explicit MessageBoxAnswerer(int answer);
    ~MessageBoxAnswerer();
    std::vector<std::wstring> texts;

private:
    static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD);
    UINT_PTR timer_;
};

} // namespace test
