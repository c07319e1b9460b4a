// The archive job: the owner of one command block of an archive library and of the callbacks that the library
// makes during the call. It answers the cancel callback from the build's stop signal, counts the file messages,
// hands them to its log operation, and turns the library's result into a step status or an error.
#pragma once
#include "callbacks.h"
#include "library.h"
#include "results.h"
#include "frame/com_ptr.h"
#include "frame/step.h"
#include <exception>

namespace tol {

class ArchiveJob {
public:
    // logDetail: the build becomes the log sink of the file messages; the count line is logged either way.
    ArchiveJob(IBuildRun* build, bool logDetail);
    virtual ~ArchiveJob() = default;
    ArchiveJob(const ArchiveJob&) = delete;
    ArchiveJob& operator=(const ArchiveJob&) = delete;

    // Calls the library with the job's block and maps the result: StepSucceeded or StepStopped after the count
    // line, or an error with the result's text.
    virtual StepStatus Run() = 0;
    // Logs one file message of the library; called only while the job has a log sink.
    virtual void LogLibraryMessage(const char* text) = 0;

    long FilesProcessed() const noexcept { return count_; }

protected:
    // Sets the count to 0, calls the entry point, then rethrows a failure that a callback kept, and maps the
    // result with the table.
    StepStatus CallLibrary(ArchiveLibrary& library, void* block, const ResultTable& results);
    IBuildRun* LogSink() const noexcept { return logSink_.get(); }

    static long __stdcall OnCancel(long done, long total, void* job) noexcept;
    static long __stdcall OnMessage(const char* text, unsigned long code, void* job) noexcept;
    static long __stdcall OnConfirm(const char* name, long operation, unsigned long sizeLow, unsigned long sizeHigh,
                                    unsigned long dosDateTime, unsigned long attributes, void* job) noexcept;

private:
    void HandleMessage(const char* text);
    StepStatus Finish(long result, const ResultTable& results);

    IBuildRun* build_;              // borrowed for the run: the count line goes here
    StopSignal stop_;
    com_ptr<IBuildRun> logSink_;    // the build while LogDetail is on
    long count_ = 0;
    std::exception_ptr failure_;    // what a callback could not throw across the library
};

} // namespace tol
