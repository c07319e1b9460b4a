// Host objects for tests that call an action or a frame routine directly, as the host would.
#pragma once
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include "frame/handles.h"
#include "frame/variant.h"
#include "VelmoraSvr.h"
#include <map>
#include <string>
#include <vector>

namespace test {

// Reference counting for objects that tests keep on the stack; they outlive every call made on them.
template <class... Interfaces>
class StackObject : public Interfaces... {
public:
    STDMETHODIMP_(ULONG) AddRef() override { return 2; }
    STDMETHODIMP_(ULONG) Release() override { return 1; }
};

// A step whose properties are VARIANTs given by the test; a property may instead fail with an HRESULT
// and a description, which the step then offers as error information.
class TestStep final : public StackObject<IBuildStep, ISupportErrorInfo> {
public:
    void Set(const std::wstring& name, VARIANT value) { values_[name] = value; }
    void SetText(const std::wstring& name, const std::wstring& text);
    void Fail(const std::wstring& name, HRESULT hr, const std::wstring& description);
    void SupportErrorInfo(bool on) { supportsErrorInfo_ = on; }
    ~TestStep();

    std::vector<VARTYPE> requested; // the types asked for, in order

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP GetStoredProperty(BSTR name, VARIANT* value) override;
    STDMETHODIMP GetEvaluatedProperty(IBuildRun* build, BSTR name, VARTYPE wanted, VARIANT* value) override;
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override;

private:
    HRESULT Answer(BSTR name, VARIANT* value);
    std::map<std::wstring, VARIANT> values_;
    std::map<std::wstring, std::pair<HRESULT, std::wstring>> failures_;
    bool supportsErrorInfo_ = true;
};

// A build that records its log lines and owns a manual-reset stop event.
class TestBuild final : public StackObject<IBuildRun> {
public:
    TestBuild();
    std::vector<std::wstring> log;
    HANDLE stopEvent() const { return stop_.get(); }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) override;
    STDMETHODIMP GetTextExpander(ITextExpander** expander) override;
    STDMETHODIMP RunCommandLine(BSTR, BSTR, VARIANT*, long, BSTR, long, long, VARIANT_BOOL, BSTR, long*) override;
    STDMETHODIMP LogMessage(BSTR text, VARIANT_BOOL) override;
    STDMETHODIMP GetStopEvent(long* event) override;

private:
    tol::unique_event stop_;
};

} // namespace test
