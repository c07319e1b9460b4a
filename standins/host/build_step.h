// A step of the script as an action sees it: IBuildStep to read properties, IBuildStepWriter to change them.
#pragma once
#include "expander.h"
#include "VelmoraSvr.h"
#include "frame/com_ptr.h"
#include <memory>

namespace host {

// The step holds its own copy of the properties; evaluation expands with the run's variables.
tol::com_ptr<IBuildStep> MakeBuildStep(PropertyMap properties, std::shared_ptr<const Expander> expander);

// A step over the caller's map: what IBuildStepWriter sets and removes is there for the caller to read back.
tol::com_ptr<IBuildStep> MakeBuildStep(std::shared_ptr<PropertyMap> properties, std::shared_ptr<const Expander> expander);

} // namespace host
