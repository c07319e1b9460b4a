#include "text_expander.h"
#include "host_object.h"
#include "values.h"
#include "frame/bstr.h"

namespace host {
namespace {

class TextExpander final : public HostObject<ITextExpander> {
public:
    explicit TextExpander(std::shared_ptr<const Expander> expander) : expander_(std::move(expander)) {}

    // The options, interactive and reserved arguments change nothing here: the stand-in never asks the user.
    STDMETHODIMP ExpandText(BSTR text, long, BSTR* expanded, VARIANT_BOOL, long, long* unresolved) override {
        if (expanded) *expanded = nullptr;
        if (unresolved) *unresolved = 0;
        return Call<ITextExpander>([&] {
            if (!expanded || !unresolved) throw comet::com_error(E_POINTER);
            bool missing = false;
            *expanded = tol::bstr(expander_->Expand(BstrView(text), missing)).release();
            *unresolved = missing ? 1 : 0;
            return S_OK;
        });
    }

    STDMETHODIMP ExpandForDisplay(BSTR text, BSTR* expanded) override {
        if (expanded) *expanded = nullptr;
        return Call<ITextExpander>([&] {
            if (!expanded) throw comet::com_error(E_POINTER);
            bool missing = false;
            *expanded = tol::bstr(expander_->Expand(BstrView(text), missing)).release();
            return S_OK;
        });
    }

private:
    std::shared_ptr<const Expander> expander_;
};

} // namespace

tol::com_ptr<ITextExpander> MakeTextExpander(std::shared_ptr<const Expander> expander) {
    return MakeHostObject<ITextExpander, TextExpander>(std::move(expander));
}

} // namespace host
