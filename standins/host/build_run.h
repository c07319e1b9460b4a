// The run as actions see it: the log, the stop event, the text expander and the command runner.
#pragma once
#include "expander.h"
#include "log.h"
#include "VelmoraSvr.h"
#include "frame/com_ptr.h"
#include <memory>

namespace host {

// log and stopEvent belong to the caller and must outlive the object.
tol::com_ptr<IBuildRun> MakeBuildRun(Log& log, HANDLE stopEvent, std::shared_ptr<const Expander> expander);

} // namespace host
