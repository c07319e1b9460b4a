// The archive format code on its own, in memory: what the writer makes reads back the same, ZIP64 records where
// offsets and sizes need them, damaged archives give their status, and the two text checks (entry names and
// argument lists) decide as they should.
#include "library_calls.h"
#include "format/central_directory.h"
#include "format/command_line.h"
#include "format/entry_data.h"
#include "format/entry_path.h"
#include "format/records.h"
#include "format/writer.h"
#include <gtest/gtest.h>
#include <functional>

using namespace zipformat;
using ziptest::Compressible;
using ziptest::Put32At;

namespace {

NewEntry Named(const std::string& name, std::uint64_t expected = 0) {
    NewEntry entry;
    entry.name = name;
    entry.dosDateTime = 0x5A210000 | (12 << 11);
    entry.modified = 1700000000;
    entry.expectedSize = expected;
    return entry;
}

} // namespace

// A sink and a source that place the archive 5 GiB into a file of zeros, so that offsets need ZIP64.
struct FarSink final : ByteSink {
    static constexpr std::uint64_t kBase = std::uint64_t(5) << 30;
    std::string bytes;
    bool Write(const void* data, std::size_t count) noexcept override {
        bytes.append(static_cast<const char*>(data), count);
        return true;
    }
    std::uint64_t Position() const noexcept override { return kBase + bytes.size(); }
    bool Overwrite(std::uint64_t offset, const void* data, std::size_t count) noexcept override {
        bytes.replace(offset - kBase, count, static_cast<const char*>(data), count);
        return true;
    }
    bool Truncate(std::uint64_t offset) noexcept override {
        bytes.resize(offset - kBase);
        return true;
    }
};

struct FarSource final : ByteSource {
    const std::string& bytes;
    explicit FarSource(const std::string& b) : bytes(b) {}
    std::uint64_t Size() const noexcept override { return FarSink::kBase + bytes.size(); }
    bool ReadAt(std::uint64_t offset, void* buffer, std::size_t count) noexcept override {
        if (offset > Size() || count > Size() - offset) return false;
        auto* out = static_cast<char*>(buffer);
        for (std::size_t i = 0; i < count; ++i)
            out[i] = offset + i < FarSink::kBase ? '\0' : bytes[offset + i - FarSink::kBase];
        return true;
    }
};

// Offsets beyond 4 GiB and sizes above it go into ZIP64 records and come back from them; without ZIP64 both are refused.
TEST(ArchiveFormat, OffsetsAndSizesBeyondFourGibibytesUseZip64) {
    FarSink sink;
    ArchiveWriter writer(sink, 5, true);
    ASSERT_EQ(writer.AddFile(Named("far.txt"), "far away", 8), Status::Ok);
    Entry big;
    big.name = "huge.iso";
    big.size = big.compressedSize = (std::uint64_t(9) << 30) + 7;
    big.madeBy = big.versionNeeded = kVersionDefault;
    writer.KeepEntry(big);
    ASSERT_EQ(writer.Finish(""), Status::Ok);
    FarSource source(sink.bytes);
    Archive archive;
    ASSERT_EQ(ReadArchive(source, archive), Status::Ok);
    EXPECT_TRUE(archive.zip64);
    ASSERT_EQ(archive.entries.size(), 2u);
    EXPECT_EQ(archive.entries[0].localOffset, FarSink::kBase);
    EntryExtractor extractor;
    MemorySink far;
    ASSERT_EQ(extractor.Extract(source, archive, archive.entries[0], far, nullptr), Status::Ok);
    EXPECT_EQ(far.bytes, "far away");
    EXPECT_EQ(std::tuple(archive.entries[1].size, archive.entries[1].compressedSize, archive.entries[1].versionNeeded),
              std::tuple(big.size, big.size, kVersionZip64)) << "size, compressed size, version needed";
    EXPECT_EQ(archive.entries[1].extra, "") << "the ZIP64 field is not kept as an ordinary one";

    FarSink refused;
    ArchiveWriter without(refused, 5, false);
    ASSERT_EQ(without.AddFile(Named("far.txt"), "far away", 8), Status::Ok);
    EXPECT_EQ(without.Finish(""), Status::TooLarge);
    MemorySink small;
    ArchiveWriter streamed(small, 5, false);
    EXPECT_EQ(streamed.BeginFile(Named("stream.bin", std::uint64_t(5) << 30)), Status::TooLarge);
}

std::size_t Nth(const std::string& bytes, const char* signature, int n) {
    std::size_t at = std::string::npos;
    for (int i = 0; i < n; ++i) at = bytes.find(signature, at + 1);
    return at;
}

// Damage to each part of a small archive of two entries ("one.txt" stored, "two.txt" deflated).
TEST(ArchiveFormat, DamagedArchivesGiveTheirStatus) {
    MemorySink sink;
    ArchiveWriter writer(sink, 6, true);
    const std::string text = Compressible(20000);
    ASSERT_EQ(writer.AddFile(Named("one.txt"), "x", 1), Status::Ok);
    ASSERT_EQ(writer.AddFile(Named("two.txt"), text.data(), text.size()), Status::Ok);
    ASSERT_EQ(writer.Finish("note"), Status::Ok);
    const std::string good = sink.bytes;
    const std::size_t local = Nth(good, "PK\3\4", 2);
    const std::size_t directory = Nth(good, "PK\1\2", 1), central = Nth(good, "PK\1\2", 2);
    const std::size_t end = Nth(good, "PK\5\6", 1);
    const std::uint32_t directoryOffset = static_cast<std::uint32_t>(directory);
    struct Row {
        const char* name;
        std::function<std::string(std::string)> damage;
        Status read;    // of the archive
        Status second;  // of extracting two.txt when the archive reads
    } rows[] = {
        {"undamaged", [](std::string a) { return a; }, Status::Ok, Status::Ok},
        {"shorter than an end record", [](std::string a) { return a.substr(0, 21); }, Status::Truncated, Status::Ok},
        {"no end record", [&](std::string a) { return a.substr(0, end); }, Status::Corrupt, Status::Ok},
        {"the directory starts beyond its end", [&](std::string a) { return Put32At(a, end + 16, directoryOffset + 1000); },
         Status::Corrupt, Status::Ok},
        {"a bad directory signature", [&](std::string a) { a[directory] = 'Q'; return a; }, Status::Corrupt, Status::Ok},
        {"an entry count that lies", [&](std::string a) { a[end + 10] = 5; return a; }, Status::Corrupt, Status::Ok},
        {"a bad local signature", [&](std::string a) { a[local] = 'Q'; return a; }, Status::Ok, Status::Corrupt},
        {"a size too small", [&](std::string a) { return Put32At(a, central + 24, 19999); }, Status::Ok, Status::Corrupt},
        {"a size too large", [&](std::string a) { return Put32At(a, central + 24, 20001); }, Status::Ok, Status::Corrupt},
        {"a stub in front", [](std::string a) { return "MZ stub of 22 bytes.." + a; }, Status::Ok, Status::Ok},
    };
    for (const Row& row : rows) {
        const std::string damaged = row.damage(good);
        MemorySource source(damaged.data(), damaged.size());
        Archive archive;
        ASSERT_EQ(ReadArchive(source, archive), row.read) << row.name;
        if (row.read != Status::Ok) continue;
        ASSERT_EQ(archive.entries.size(), 2u) << row.name;
        EntryExtractor extractor;
        MemorySink out;
        EXPECT_EQ(extractor.Extract(source, archive, archive.entries[1], out, nullptr), row.second) << row.name;
        EXPECT_LE(out.bytes.size(), text.size()) << row.name << ": never more than the entry's size";
        if (row.second == Status::Ok) {
            EXPECT_EQ(out.bytes, text) << row.name;
        }
    }
}

// Safe names split into their components; every way out of the destination, every device name and every
// character the file system refuses is turned away.
TEST(EntryNames, OnlyNamesThatStayInsideThePass) {
    struct Row {
        const char* name;
        std::vector<std::string> components;
        bool folder;
    } safe[] = {
        {"bin/x64/app.exe", {"bin", "x64", "app.exe"}, false},
        {"bin\\x64\\", {"bin", "x64"}, true},
        {"./a//b/./c", {"a", "b", "c"}, false},
        {"a..b/..c/c..", {"a..b", "..c", "c.."}, false},
        {"console.txt", {"console.txt"}, false},
    };
    for (const Row& row : safe) {
        EntryPath path;
        ASSERT_TRUE(SplitEntryPath(row.name, path)) << row.name;
        EXPECT_EQ(path.components, row.components) << row.name;
        EXPECT_EQ(path.folder, row.folder) << row.name;
    }
    const char* unsafe[] = {
        "", ".", "../evil.txt", "a/../../evil.txt", "a\\..\\evil.txt", "/etc/passwd", "\\windows\\win.ini",
        "C:/evil.txt", "C:evil.txt", "...", ".. /evil.txt", "a/. ./b", "CON", "nul.txt", "sub/Com1.log", "lpt9",
        "aux .h", "CONOUT$", "tab\there", "what?.txt",
    };
    for (const char* name : unsafe) {
        EntryPath path;
        EXPECT_FALSE(SplitEntryPath(name, path)) << name;
    }
}

// The libraries read the actions' quoting back: what was quoted comes out as it went in.
TEST(ArgumentLists, SplitAsTheActionsQuote) {
    struct Row {
        const char* text;
        bool balanced;
        std::vector<std::string> arguments;
    } rows[] = {
        {"", true, {}},
        {"*.dll *.exe", true, {"*.dll", "*.exe"}},
        {"\"read me.txt\"  x", true, {"read me.txt", "x"}},
        {"\"C:\\my build\\*.*\"", true, {"C:\\my build\\*.*"}},
        {"\"obj dir\\\\\"", true, {"obj dir\\"}},
        {"a\\\"b", true, {"a\"b"}},
        {"\"a \\\"quoted\\\" word\"", true, {"a \"quoted\" word"}},
        {"\\\\server\\share", true, {"\\\\server\\share"}},
        {"a\"b c\"d", true, {"ab cd"}},
        {"\"open", false, {}},
    };
    for (const Row& row : rows) {
        std::vector<std::string> arguments = {"garbage"};
        EXPECT_EQ(SplitArguments(row.text, arguments), row.balanced) << row.text;
        if (row.balanced) {
            EXPECT_EQ(arguments, row.arguments) << row.text;
        }
    }
}
