// DUNZIP32.dll's dunzip called with command blocks as UNZIP Files makes them, on archives made here with the format
// code (and damaged on purpose), extracting into real folders of the Wine prefix.
#include "library_calls.h"
#include "fileutil/scratch.h"
#include "format/io.h"
#include "format/writer.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <filesystem>
#include <functional>

using ziptest::Callbacks;
using ziptest::CallUnzip;
using ziptest::Narrow;
using ziptest::UnzipRequest;
using Files = std::vector<std::wstring>;

namespace {

struct Member {
    std::string name;
    std::string data;
};

// Every member dated 2020-09-13 (1600000000); names ending in "/" are folders.
std::string MakeArchive(const std::vector<Member>& members, int level = 6) {
    zipformat::MemorySink sink;
    zipformat::ArchiveWriter writer(sink, level, true);
    for (const Member& m : members) {
        zipformat::NewEntry entry;
        entry.name = m.name;
        entry.utf8 = true;
        entry.modified = 1600000000;
        entry.dosDateTime = 0x51290000;
        const bool folder = m.name.back() == '/';
        if ((folder ? writer.AddFolder(entry) : writer.AddFile(entry, m.data.data(), m.data.size())) != zipformat::Status::Ok)
            throw std::runtime_error("cannot write the test archive");
    }
    if (writer.Finish("") != zipformat::Status::Ok) throw std::runtime_error("cannot finish the test archive");
    return sink.bytes;
}

class UnzipFolder : public testing::Test {
protected:
    UnzipRequest Request(const std::string& bytes) {
        test::WriteFileBytes(zip, bytes);
        UnzipRequest r;
        r.zipFile = Narrow(zip);
        r.destination = Narrow(dest);
        return r;
    }
    std::string Out(const std::wstring& name) const { return test::ReadFileBytes(dest + L"\\" + name); }
    // Every file below root (the destination when not given), relative to it, sorted.
    Files Below(const std::wstring& root = L"") const {
        Files found;
        const std::filesystem::path base = root.empty() ? dest : root;
        std::error_code absent;
        for (const auto& item : std::filesystem::recursive_directory_iterator(base, absent))
            if (item.is_regular_file()) found.push_back(item.path().lexically_relative(base).wstring());
        std::sort(found.begin(), found.end());
        return found;
    }
    // A folder of its own for each row of a table, with the destination in it; returns the row's folder.
    std::wstring NewDestination() {
        const std::wstring row = folder / (L"row" + std::to_wstring(++rows_));
        test::MakeFolder(row);
        dest = row + L"\\dest";
        return row;
    }

    test::ScratchFolder folder;
    std::wstring zip = folder / L"in.zip";
    std::wstring dest = folder / L"dest";

private:
    int rows_ = 0;
};

} // namespace

// An entry with an unsafe name or damaged data is skipped with a message and its code, and a file of its name already
// in the destination keeps its content with no temporary file beside it; the rest still comes out and nothing lands
// outside the destination. A damaged archive is refused whole.
TEST_F(UnzipFolder, UnsafeNamesAndDamagedEntriesAreSkipped) {
    const std::string good = MakeArchive({{"a.txt", "first"}, {"bad.txt", std::string(20000, 'x')}, {"sub/z.txt", "last"}});
    const std::size_t central = good.find("PK\1\2", good.find("PK\1\2") + 1);  // bad.txt's record
    const std::size_t data = good.find("PK\3\4", 1) + 30 + 7 + 9;             // bad.txt's data
    const auto changed = [&](std::size_t at, char value) { std::string a = good; a[at] = value; return a; };
    struct Row {
        std::string name;
        std::string archive;
        long result;
        std::string skipped;  // the second entry's name as shown, and the reason; empty: the archive is refused whole
    };
    std::vector<Row> rows = {
        {"a wrong CRC", changed(central + 16, good[central + 16] ^ 1), 39, "bad.txt (bad CRC)"},
        {"an unknown method", changed(central + 10, 14), 42, "bad.txt (unknown compression method)"},
        {"encrypted", changed(central + 8, good[central + 8] | 1), 41, "bad.txt (encrypted)"},
        {"data that is not deflate", changed(data, '\xFF'), 3, "bad.txt (damaged data)"},
        {"a size that lies", ziptest::Put32At(good, central + 24, 19000), 3, "bad.txt (damaged data)"},
        {"data beyond the end", ziptest::Put32At(good, central + 20, 0x7FFFFFFF), 2, "bad.txt (damaged data)"},
        {"cut short", good.substr(0, good.size() / 2), 3, ""},
        {"an empty file", "", 2, ""},
        {"not an archive", std::string(500, 'n'), 3, ""},
    };
    for (const std::string name : {"../evil.txt", "sub/../../../../../../../../evil.txt", "\\evil.txt",
                                   "//server/share/evil.txt", "C:evil.txt", ".. /evil.txt", "sub/NUL", "COM1.log", "star*.txt"}) {
        std::string shown = name;
        std::replace(shown.begin(), shown.end(), '/', '\\');
        rows.push_back({name, MakeArchive({{"a.txt", "first"}, {name, "evil"}, {"sub/z.txt", "last"}}), 49,
                        shown + " (unsafe name: not extracted)"});
    }
    for (const Row& row : rows) {
        const std::wstring here = NewDestination();
        test::MakeFolder(dest);
        test::WriteFileBytes(dest + L"\\bad.txt", "old content");
        Callbacks callbacks;
        UnzipRequest request = Request(row.archive);
        EXPECT_EQ(CallUnzip(request, callbacks), row.result) << row.name;
        EXPECT_EQ(Below(here), row.skipped.empty() ? Files{L"dest\\bad.txt"}
                                                   : (Files{L"dest\\a.txt", L"dest\\bad.txt", L"dest\\sub\\z.txt"}))
            << row.name;
        EXPECT_EQ(Out(L"bad.txt"), "old content") << row.name;
        EXPECT_EQ(::GetFileAttributesW(L"C:\\evil.txt"), INVALID_FILE_ATTRIBUTES) << row.name;
        if (row.skipped.empty()) continue;
        ASSERT_EQ(callbacks.files.size(), 3u) << row.name;
        EXPECT_EQ(callbacks.files[1], "Item skipped " + request.destination + "\\" + row.skipped) << row.name;
    }
    Callbacks callbacks;
    UnzipRequest missing = Request(good);
    missing.zipFile = Narrow(folder / L"missing.zip");
    EXPECT_EQ(CallUnzip(missing, callbacks), 9);
}

// Extract replaces, Update takes what is missing or older, Freshen only what exists and is older.
TEST_F(UnzipFolder, ExtractUpdateFreshen) {
    const std::string archive = MakeArchive({{"old.txt", "archive"}, {"new.txt", "archive"}, {"missing.txt", "archive"}});
    struct Row {
        const char* name;
        bool freshen, update;
        std::vector<std::string> contents;  // of old.txt, new.txt, missing.txt afterwards
        std::vector<std::string> confirmations;
    } rows[] = {
        {"extract", false, false, {"archive", "archive", "archive"}, {"2 old.txt", "2 new.txt"}},
        {"update", false, true, {"archive", "disk", "archive"}, {"2 old.txt"}},
        {"freshen", true, false, {"archive", "disk", "<missing>"}, {"2 old.txt"}},
    };
    for (const Row& row : rows) {
        NewDestination();
        test::MakeFolder(dest);
        for (const auto& [name, seconds] : {std::pair{L"old.txt", 1500000000LL}, std::pair{L"new.txt", 1700000000LL}}) {
            test::WriteFileBytes(dest + L"\\" + name, "disk");
            ziptest::SetModified(dest + L"\\" + name, seconds);
        }
        UnzipRequest request = Request(archive);
        request.freshen = row.freshen;
        request.update = row.update;
        Callbacks callbacks;
        EXPECT_EQ(CallUnzip(request, callbacks), 0) << row.name;
        EXPECT_EQ((std::vector<std::string>{Out(L"old.txt"), Out(L"new.txt"), Out(L"missing.txt")}), row.contents) << row.name;
        WIN32_FILE_ATTRIBUTE_DATA old{};
        ASSERT_TRUE(::GetFileAttributesExW((dest + L"\\old.txt").c_str(), GetFileExInfoStandard, &old));
        const std::uint64_t ticks = (std::uint64_t(old.ftLastWriteTime.dwHighDateTime) << 32) | old.ftLastWriteTime.dwLowDateTime;
        EXPECT_EQ(ticks / 10000000 - 11644473600, 1600000000u) << row.name << ": the archive's time";
        EXPECT_EQ(callbacks.confirmations, row.confirmations) << row.name;
    }
}

// Which entries the masks take, and where they go.
TEST_F(UnzipFolder, MasksFoldersAndShortNames) {
    const std::string archive = MakeArchive({{"readme.txt", "r"}, {"bin/", ""}, {"bin/app.exe", "a"},
                                             {"bin/readme.txt", "b"}, {"doc/guide book.html", "g"}, {"doc/empty/", ""}});
    struct Row {
        const char* name;
        std::function<void(UnzipRequest&)> change;
        long result;
        Files files;
    } rows[] = {
        {"*.txt crosses folders", [](UnzipRequest& r) { r.files = "*.TXT"; }, 0, {L"bin\\readme.txt", L"readme.txt"}},
        {"a bare name matches the root only", [](UnzipRequest& r) { r.files = "readme.txt"; }, 0, {L"readme.txt"}},
        {"and every folder with recursion", [](UnzipRequest& r) { r.files = "readme.txt", r.recurse = true; }, 0,
         {L"bin\\readme.txt", L"readme.txt"}},
        {"a path mask, quoted", [](UnzipRequest& r) { r.files = "\"doc\\guide book.*\" bin/app.exe"; }, 0,
         {L"bin\\app.exe", L"doc\\guide book.html"}},
        {"nothing matches", [](UnzipRequest& r) { r.files = "*.none"; }, 11, {}},
        {"folders dropped", [](UnzipRequest& r) { r.files = "*.exe *.html", r.dropFolders = true; }, 0,
         {L"app.exe", L"guide book.html"}},
        {"8.3 names", [](UnzipRequest& r) { r.files = "doc/*", r.options |= tol::UnzipShortNames; }, 0, {L"DOC\\GUIDEB~1.HTM"}},
        {"a bad block", [](UnzipRequest& r) { r.function = 7; }, 47, {}},
        {"an open quote", [](UnzipRequest& r) { r.files = "\"*.txt"; }, 47, {}},
    };
    for (const Row& row : rows) {
        NewDestination();
        UnzipRequest request = Request(archive);
        row.change(request);
        Callbacks callbacks;
        EXPECT_EQ(CallUnzip(request, callbacks), row.result) << row.name;
        EXPECT_EQ(Below(), row.files) << row.name;
    }
}

// A cancel before or in the middle of a file's data removes what was written of it.
TEST_F(UnzipFolder, CancelLeavesNoPartialFile) {
    std::string big(3 << 20, '\0');
    for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 2654435761u >> 24);
    const std::string archive = MakeArchive({{"big.bin", big}, {"after.txt", "a"}}, 0);
    for (const int cancelFromPoll : {0, 1}) {
        NewDestination();
        Callbacks callbacks;
        callbacks.cancelFromPoll = cancelFromPoll;
        EXPECT_EQ(CallUnzip(Request(archive), callbacks), 40) << "cancelled from poll " << cancelFromPoll;
        EXPECT_TRUE(Below().empty() && callbacks.files.empty()) << "cancelled from poll " << cancelFromPoll;
    }
    Callbacks callbacks;
    ASSERT_EQ(CallUnzip(Request(archive), callbacks), 0);
    EXPECT_EQ(Out(L"big.bin"), big);
    EXPECT_GE(callbacks.polls, 3) << "at the first file and after each MiB of it";
}
