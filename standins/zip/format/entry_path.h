// The safety check of an entry's name before anything is written for it: the name must stay inside the
// destination folder whatever the platform makes of it.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace zipformat {

struct EntryPath {
    std::vector<std::string> components;  // the folders and the file, in order, without separators
    bool folder = false;                  // the name ends with a separator
};

// Splits a stored name (UTF-8 or a single-byte code page: only ASCII bytes are inspected) at "/" and "\" and
// rejects it (false) when it could reach outside the folder it is extracted into or name something other than a
// file there: an absolute name, a drive or stream name (any ":"), a ".." component, a component that is only dots
// and blanks (Windows drops trailing dots and blanks), a device name (CON, NUL, COM1, ...), control characters or
// one of <>"|?*. "." components and doubled separators are dropped; a name left without components is rejected.
[[nodiscard]] bool SplitEntryPath(std::string_view name, EntryPath& path);

} // namespace zipformat
