// One dzip call after its block has been read: list, plan, write, commit.
#pragma once
#include "options.h"

namespace zipper {

ZipResult RunZip(const ZipOptions& options);

} // namespace zipper
