// Pick lists that do not come from a page's field table: the servers of the network and the Win32 services of a
// computer, offered by the Service page's editable combo boxes.
#pragma once
#include <windows.h>
#include <string>
#include <vector>

namespace tol {

// Refills the combo box with the names of the network's servers, in the order the enumeration returns them. A failed
// enumeration is silent and leaves the list as it was: names can still be typed.
void FillComputerList(HWND combo);

// What the service control manager of a computer answered.
struct ServiceQuery {
    bool listed = false;                   // false: the list is to stay as it was
    std::vector<std::wstring> displayNames; // own-process and shared-process services in any state, in the order returned
    std::wstring error;                    // the message for the user when a call failed
};

// Asks the service control manager of the computer (an empty name: this one) for its Win32 services.
ServiceQuery QueryServices(const std::wstring& computer);

// Refills the page's service combo box from QueryServices, keeping the text it shows; a failure is shown in a
// message box owned by the page and the list keeps its entries.
void FillServiceList(HWND page, int comboId, const std::wstring& computer);

} // namespace tol
