// One dunzip call after its block has been read: open the archive, pick the entries, extract them one by one.
#pragma once
#include "options.h"

namespace unzipper {

// Entries that cannot be extracted (unsafe names, encryption, unknown methods, bad data, files that cannot be
// written) are skipped with a message and the rest goes on; the call then returns the first such result. UnzipOk or
// UnzipNothingSelected when every selected entry came out.
UnzipResult RunUnzip(const UnzipOptions& options);

} // namespace unzipper
