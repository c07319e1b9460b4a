#include "build_step.h"
#include "host_object.h"
#include "values.h"
#include "text.h"

namespace host {
namespace {

std::wstring TypeName(VARTYPE type) {
    switch (type) {
    case VT_BSTR: return L"a text";
    case VT_BOOL: return L"true/false";
    case VT_I2:
    case VT_I4:
    case VT_UI2:
    case VT_UI4:
    case VT_INT:
    case VT_UINT: return L"an integer";
    case VT_R4:
    case VT_R8: return L"a number";
    case VT_DATE: return L"a date";
    default: return L"type " + std::to_wstring(type);
    }
}

// The value as the message shows it: texts quoted, anything else by kind.
std::wstring Shown(const VARIANT& value) {
    if (V_VT(&value) == VT_BSTR) return L"\"" + std::wstring(BstrView(V_BSTR(&value))) + L"\"";
    if (IsVariantArray(value)) return L"a list";
    return L"a value of type " + std::to_wstring(V_VT(&value));
}

class BuildStep final : public HostObject<IBuildStep, IBuildStepWriter> {
public:
    BuildStep(std::shared_ptr<PropertyMap> properties, std::shared_ptr<const Expander> expander)
        : properties_(std::move(properties)), expander_(std::move(expander)) {}

    STDMETHODIMP GetStoredProperty(BSTR name, VARIANT* value) override {
        if (value) ::VariantInit(value);
        return Call<IBuildStep>([&] {
            if (!value) throw comet::com_error(E_POINTER);
            *value = Stored(std::wstring(BstrView(name))).release();
            return S_OK;
        });
    }

    // The build argument may be null: expansion always uses the variables of this run.
    STDMETHODIMP GetEvaluatedProperty(IBuildRun*, BSTR name, VARTYPE wanted, VARIANT* value) override {
        if (value) ::VariantInit(value);
        return Call<IBuildStep>([&] {
            if (!value) throw comet::com_error(E_POINTER);
            *value = Evaluated(std::wstring(BstrView(name)), wanted).release();
            return S_OK;
        });
    }

    STDMETHODIMP SetProperty(BSTR name, VARIANT value) override {
        return Call<IBuildStepWriter>([&] {
            const std::wstring key(BstrView(name));
            if (key.empty()) ThrowDescribed(E_INVALIDARG, IID_IBuildStepWriter, L"A property needs a name.");
            tol::variant copy = CopyValue(value);
            properties_->insert_or_assign(key, std::move(copy));
            return S_OK;
        });
    }

    STDMETHODIMP RemoveProperty(BSTR name, VARIANT* previous) override {
        if (previous) ::VariantInit(previous);
        return Call<IBuildStepWriter>([&] {
            if (!previous) throw comet::com_error(E_POINTER);
            const auto found = properties_->find(std::wstring(BstrView(name)));
            if (found == properties_->end()) return S_OK;
            *previous = found->second.release();
            properties_->erase(found);
            return S_OK;
        });
    }

private:
    tol::variant Stored(const std::wstring& name) const {
        const auto found = properties_->find(name);
        return found == properties_->end() ? tol::variant() : CopyValue(found->second.get());
    }

    tol::variant Evaluated(const std::wstring& name, VARTYPE wanted) const {
        bool unresolved = false;
        const tol::variant stored = Stored(name);
        tol::variant expanded = ExpandValue(*expander_, stored.get(), unresolved);
        // A list is handed out as the list when a text is wanted; VT_VARIANT asks for the value as it is.
        if (wanted == VT_VARIANT || (wanted == VT_BSTR && IsVariantArray(expanded.get()))) return expanded;
        tol::variant converted;
        const HRESULT hr = ::VariantChangeTypeEx(converted.receive(), expanded.ptr(), ::GetThreadLocale(), 0, wanted);
        if (FAILED(hr))
            ThrowDescribed(hr, IID_IBuildStep,
                           L"The property \"" + name + L"\" holds " + Shown(expanded.get()) + L", which cannot be read as " +
                               TypeName(wanted) + L": " + SystemText(hr));
        return converted;
    }

    std::shared_ptr<PropertyMap> properties_;
    std::shared_ptr<const Expander> expander_;
};

} // namespace

tol::com_ptr<IBuildStep> MakeBuildStep(PropertyMap properties, std::shared_ptr<const Expander> expander) {
    return MakeBuildStep(std::make_shared<PropertyMap>(std::move(properties)), std::move(expander));
}

tol::com_ptr<IBuildStep> MakeBuildStep(std::shared_ptr<PropertyMap> properties, std::shared_ptr<const Expander> expander) {
    return MakeHostObject<IBuildStep, BuildStep>(std::move(properties), std::move(expander));
}

} // namespace host
