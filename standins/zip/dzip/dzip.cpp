// DZIP32.dll's entry point: reads the command block and zips, freshens or updates the archive it names.
#include "options.h"
#include "zip_run.h"
#include <new>

namespace {
constexpr long kInternalError = 5;
} // namespace

// Nothing thrown inside crosses into the caller: running out of memory is result 4, anything else result 5.
extern "C" long __stdcall dzip(tol::ZipCommandBlock* block) noexcept {
    if (!block) return zipper::ZipBadParameters;
    try {
        zipper::ZipOptions options;
        const zipper::ZipResult result = zipper::ReadOptions(*block, options);
        return result != zipper::ZipOk ? result : zipper::RunZip(options);
    } catch (const std::bad_alloc&) {
        return zipper::ZipNoMemory;
    } catch (...) {
        return kInternalError;
    }
}
