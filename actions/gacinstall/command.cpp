#include "command.h"
#include "frame/bstr.h"
#include "frame/com_ptr.h"
#include "frame/errors.h"
#include "frame/step.h"

namespace tol {
namespace {

constexpr long kExpandOptions = 3;

com_ptr<ITextExpander> TextExpanderOf(IBuildRun* build) {
    if (!build) throw comet::com_error(E_POINTER);
    com_ptr<ITextExpander> expander;
    THROW_IF_HOST_FAILED(build, IBuildRun, build->GetTextExpander(expander.put()));
    if (!expander) throw comet::com_error(E_POINTER);
    return expander;
}

} // namespace

std::wstring ExpandCommandTemplate(IBuildRun* build) {
    const com_ptr<ITextExpander> expander = TextExpanderOf(build);
    const bstr text(kGacCommandTemplate);
    bstr expanded;
    long unresolved = 0;
    THROW_IF_HOST_FAILED(expander.get(), ITextExpander,
                         expander->ExpandText(text.get(), kExpandOptions, expanded.receive(), VARIANT_FALSE, 0, &unresolved));
    return expanded.str();
}

std::wstring ReadGacSwitch(IBuildRun* build, IBuildStep* step, bool unregister) {
    if (unregister) {
        if (GetStepBool(step, build, L"NGEN")) return L" /ungen";
        return GetStepBool(step, build, L"Force") ? L" /uf" : L" /u";
    }
    return GetStepBool(step, build, L"Force") ? L" /if" : L" /i";
}

std::wstring QuotedAssemblyPath(const std::wstring& filename) { return L" \"" + filename + L"\""; }

} // namespace tol
