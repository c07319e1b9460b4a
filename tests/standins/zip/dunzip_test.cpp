// DUNZIP32.dll's dunzip called with command blocks as UNZIP Files makes them, on archives made here with the format
// code (and damaged on purpose), extracting into real folders of the Wine prefix.
#include "library_calls.h"
#include "fileutil/scratch.h"
#include "format/io.h"
#include "format/writer.h"
#include "frame/handles.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <functional>

using ziptest::Callbacks;
using ziptest::Narrow;
using ziptest::UnzipRequest;

namespace {

struct Member {
    std::string name;
    std::string data;
    std::uint32_t attributes = 0;
    std::int64_t modified = 1600000000;  // 2020-09-13
};

std::string MakeArchive(const std::vector<Member>& members, int level = 6, bool utf8 = true) {
    zipformat::MemorySink sink;
    zipformat::ArchiveWriter writer(sink, level, true);
    for (const Member& m : members) {
        zipformat::NewEntry entry;
        entry.name = m.name;
        entry.utf8 = utf8;
        entry.modified = m.modified;
        entry.dosDateTime = 0x51290000;
        entry.externalAttributes = m.attributes;
        const bool folder = !m.name.empty() && m.name.back() == '/';
        const zipformat::Status status = folder ? writer.AddFolder(entry) : writer.AddFile(entry, m.data.data(), m.data.size());
        if (status != zipformat::Status::Ok) throw std::runtime_error("cannot write the test archive");
    }
    if (writer.Finish("") != zipformat::Status::Ok) throw std::runtime_error("cannot finish the test archive");
    return sink.bytes;
}

std::string Put32At(std::string bytes, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(value >> (8 * i));
    return bytes;
}

std::int64_t ModifiedSeconds(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) return -1;
    const std::uint64_t ticks = (static_cast<std::uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32) |
                                data.ftLastWriteTime.dwLowDateTime;
    return static_cast<std::int64_t>(ticks / 10000000) - 11644473600;
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
    // Every file below root (the destination when not given), relative to it; the archive left out.
    std::vector<std::wstring> Files(const std::wstring& root = L"") const {
        std::vector<std::wstring> found;
        Walk(root.empty() ? dest : root, L"", found);
        found.erase(std::remove(found.begin(), found.end(), L"in.zip"), found.end());
        return found;
    }
    // A destination of its own for each row of a table.
    void NewDestination() { dest = folder / (L"dest" + std::to_wstring(++destinations_)); }

    test::ScratchFolder folder;
    std::wstring zip = folder / L"in.zip";
    std::wstring dest = folder / L"dest";

private:
    int destinations_ = 0;

    static void Walk(const std::wstring& base, const std::wstring& relative, std::vector<std::wstring>& found) {
        WIN32_FIND_DATAW entry{};
        const tol::unique_find find(::FindFirstFileW((base + L"\\" + relative + L"*").c_str(), &entry));
        for (bool more = static_cast<bool>(find); more; more = ::FindNextFileW(find.get(), &entry)) {
            const std::wstring name = entry.cFileName;
            if (name == L"." || name == L"..") continue;
            if (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
                Walk(base, relative + name + L"\\", found);
            else
                found.push_back(relative + name);
        }
        std::sort(found.begin(), found.end());
    }
};

} // namespace

// Each unsafe name is skipped with a message and result 49; the safe entries around it are extracted.
TEST_F(UnzipFolder, UnsafeNamesNeverLeaveTheDestination) {
    const char* unsafe[] = {
        "../evil.txt", "sub/../../../../../../../../evil.txt", "\\evil.txt", "//server/share/evil.txt", "C:evil.txt",
        ".. /evil.txt", "sub/NUL", "COM1.log", "star*.txt",
    };
    for (const char* name : unsafe) {
        NewDestination();
        const std::string archive = MakeArchive({{"first.txt", "1"}, {name, "evil"}, {"sub/last.txt", "2"}});
        Callbacks callbacks;
        UnzipRequest request = Request(archive);
        EXPECT_EQ(ziptest::CallUnzip(request, callbacks), 49) << name;
        const std::wstring here = dest.substr(folder.path().size() + 1) + L"\\";
        EXPECT_EQ(Files(folder.path()), (std::vector<std::wstring>{here + L"first.txt", here + L"sub\\last.txt"})) << name;
        std::wstring shown(name, name + std::strlen(name));
        std::replace(shown.begin(), shown.end(), L'/', L'\\');
        ASSERT_EQ(callbacks.files.size(), 3u) << name;
        const std::string skipped = "Item skipped " + request.destination + "\\" + Narrow(shown);
        EXPECT_EQ(callbacks.files[1], skipped + " (unsafe name: not extracted)")
            << name;
        ::DeleteFileW((dest + L"\\first.txt").c_str());
        ::DeleteFileW((dest + L"\\sub\\last.txt").c_str());
    }
}

// Damaged entries are skipped with their code, and bad.txt, already in the destination, keeps its content with no
// temporary file beside it; the rest still comes out.
TEST_F(UnzipFolder, DamagedArchivesAndEntries) {
    const std::string text(20000, 'x');
    const std::string good = MakeArchive({{"a.txt", "first"}, {"bad.txt", text}, {"z.txt", "last"}});
    const std::size_t central = good.find("PK\1\2", good.find("PK\1\2") + 1);  // bad.txt's record
    const std::size_t data = good.find("PK\3\4", 1) + 30 + 7 + 9;             // bad.txt's data
    const std::vector<std::wstring> rest = {L"a.txt", L"bad.txt", L"z.txt"};
    struct Row {
        const char* name;
        std::function<std::string()> archive;
        long result;
        const char* reason;  // of bad.txt's skip message; null: the archive is refused whole
    } rows[] = {
        {"a wrong CRC", [&] { std::string a = good; a[central + 16] ^= 1; return a; }, 39, " (bad CRC)"},
        {"an unknown method", [&] { std::string a = good; a[central + 10] = 14; return a; }, 42,
         " (unknown compression method)"},
        {"encrypted", [&] { std::string a = good; a[central + 8] |= 1; return a; }, 41, " (encrypted)"},
        {"data that is not deflate", [&] { std::string a = good; a[data] = '\xFF'; return a; }, 3, " (damaged data)"},
        {"a size that lies", [&] { return Put32At(good, central + 24, 19000); }, 3, " (damaged data)"},
        {"data beyond the end", [&] { return Put32At(good, central + 20, 0x7FFFFFFF); }, 2, " (damaged data)"},
        {"cut short", [&] { return good.substr(0, good.size() / 2); }, 3, nullptr},
        {"an empty file", [] { return std::string(); }, 2, nullptr},
        {"not an archive", [] { return std::string(500, 'n'); }, 3, nullptr},
    };
    for (const Row& row : rows) {
        NewDestination();
        test::MakeFolder(dest);
        test::WriteFileBytes(dest + L"\\bad.txt", "old content");
        Callbacks callbacks;
        UnzipRequest request = Request(row.archive());
        EXPECT_EQ(ziptest::CallUnzip(request, callbacks), row.result) << row.name;
        EXPECT_EQ(Files(), row.reason ? rest : std::vector<std::wstring>{L"bad.txt"}) << row.name;
        EXPECT_EQ(Out(L"bad.txt"), "old content") << row.name;
        if (row.reason) {
            ASSERT_EQ(callbacks.files.size(), 3u) << row.name;
            EXPECT_EQ(callbacks.files[1], "Item skipped " + request.destination + "\\bad.txt" + row.reason) << row.name;
        }
    }
    Callbacks callbacks;
    UnzipRequest missing = Request(good);
    missing.zipFile = Narrow(folder / L"missing.zip");
    EXPECT_EQ(ziptest::CallUnzip(missing, callbacks), 9);
}

// Extract replaces, Update takes what is missing or older, Freshen only what exists and is older.
TEST_F(UnzipFolder, ExtractUpdateFreshen) {
    const std::string archive = MakeArchive({{"old.txt", "archive", 0, 1600000000}, {"new.txt", "archive", 0, 1600000000},
                                             {"missing.txt", "archive", 0, 1600000000}});
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
            const std::uint64_t ticks = (seconds + 11644473600LL) * 10000000ull;
            const FILETIME time{static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
            const tol::unique_file file(::CreateFileW((dest + L"\\" + name).c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr,
                                                      OPEN_EXISTING, 0, nullptr));
            ASSERT_TRUE(::SetFileTime(file.get(), nullptr, nullptr, &time));
        }
        UnzipRequest request = Request(archive);
        request.freshen = row.freshen;
        request.update = row.update;
        Callbacks callbacks;
        EXPECT_EQ(ziptest::CallUnzip(request, callbacks), 0) << row.name;
        EXPECT_EQ((std::vector<std::string>{Out(L"old.txt"), Out(L"new.txt"), Out(L"missing.txt")}), row.contents) << row.name;
        EXPECT_EQ(ModifiedSeconds(dest + L"\\old.txt"), 1600000000) << row.name << ": the archive's time";
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
        std::vector<std::wstring> files;
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
        {"8.3 names", [](UnzipRequest& r) { r.files = "doc/*", r.options |= tol::UnzipShortNames; }, 0,
         {L"DOC\\GUIDEB~1.HTM"}},
        {"a bad block", [](UnzipRequest& r) { r.function = 7; }, 47, {}},
        {"an open quote", [](UnzipRequest& r) { r.files = "\"*.txt"; }, 47, {}},
    };
    for (const Row& row : rows) {
        NewDestination();
        UnzipRequest request = Request(archive);
        row.change(request);
        Callbacks callbacks;
        EXPECT_EQ(ziptest::CallUnzip(request, callbacks), row.result) << row.name;
        EXPECT_EQ(Files(), row.files) << row.name;
    }
}

// A cancel in the middle of a file's data removes what was written of it.
TEST_F(UnzipFolder, CancelLeavesNoPartialFile) {
    std::string big(3 << 20, '\0');
    for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i * 2654435761u >> 24);
    const std::string archive = MakeArchive({{"big.bin", big}, {"after.txt", "a"}}, 0);
    struct Row {
        const char* name;
        int cancelFromPoll;
    } rows[] = {{"before the first file", 0}, {"within the first file", 1}};
    for (const Row& row : rows) {
        NewDestination();
        Callbacks callbacks;
        callbacks.cancelFromPoll = row.cancelFromPoll;
        EXPECT_EQ(ziptest::CallUnzip(Request(archive), callbacks), 40) << row.name;
        EXPECT_TRUE(Files().empty()) << row.name;
        EXPECT_TRUE(callbacks.files.empty()) << row.name;
    }
    Callbacks callbacks;
    ASSERT_EQ(ziptest::CallUnzip(Request(archive), callbacks), 0);
    EXPECT_EQ(Out(L"big.bin"), big);
    EXPECT_GE(callbacks.polls, 3) << "at the first file and after each MiB of it";
}
