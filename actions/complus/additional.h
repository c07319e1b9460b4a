// The additional catalog properties of a step: the names in Props and the values in Values, paired by position,
// each value typed by its own text and written on a catalog object.
#pragma once
#include "catalog.h"
#include "VelmoraSvr.h"

namespace tol {

// A name without a value at its position (Values shorter than Props, or not an array) is skipped: the action
// writes no value that the step does not give.
void WriteAdditionalProperties(const CatalogItem& object, IBuildRun* build, IBuildStep* step);

} // namespace tol
