// DUNZIP32.dll's entry point: reads the command block and extracts from the archive it names.
#include "options.h"
#include "unzip_run.h"
#include <new>

// Nothing thrown inside crosses into the caller: running out of memory is result 4, anything else result 47.
extern "C" long __stdcall dunzip(tol::UnzipCommandBlock* block) noexcept {
    if (!block) return unzipper::UnzipSyntaxError;
    try {
        unzipper::UnzipOptions options;
        const unzipper::UnzipResult result = unzipper::ReadOptions(*block, options);
        return result != unzipper::UnzipOk ? result : unzipper::RunUnzip(options);
    } catch (const std::bad_alloc&) {
        return unzipper::UnzipNoMemory;
    } catch (...) {
        return unzipper::UnzipSyntaxError;
    }
}
