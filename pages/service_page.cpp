// The Service page: the computer and service pick lists around the Service action's fields.
#include "action_pages.h"
#include "pickers.h"
#include <iterator>

namespace tol {
namespace {

constexpr int kComputer = 1034;
constexpr int kService = 1035;

constexpr FieldDescriptor kServiceFields[] = {
    TextRow(kComputer, L"Computer"),
    TextRow(kService, L"Service").Required().Layout(kGrowWidth),
    TypedRow(1036, L"Action", 1, 2), // "Start", "Stop"; the hidden "Delete" button is not part of the group
};

} // namespace

ServiceUI::ServiceUI() noexcept : PropertyPage(181, kServiceFields, std::size(kServiceFields)) {}

void ServiceUI::AfterCreate() {
    FillComputerList(Item(kComputer));
    FillServiceList(window(), kService, WindowText(Item(kComputer)));
}

// Leaving the computer field lists that computer's services; loading another step leaves both lists alone.
bool ServiceUI::OnCommand(WORD id, WORD code, HWND) {
    if (id != kComputer || code != CBN_KILLFOCUS) return false;
    FillServiceList(window(), kService, WindowText(Item(kComputer)));
    return true;
}

} // namespace tol
