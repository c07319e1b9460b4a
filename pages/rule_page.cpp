#include "action_pages.h"

namespace tol {

void RulePage::AfterLoad(IBuildStep*) { ApplyRules(); }

bool RulePage::OnCommand(WORD, WORD code, HWND) {
    if ((code == BN_CLICKED && (triggers_ & kOnClick)) || (code == CBN_SELCHANGE && (triggers_ & kOnSelection)))
        ApplyRules();
    return false; // the engine still tracks the change
}

long RulePage::Selection(int listId) const noexcept {
    return static_cast<long>(::SendMessageW(Item(listId), CB_GETCURSEL, 0, 0));
}

void RulePage::EnableItems(std::initializer_list<int> ids, bool enable) const noexcept {
    for (int id : ids) EnableItem(id, enable);
}

} // namespace tol
