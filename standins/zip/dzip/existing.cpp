#include "existing.h"
#include "common/long_path.h"
#include "format/central_directory.h"
#include <windows.h>

namespace zipper {

ZipResult OpenExisting(const ZipOptions& options, ExistingArchive& existing) {
    existing.present = false;
    const std::wstring path = zipwin::SystemPath(options.zipFile);
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) return ZipOk;
    if (attributes & FILE_ATTRIBUTE_DIRECTORY) return ZipCreateFailed;
    if (!existing.source.Open(path)) return ZipCreateFailed;
    if (existing.source.Size() == 0) {
        existing.source.Close();
        return ZipOk;
    }
    existing.present = true;
    return ResultOf(zipformat::ReadArchive(existing.source, existing.archive));
}

} // namespace zipper
