// The archive format code on its own, in memory: what the writer makes reads back the same, ZIP64 records where
// offsets and sizes need them, damaged archives give their status, and the two text checks (entry names and
// argument lists) decide as they should.
#include "format/central_directory.h"
#include "format/command_line.h"
#include "format/entry_data.h"
#include "format/entry_path.h"
#include "format/records.h"
#include "format/writer.h"
#include <gtest/gtest.h>
#include <cstring>
#include <functional>
#include <random>

using namespace zipformat;

namespace {

struct StringSink final : DataSink {
    std::string bytes;
    bool Write(const void* data, std::size_t count) noexcept override {
        bytes.append(static_cast<const char*>(data), count);
        return true;
    }
};

std::string Compressible(std::size_t size) {
    std::string text;
    for (int line = 0; text.size() < size; ++line) text += "line " + std::to_string(line % 97) + " of the build log\r\n";
    return text.substr(0, size);
}

std::string Random(std::size_t size, unsigned seed) {
    std::mt19937 rng(seed);
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(rng());
    return bytes;
}

NewEntry Named(const std::string& name, std::uint64_t expected = 0) {
    NewEntry entry;
    entry.name = name;
    entry.dosDateTime = 0x5A210000 | (12 << 11);
    entry.modified = 1700000000;
    entry.expectedSize = expected;
    return entry;
}

// Streams data in blocks of 100,000 bytes, storing it again when deflating does not help.
Status Stream(ArchiveWriter& writer, const NewEntry& entry, const std::string& data) {
    Status status = writer.BeginFile(entry);
    for (int pass = 0; status == Status::Ok; ++pass) {
        if (pass == 1 && (status = writer.RestartStored()) != Status::Ok) break;
        for (std::size_t at = 0; at < data.size() && status == Status::Ok; at += 100000)
            status = writer.WriteData(data.data() + at, std::min<std::size_t>(100000, data.size() - at));
        bool restart = false;
        if (status == Status::Ok) status = writer.EndFile(restart);
        if (!restart) break;
    }
    return status;
}

std::string Extracted(ByteSource& source, const Archive& archive, const Entry& entry) {
    EntryExtractor extractor;
    StringSink sink;
    const Status status = extractor.Extract(source, archive, entry, sink, nullptr);
    return status == Status::Ok ? sink.bytes : "<status " + std::to_string(static_cast<int>(status)) + ">";
}

} // namespace

TEST(ArchiveFormat, WhatIsWrittenReadsBack) {
    const std::string text = Compressible(300000), noise = Random(200000, 1), small = Compressible(1000);
    struct Row {
        const char* name;
        std::string data;
        bool streamed;
        std::uint16_t method;
    } rows[] = {
        {"small.txt", small, false, kMethodDeflated},
        {"noise.bin", noise, false, kMethodStored},
        {"empty.txt", "", false, kMethodStored},
        {"big/streamed.txt", text, true, kMethodDeflated},
        {"big/streamed-noise.bin", noise, true, kMethodStored},
        {"big/streamed-empty.txt", "", true, kMethodStored},
    };
    MemorySink sink;
    ArchiveWriter writer(sink, 6, true);
    ASSERT_EQ(writer.AddFolder(Named("big/")), Status::Ok);
    for (const Row& row : rows) {
        const Status status = row.streamed ? Stream(writer, Named(row.name, row.data.size()), row.data)
                                           : writer.AddFile(Named(row.name), row.data.data(), row.data.size());
        ASSERT_EQ(status, Status::Ok) << row.name;
    }
    ASSERT_EQ(writer.Finish("release 7"), Status::Ok);
    MemorySource source(sink.bytes.data(), sink.bytes.size());
    Archive archive;
    ASSERT_EQ(ReadArchive(source, archive), Status::Ok);
    EXPECT_EQ(archive.comment, "release 7");
    ASSERT_EQ(archive.entries.size(), std::size(rows) + 1);
    EXPECT_TRUE(archive.entries[0].IsFolder());
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        const Entry& entry = archive.entries[i + 1];
        EXPECT_EQ(entry.name, rows[i].name);
        EXPECT_EQ(entry.method, rows[i].method) << rows[i].name;
        EXPECT_EQ(entry.size, rows[i].data.size()) << rows[i].name;
        EXPECT_EQ(entry.modified, 1700000000) << rows[i].name;
        EXPECT_EQ(entry.dosDateTime, 0x5A210000u | (12 << 11)) << rows[i].name;
        EXPECT_FALSE(entry.IsFolder()) << rows[i].name;
        EXPECT_EQ(Extracted(source, archive, entry), rows[i].data) << rows[i].name;
    }
}

// Entries copied into a second archive keep their compressed data and their extra fields; a kept entry stays where
// its record says.
TEST(ArchiveFormat, CopiedEntriesStayTheSame) {
    MemorySink first;
    ArchiveWriter writer(first, 9, true);
    const std::string text = Compressible(50000);
    ASSERT_EQ(writer.AddFile(Named("a.txt"), text.data(), text.size()), Status::Ok);
    ASSERT_EQ(writer.AddFile(Named("b.txt"), "bee", 3), Status::Ok);
    ASSERT_EQ(writer.Finish(""), Status::Ok);
    MemorySource source(first.bytes.data(), first.bytes.size());
    Archive archive;
    ASSERT_EQ(ReadArchive(source, archive), Status::Ok);

    MemorySink second;
    second.bytes = "stub bytes in front of the archive";
    ArchiveWriter copier(second, 1, true);
    ASSERT_EQ(copier.CopyEntry(source, archive, archive.entries[1], nullptr), Status::Ok);
    ASSERT_EQ(copier.CopyEntry(source, archive, archive.entries[0], nullptr), Status::Ok);
    ASSERT_EQ(copier.Finish("copied"), Status::Ok);
    MemorySource copied(second.bytes.data(), second.bytes.size());
    Archive again;
    ASSERT_EQ(ReadArchive(copied, again), Status::Ok);
    ASSERT_EQ(again.entries.size(), 2u);
    EXPECT_EQ(again.entries[0].name, "b.txt");
    EXPECT_EQ(again.entries[1].compressedSize, archive.entries[0].compressedSize);
    EXPECT_EQ(again.entries[1].modified, 1700000000);
    EXPECT_EQ(Extracted(copied, again, again.entries[1]), text);
    EXPECT_EQ(Extracted(copied, again, again.entries[0]), "bee");
}

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

TEST(ArchiveFormat, OffsetsBeyondFourGibibytesUseZip64) {
    FarSink sink;
    ArchiveWriter writer(sink, 5, true);
    ASSERT_EQ(writer.AddFile(Named("far.txt"), "far away", 8), Status::Ok);
    ASSERT_EQ(writer.Finish(""), Status::Ok);
    FarSource source(sink.bytes);
    Archive archive;
    ASSERT_EQ(ReadArchive(source, archive), Status::Ok);
    EXPECT_TRUE(archive.zip64);
    ASSERT_EQ(archive.entries.size(), 1u);
    EXPECT_EQ(archive.entries[0].localOffset, FarSink::kBase);
    EXPECT_EQ(Extracted(source, archive, archive.entries[0]), "far away");

    FarSink refused;
    ArchiveWriter without(refused, 5, false);
    ASSERT_EQ(without.AddFile(Named("far.txt"), "far away", 8), Status::Ok);
    EXPECT_EQ(without.Finish(""), Status::TooLarge);
}

// Sizes above 4 GiB go into the ZIP64 field of the central record and come back from it.
TEST(ArchiveFormat, SizesBeyondFourGibibytesUseZip64) {
    Entry big;
    big.name = "huge.iso";
    big.method = kMethodStored;
    big.size = big.compressedSize = (std::uint64_t(9) << 30) + 7;
    big.madeBy = kVersionDefault;
    big.versionNeeded = kVersionDefault;
    MemorySink sink;
    ArchiveWriter writer(sink, 5, true);
    writer.KeepEntry(big);
    ASSERT_EQ(writer.Finish(""), Status::Ok);
    MemorySource source(sink.bytes.data(), sink.bytes.size());
    Archive archive;
    ASSERT_EQ(ReadArchive(source, archive), Status::Ok);
    ASSERT_EQ(archive.entries.size(), 1u);
    EXPECT_EQ(archive.entries[0].size, big.size);
    EXPECT_EQ(archive.entries[0].compressedSize, big.size);
    EXPECT_EQ(archive.entries[0].versionNeeded, kVersionZip64);
    EXPECT_EQ(archive.entries[0].extra, "") << "the ZIP64 field is not kept as an ordinary one";

    NewEntry streamed = Named("stream.bin", std::uint64_t(5) << 30);
    MemorySink refused;
    ArchiveWriter without(refused, 5, false);
    EXPECT_EQ(without.BeginFile(streamed), Status::TooLarge);
}

std::size_t Nth(const std::string& bytes, const char* signature, int n) {
    std::size_t at = std::string::npos;
    for (int i = 0; i < n; ++i) at = bytes.find(signature, at + 1);
    return at;
}

std::string Put32At(std::string bytes, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
    return bytes;
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
    const std::size_t local = Nth(good, "PK\3\4", 2), data = local + kLocalHeaderSize + 7 + 9;
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
        {"data that is not deflate", [&](std::string a) { a[data] = '\xFF'; return a; }, Status::Ok, Status::Corrupt},
        {"a wrong CRC", [&](std::string a) { a[central + 16] ^= 1; return a; }, Status::Ok, Status::BadCrc},
        {"an unknown method", [&](std::string a) { a[central + 10] = 99; return a; }, Status::Ok, Status::UnsupportedMethod},
        {"encrypted", [&](std::string a) { a[central + 8] |= 1; return a; }, Status::Ok, Status::Encrypted},
        {"a size too small", [&](std::string a) { return Put32At(a, central + 24, 19999); }, Status::Ok, Status::Corrupt},
        {"a size too large", [&](std::string a) { return Put32At(a, central + 24, 20001); }, Status::Ok, Status::Corrupt},
        {"data reaching past the end", [&](std::string a) { return Put32At(a, central + 20, 0x7F000000); }, Status::Ok,
         Status::Truncated},
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
        StringSink out;
        EXPECT_EQ(extractor.Extract(source, archive, archive.entries[1], out, nullptr), row.second) << row.name;
        EXPECT_LE(out.bytes.size(), text.size()) << row.name << ": never more than the entry's size";
        if (row.second == Status::Ok) {
            EXPECT_EQ(out.bytes, text) << row.name;
        }
    }
}

TEST(EntryNames, OnlyNamesThatStayInsideThePass) {
    struct Row {
        const char* name;
        bool safe;
        std::vector<std::string> components;
        bool folder;
    } rows[] = {
        {"a.txt", true, {"a.txt"}, false},
        {"bin/x64/app.exe", true, {"bin", "x64", "app.exe"}, false},
        {"bin\\x64\\", true, {"bin", "x64"}, true},
        {"./a//b/./c", true, {"a", "b", "c"}, false},
        {"a..b/..c/c..", true, {"a..b", "..c", "c.."}, false},
        {"caf\xC3\xA9/\xE2\x82\xAC.txt", true, {"caf\xC3\xA9", "\xE2\x82\xAC.txt"}, false},
        {"console.txt", true, {"console.txt"}, false},
        {"", false, {}, false},
        {".", false, {}, false},
        {"./", false, {}, false},
        {"../evil.txt", false, {}, false},
        {"a/../../evil.txt", false, {}, false},
        {"a\\..\\evil.txt", false, {}, false},
        {"/etc/passwd", false, {}, false},
        {"\\windows\\win.ini", false, {}, false},
        {"//server/share/x", false, {}, false},
        {"C:/evil.txt", false, {}, false},
        {"C:evil.txt", false, {}, false},
        {"file.txt:stream", false, {}, false},
        {"...", false, {}, false},
        {".. /evil.txt", false, {}, false},
        {"a/. ./b", false, {}, false},
        {"CON", false, {}, false},
        {"nul.txt", false, {}, false},
        {"sub/Com1.log", false, {}, false},
        {"lpt9", false, {}, false},
        {"aux .h", false, {}, false},
        {"CONOUT$", false, {}, false},
        {"tab\there", false, {}, false},
        {"what?.txt", false, {}, false},
        {"a<b", false, {}, false},
        {"pipe|name", false, {}, false},
    };
    for (const Row& row : rows) {
        EntryPath path;
        path.components = {"garbage"};
        path.folder = true;
        EXPECT_EQ(SplitEntryPath(row.name, path), row.safe) << row.name;
        if (!row.safe) continue;
        EXPECT_EQ(path.components, row.components) << row.name;
        EXPECT_EQ(path.folder, row.folder) << row.name;
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
        {"   ", true, {}},
        {"*.dll *.exe", true, {"*.dll", "*.exe"}},
        {"\"read me.txt\"  x", true, {"read me.txt", "x"}},
        {"C:\\build\\*.*", true, {"C:\\build\\*.*"}},
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
