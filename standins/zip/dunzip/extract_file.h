// Extracting one file entry. A new file is written under its own name and deleted again if anything goes wrong; an
// existing file is replaced only by a complete, checked copy (written beside it under a temporary name), so a bad
// entry never leaves a partial file under the entry's name.
#pragma once
#include "options.h"
#include "target.h"
#include "common/file_sink.h"
#include "format/entry_data.h"
#include <set>
#include <string>

namespace unzipper {

enum class FileOutcome { Written, Skipped, ReadOnly, Failed };

class FileExtractor {
public:
    FileExtractor(const UnzipOptions& options, zipformat::ByteSource& source, const zipformat::Archive& archive,
                  zipwin::Reporter& reporter);

    // Written with a file message; Skipped without one (freshen and update found nothing newer to extract, or the
    // confirm callback said no); ReadOnly when an existing read-only file is not to be replaced; Failed with result.
    FileOutcome Extract(const zipformat::Entry& entry, const Target& target, UnzipResult& result);

private:
    bool Wanted(const zipformat::Entry& entry, const Target& target, DWORD existing) const;
    FileOutcome Replace(const zipformat::Entry& entry, const Target& target, UnzipResult& result);
    FileOutcome Done(const zipformat::Entry& entry, const Target& target, UnzipResult& result);
    bool MakeFolder(const std::wstring& folder);
    UnzipResult WriteNew(const zipformat::Entry& entry, const Target& target, tol::unique_file file);
    UnzipResult WriteReplacement(const zipformat::Entry& entry, const Target& target);
    UnzipResult WriteData(const zipformat::Entry& entry, tol::unique_file file, const std::string& name);
    void Finish(const zipformat::Entry& entry, const Target& target);

    const UnzipOptions& options_;
    zipformat::ByteSource& source_;
    const zipformat::Archive& archive_;
    zipwin::Reporter& reporter_;
    zipformat::EntryExtractor extractor_;
    zipwin::FileSink sink_;
    std::set<std::wstring> folders_;  // folded folders that exist: each is checked or made once
};

// The message text of a file: the 13-character lead, then the destination as the block gave it and the path below
// it, in the ANSI code page.
std::string FileMessageText(const char* lead, const UnzipOptions& options, const std::wstring& relative);

constexpr char kWrittenLead[] = "Item written ";
constexpr char kSkippedLead[] = "Item skipped ";
static_assert(sizeof kWrittenLead - 1 == 13 && sizeof kSkippedLead - 1 == 13, "the leads are 13 characters");

} // namespace unzipper
