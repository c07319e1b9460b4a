// The run's ITextExpander: expands %NAME% references for actions.
#pragma once
#include "expander.h"
#include "VelmoraSvr.h"
#include "frame/com_ptr.h"
#include <memory>

namespace host {

tol::com_ptr<ITextExpander> MakeTextExpander(std::shared_ptr<const Expander> expander);

} // namespace host
