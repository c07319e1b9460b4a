#include "zip_run.h"
#include "add_file.h"
#include "archive_output.h"
#include "existing.h"
#include "file_preparer.h"
#include "plan.h"
#include <optional>

namespace zipper {
namespace {

// Everything one call works with, in the order in which it is made.
struct ZipRun {
    const ZipOptions& options;
    zipwin::Reporter reporter;
    std::vector<SourceFile> files;
    ExistingArchive existing;
    Plan plan;
    std::vector<size_t> added;  // files that went into the archive
};

ZipResult Prepare(ZipRun& run) {
    ZipResult result = ListFiles(run.options, run.files);
    if (result != ZipOk) return result;
    if ((result = OpenExisting(run.options, run.existing)) != ZipOk) return result;
    if (!run.existing.present && run.options.function == tol::ZipFreshen) return ZipMissingArchive;
    run.plan = MakePlan(run.options.function, run.existing.present ? &run.existing.archive : nullptr, run.files,
                        run.options.grow && (!run.existing.present || run.existing.archive.shift == 0));
    const bool newComment = run.options.setComment && run.options.comment != run.existing.archive.comment;
    return run.plan.additions == 0 && !newComment ? ZipNothingToDo : ZipOk;
}

// The files that workers read and compress ahead: those added whole, in the order of the plan.
std::vector<size_t> PreparedOrder(const ZipRun& run) {
    std::vector<size_t> order;
    for (const PlanStep& step : run.plan.steps) {
        if (step.kind != StepKind::Add) continue;  // the other steps index the existing entries
        const SourceFile& file = run.files[step.index];
        if (!file.folder && file.size <= kPreparedLimit) order.push_back(step.index);
    }
    return order;
}

ZipResult WriteStep(ZipRun& run, zipformat::ArchiveWriter& writer, FileAdder& adder, FilePreparer& preparer,
                    const PlanStep& step) {
    const zipformat::Archive& archive = run.existing.archive;
    if (step.kind == StepKind::Keep) {
        writer.KeepEntry(archive.entries[step.index]);
        return ZipOk;
    }
    if (step.kind == StepKind::Copy) {
        const zipformat::Entry& entry = archive.entries[step.index];
        zipwin::FileProgress progress(run.reporter, entry.name, entry.compressedSize);
        return ResultOf(writer.CopyEntry(run.existing.source, archive, entry, &progress));
    }
    bool added = false;
    std::optional<PreparedFile> prepared;
    if (preparer.Has(step.index)) prepared = preparer.Take(step.index);
    const ZipResult result = adder.Add(run.files[step.index], step.replaces, added, prepared ? &*prepared : nullptr);
    if (added) run.added.push_back(step.index);
    return result;
}

ZipResult WriteArchive(ZipRun& run, zipformat::ByteSink& sink) {
    zipformat::ArchiveWriter writer(sink, run.options.level, run.options.allowZip64);
    FileAdder adder(writer, run.reporter, run.options);
    FilePreparer preparer(run.files, PreparedOrder(run), run.options.level);
    run.reporter.SetTotal(run.plan.steps.size());
    for (const PlanStep& step : run.plan.steps) {
        if (run.reporter.Cancelled()) return ZipCancelled;
        const ZipResult result = WriteStep(run, writer, adder, preparer, step);
        if (result != ZipOk) return result;
        run.reporter.EntryDone();
    }
    const std::string& comment = run.options.setComment ? run.options.comment : run.existing.archive.comment;
    return ResultOf(writer.Finish(comment));
}

void ResetArchiveAttributes(const ZipRun& run) {
    for (const size_t index : run.added) {
        const SourceFile& file = run.files[index];
        if (file.folder || !(file.attributes & FILE_ATTRIBUTE_ARCHIVE)) continue;
        const DWORD kept = file.attributes & ~FILE_ATTRIBUTE_ARCHIVE;
        ::SetFileAttributesW(file.path.c_str(), kept ? kept : FILE_ATTRIBUTE_NORMAL);
    }
}

} // namespace

ZipResult RunZip(const ZipOptions& options) {
    ZipRun run{options, zipwin::Reporter(options.callbacks, options.fileMessages), {}, {}, {}, {}};
    ZipResult result = Prepare(run);
    if (result != ZipOk) return result;
    if (run.reporter.Cancelled()) return ZipCancelled;
    ArchiveOutput output;
    const bool growing = options.grow && (!run.existing.present || run.existing.archive.shift == 0);
    if ((result = output.Open(options.zipFile, run.existing, growing)) != ZipOk) return result;
    if ((result = WriteArchive(run, output.Sink())) != ZipOk) return result;
    if (run.reporter.CancelledNow()) return ZipCancelled;  // the last moment to keep the archive as it was
    if ((result = output.Commit(run.existing)) != ZipOk) return result;
    if (options.resetArchive) ResetArchiveAttributes(run);
    return ZipOk;
}

} // namespace zipper
