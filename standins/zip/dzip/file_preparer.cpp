#include "file_preparer.h"
#include "frame/handles.h"
#include <windows.h>
#include <algorithm>
#include <new>

namespace zipper {
namespace {

constexpr std::uint64_t kWindow = std::uint64_t(192) << 20;  // bytes of source files in preparation or waiting

bool IsLocked(DWORD code) noexcept { return code == ERROR_SHARING_VIOLATION || code == ERROR_LOCK_VIOLATION; }

// The whole file, one byte more than listed asked for so that a file that grew is noticed.
PreparedFile::Outcome ReadWhole(const SourceFile& file, std::vector<unsigned char>& data) {
    const tol::unique_file handle(::CreateFileW(file.path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                                FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!handle) return IsLocked(::GetLastError()) ? PreparedFile::Locked : PreparedFile::NotOpened;
    data.resize(static_cast<size_t>(file.size) + 1);
    size_t total = 0;
    while (total < data.size()) {
        DWORD read = 0;
        const DWORD want = static_cast<DWORD>(std::min<size_t>(data.size() - total, 16u << 20));
        if (!::ReadFile(handle.get(), data.data() + total, want, &read, nullptr)) return PreparedFile::ReadFailed;
        total += read;
        if (read < want) break;
    }
    if (total > file.size) return PreparedFile::Grown;
    data.resize(total);
    return PreparedFile::Ready;
}

unsigned WorkerCount() {
    const unsigned processors = std::thread::hardware_concurrency();
    return std::clamp(processors, 1u, 4u);
}

} // namespace

FilePreparer::FilePreparer(const std::vector<SourceFile>& files, std::vector<size_t> order, int level)
    : files_(files), order_(std::move(order)), wanted_(files.size(), false), level_(level) {
    for (const size_t index : order_) wanted_[index] = true;
    const unsigned count = std::min<unsigned>(WorkerCount(), static_cast<unsigned>(order_.size()));
    for (unsigned i = 0; i < count; ++i) workers_.emplace_back(&FilePreparer::Work, this);
}

FilePreparer::~FilePreparer() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        stopping_ = true;
    }
    changed_.notify_all();
    for (std::thread& worker : workers_) worker.join();
}

bool FilePreparer::Has(size_t file) const noexcept { return file < wanted_.size() && wanted_[file]; }

PreparedFile FilePreparer::Prepare(const SourceFile& file, zipformat::Deflater& deflater) const {
    PreparedFile prepared;
    try {
        std::vector<unsigned char> data;
        prepared.outcome = ReadWhole(file, data);
        if (prepared.outcome == PreparedFile::Ready &&
            zipformat::PrepareData(deflater, level_, std::move(data), prepared.data) != zipformat::Status::Ok)
            prepared.outcome = PreparedFile::NoMemory;
    } catch (const std::bad_alloc&) {
        prepared = PreparedFile{PreparedFile::NoMemory, {}};
    }
    return prepared;
}

// A worker takes the next file while the window has room (the first file waiting is always let through).
void FilePreparer::Work() {
    zipformat::Deflater deflater(level_ > 0 ? level_ : 1);
    std::unique_lock<std::mutex> lock(mutex_);
    for (;;) {
        changed_.wait(lock, [&] {
            if (stopping_ || next_ >= order_.size()) return true;
            return held_ == 0 || held_ + files_[order_[next_]].size <= kWindow;
        });
        if (stopping_ || next_ >= order_.size()) return;
        const size_t index = order_[next_++];
        held_ += files_[index].size;
        lock.unlock();
        PreparedFile prepared = Prepare(files_[index], deflater);
        lock.lock();
        ready_.emplace(index, std::move(prepared));
        changed_.notify_all();
    }
}

PreparedFile FilePreparer::Take(size_t file) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [&] { return ready_.count(file) != 0; });
    PreparedFile prepared = std::move(ready_.at(file));
    ready_.erase(file);
    held_ -= files_[file].size;
    changed_.notify_all();
    return prepared;
}

} // namespace zipper
