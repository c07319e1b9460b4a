// libFuzzer target over the archive reader: any bytes are read as an archive, every entry's name goes through the
// safety check and every entry is extracted (size and CRC checks included) into a sink that keeps nothing. The same
// bytes are also split as an argument list. Built natively with clang (fuzz/run).
#include "format/central_directory.h"
#include "format/command_line.h"
#include "format/entry_data.h"
#include "format/entry_path.h"
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Counts what it is given and refuses more than 64 MiB per input, so that a bomb of entries sharing one stream of
// highly compressed data costs time, not a timeout.
class CountingSink final : public zipformat::DataSink {
public:
    bool Write(const void*, std::size_t count) noexcept override {
        total_ += count;
        return total_ <= (std::uint64_t(64) << 20);
    }

private:
    std::uint64_t total_ = 0;
};

void ReadArchive(const std::uint8_t* data, std::size_t size) {
    zipformat::MemorySource source(data, size);
    zipformat::Archive archive;
    if (zipformat::ReadArchive(source, archive) != zipformat::Status::Ok) return;
    static zipformat::EntryExtractor extractor;
    CountingSink sink;
    for (const zipformat::Entry& entry : archive.entries) {
        zipformat::EntryPath path;
        (void)zipformat::SplitEntryPath(entry.name, path);
        (void)entry.IsFolder();
        (void)entry.DosAttributes();
        if (extractor.Extract(source, archive, entry, sink, nullptr) == zipformat::Status::WriteFailed) return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ReadArchive(data, size);
    std::vector<std::string> arguments;
    (void)zipformat::SplitArguments(std::string_view(reinterpret_cast<const char*>(data), size), arguments);
    return 0;
}
