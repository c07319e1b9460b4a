#include "action_pages.h"
#include "standins/cmax/codemax.h"

namespace tol {
namespace {

constexpr FieldDescriptor kScriptFields[] = {
    TextRow(1027, L"Text").Layout(kGrowWidth | kGrowHeight).File(),
};

} // namespace

ScriptPreviewUI::ScriptPreviewUI() noexcept : PropertyPage(2000, kScriptFields, std::size(kScriptFields)) {}

// The engine registers the languages but leaves the choice to the page: scripts here are JScript.
void ScriptPreviewUI::AfterCreate() {
    ::SendDlgItemMessageW(window(), 1027, CMM_SETLANGUAGE, 0, reinterpret_cast<LPARAM>(L"JScript"));
}

} // namespace tol
