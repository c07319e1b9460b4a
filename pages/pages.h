// The page classes of the step editor, made by class name ("WriteINIUI", "COMPlusPropUI", ...).
#pragma once
#include "page.h"
#include <memory>
#include <string_view>

namespace tol {

// The page object of a page class, or null when the name is not one of the library's pages.
std::unique_ptr<PropertyPage> CreatePropertyPage(std::wstring_view className);

} // namespace tol
