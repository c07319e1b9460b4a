// The typed values that the COM+ actions write on catalog objects, and step properties read as the host answers.
#pragma once
#include "frame/variant.h"
#include "VelmoraSvr.h"
#include <string_view>

namespace tol {

variant TextVariant(std::wstring_view text);
variant LongVariant(long value) noexcept;
variant BoolVariant(bool value) noexcept;

// The step's property as the host returns it for the requested type, without the frame's conversion.
variant ReadStepVariant(IBuildRun* build, IBuildStep* step, const wchar_t* name, VARTYPE requested);

} // namespace tol
