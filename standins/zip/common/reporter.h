// The library's side of the three callbacks of a command block: file messages (code 100), the cancel poll and the
// confirmation. Each poll of the cancel callback costs the caller a wait on an event (about 0.1 ms under Wine), so
// between files it is asked for the first file and then for every 32nd; within a file's data after every MiB; and
// once more before a result is made final. A cancel latches.
#pragma once
#include "actions/zip/callbacks.h"
#include "format/io.h"
#include <cstdint>
#include <string>

namespace zipwin {

struct Callbacks {
    tol::ArchiveCancelCallback cancel = nullptr;
    void* cancelData = nullptr;
    tol::ArchiveMessageCallback message = nullptr;
    void* messageData = nullptr;
    tol::ArchiveConfirmCallback confirm = nullptr;
    void* confirmData = nullptr;
};

class Reporter {
public:
    Reporter(const Callbacks& callbacks, bool fileMessages) noexcept;

    void SetTotal(std::uint64_t entries) noexcept { total_ = entries; }
    void EntryDone() noexcept { ++done_; }

    // Between files: true once the caller has asked to cancel (asked at the first call and every 32nd).
    [[nodiscard]] bool Cancelled() noexcept;
    // Asks the caller now.
    [[nodiscard]] bool CancelledNow() noexcept;
    // A message with code 100, when file messages are on.
    void FileMessage(const std::string& text) noexcept;
    // Asks whether to go ahead with a file; without a confirm callback the answer is yes.
    [[nodiscard]] bool Confirm(const std::string& name, long operation, std::uint64_t size, std::uint32_t dosDateTime,
                               std::uint32_t attributes) noexcept;

private:
    Callbacks callbacks_;
    bool fileMessages_;
    bool cancelled_ = false;
    std::uint64_t calls_ = 0;
    std::uint64_t done_ = 0, total_ = 0;
};

// Progress through the data of one file: asks the cancel callback after every MiB, and every 64 MiB sends a
// progress line ("Progress name: 64 MiB of 300 MiB"), which the actions neither log nor count.
class FileProgress final : public zipformat::Progress {
public:
    FileProgress(Reporter& reporter, std::string name, std::uint64_t size) noexcept;
    [[nodiscard]] bool Continue(std::uint64_t bytesDone) noexcept override;

private:
    Reporter& reporter_;
    std::string name_;
    std::uint64_t size_;
    std::uint64_t nextPoll_;
    std::uint64_t nextLine_;
};

} // namespace zipwin
