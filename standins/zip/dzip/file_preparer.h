// Reading and compressing the files of an archive ahead of the writer, on worker threads (one per processor, at
// most four), so that the writing thread only writes. The files are taken in the order in which they are written;
// a window bounds the memory that prepared files hold. Nothing here calls back into the caller: the callbacks stay
// on the calling thread.
#pragma once
#include "file_list.h"
#include "format/writer.h"
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <thread>
#include <vector>

namespace zipper {

// Files up to this size are read whole and prepared ahead; larger ones are streamed by the writing thread.
constexpr std::uint64_t kPreparedLimit = std::uint64_t(64) << 20;

struct PreparedFile {
    enum Outcome { Ready, Locked, NotOpened, ReadFailed, Grown, NoMemory } outcome = Ready;
    zipformat::PreparedData data;
};

class FilePreparer {
public:
    // order: indexes into files, in the order in which Take will ask for them.
    FilePreparer(const std::vector<SourceFile>& files, std::vector<size_t> order, int level);
    ~FilePreparer();
    FilePreparer(const FilePreparer&) = delete;
    FilePreparer& operator=(const FilePreparer&) = delete;

    bool Has(size_t file) const noexcept;
    // Waits until the file is ready and hands it over. Every file of the order must be taken, in that order (also
    // one that is then not added), or the window stays full.
    PreparedFile Take(size_t file);

private:
    void Work();
    PreparedFile Prepare(const SourceFile& file, zipformat::Deflater& deflater) const;

    const std::vector<SourceFile>& files_;
    const std::vector<size_t> order_;
    std::vector<bool> wanted_;       // by file index: in order_
    const int level_;
    std::mutex mutex_;
    std::condition_variable changed_;
    size_t next_ = 0;                // position in order_ of the next file to prepare
    std::uint64_t held_ = 0;         // bytes of files started and not yet handed over
    bool stopping_ = false;
    std::map<size_t, PreparedFile> ready_;
    std::vector<std::thread> workers_;
};

} // namespace zipper
