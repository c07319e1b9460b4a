// The three callbacks that the archive libraries make during one call, with the platform's standard calling
// convention (the callee removes its arguments). Shared by the command blocks of both libraries; compiles for
// 32-bit and 64-bit Windows without the Windows headers.
#pragma once

namespace tol {

// Polled between files and between blocks of a large file: done and total are the library's progress in entries;
// a nonzero answer asks the library to cancel.
using ArchiveCancelCallback = long(__stdcall*)(long done, long total, void* user);

// One message of the library: code 100 for every file, other codes for other notes; the answer is ignored.
using ArchiveMessageCallback = long(__stdcall*)(const char* text, unsigned long code, void* user);

// Asked before the library touches a file: operation 1 before a file is added to an archive, 2 before an extracted
// file replaces one that exists. Size, DOS date and time, and attributes describe the file. 1 goes ahead, 0 skips.
using ArchiveConfirmCallback = long(__stdcall*)(const char* name, long operation, unsigned long sizeLow,
                                                unsigned long sizeHigh, unsigned long dosDateTime,
                                                unsigned long attributes, void* user);

constexpr unsigned long kFileMessageCode = 100;
constexpr long kConfirmAdd = 1;
constexpr long kConfirmOverwrite = 2;

} // namespace tol
