// The computer whose catalog this is: the only one the stand-in can connect to.
#pragma once
#include <string>
#include <string_view>

namespace complus {

std::wstring LocalComputerName();

// True for an empty name, ".", "localhost", the loopback address and this computer's NetBIOS, DNS and fully
// qualified names, with or without a leading "\\", without regard to case.
bool IsLocalComputer(std::wstring_view name);

} // namespace complus
