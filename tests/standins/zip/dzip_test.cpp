// DZIP32.dll's dzip called with command blocks as ZIP Files makes them, on real folders of the Wine prefix; the
// archives are read back with the format code.
#include "library_calls.h"
#include "fileutil/scratch.h"
#include "frame/handles.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <functional>
#include <random>

using ziptest::Callbacks;
using ziptest::Narrow;
using ziptest::Quoted;
using ziptest::ZipRequest;

namespace {

std::string Compressible(std::size_t size) {
    std::string text;
    for (int line = 0; text.size() < size; ++line) text += "built module " + std::to_string(line % 31) + "\r\n";
    return text.substr(0, size);
}

std::string Random(std::size_t size) {
    std::mt19937 rng(7);
    std::string bytes(size, '\0');
    for (char& c : bytes) c = static_cast<char>(rng());
    return bytes;
}

// src\a.txt, b.dat (random), hidden.txt (hidden), "with space.txt", sub\c.txt, sub\deeper\d.txt, empty\ (empty).
class ZipTree : public testing::Test {
protected:
    void SetUp() override {
        test::MakeFolder(src);
        test::MakeFolder(src + L"\\sub");
        test::MakeFolder(src + L"\\sub\\deeper");
        test::MakeFolder(src + L"\\empty");
        for (const auto& [name, data] : files) test::WriteFileBytes(src + L"\\" + name, data);
        ::SetFileAttributesW((src + L"\\hidden.txt").c_str(), FILE_ATTRIBUTE_HIDDEN);
    }

    ZipRequest Request(const std::wstring& zip = L"") const {
        ZipRequest r;
        r.zipFile = Narrow(zip.empty() ? archive : zip);
        r.item = Quoted(Narrow(src + L"\\*.*"));
        return r;
    }

    std::string Source(const std::string& name) const {
        std::wstring wide(name.begin(), name.end());
        std::replace(wide.begin(), wide.end(), L'/', L'\\');
        return test::ReadFileBytes(src + L"\\" + wide);
    }

    test::ScratchFolder folder;
    std::wstring src = folder / L"src tree";
    std::wstring archive = folder / L"out\\app.zip";
    std::vector<std::pair<std::wstring, std::string>> files = {
        {L"a.txt", Compressible(9000)},      {L"b.dat", Random(5000)},          {L"hidden.txt", "h"},
        {L"with space.txt", "spaced"},       {L"sub\\c.txt", Compressible(300)}, {L"sub\\deeper\\d.txt", "d"},
    };
};

std::vector<std::string> FileMessages(const std::vector<std::string>& names) {
    std::vector<std::string> messages;
    for (const std::string& name : names)
        if (name.back() != '/') messages.push_back("Item " + name + " added");
    return messages;
}

// "Item a.txt added (deflated 60%)" -> "Item a.txt added"
std::vector<std::string> Stripped(std::vector<std::string> messages) {
    for (std::string& m : messages) m = m.substr(0, m.rfind(" ("));
    return messages;
}

} // namespace

TEST_F(ZipTree, TakesWhatTheItemTheMasksAndTheSwitchesSelect) {
    const std::vector<std::string> all = {"a.txt", "b.dat", "hidden.txt", "with space.txt", "empty/", "sub/", "sub/c.txt",
                                          "sub/deeper/", "sub/deeper/d.txt"};
    struct Row {
        const char* name;
        std::function<void(ZipRequest&)> change;
        std::vector<std::string> names;
        std::string base;  // where the names start in the tree
    } rows[] = {
        {"everything, in walk order", [](ZipRequest&) {}, all},
        {"no recursion", [](ZipRequest& r) { r.recurse = false; }, {"a.txt", "b.dat", "hidden.txt", "with space.txt"}},
        {"no hidden files", [](ZipRequest& r) { r.hidden = false; },
         {"a.txt", "b.dat", "with space.txt", "empty/", "sub/", "sub/c.txt", "sub/deeper/", "sub/deeper/d.txt"}},
        {"include *.txt: only folders on the way to a match", [](ZipRequest& r) { r.include = "*.TXT"; },
         {"a.txt", "hidden.txt", "with space.txt", "sub/", "sub/c.txt", "sub/deeper/", "sub/deeper/d.txt"}},
        {"a quoted mask with a blank", [](ZipRequest& r) { r.include = "\"with space.txt\" d.*"; },
         {"with space.txt", "sub/", "sub/deeper/", "sub/deeper/d.txt"}},
        {"exclude a folder mask and a file mask", [](ZipRequest& r) { r.exclude = "/deeper *.dat"; },
         {"a.txt", "hidden.txt", "with space.txt", "empty/", "sub/", "sub/c.txt"}},
        {"the item's own wildcard", [&](ZipRequest& r) { r.item = Quoted(Narrow(src + L"\\*.txt")); },
         {"a.txt", "hidden.txt", "with space.txt", "sub/", "sub/c.txt", "sub/deeper/", "sub/deeper/d.txt"}},
        {"an item that is one file", [&](ZipRequest& r) { r.item = Quoted(Narrow(src + L"\\b.dat")); }, {"b.dat"}},
        {"an item that is a folder", [&](ZipRequest& r) { r.item = Quoted(Narrow(src + L"\\sub")); },
         {"c.txt", "deeper/", "deeper/d.txt"}, "sub/"},
        {"no paths", [](ZipRequest& r) { r.noPaths = true, r.exclude = "a.txt"; },
         {"b.dat", "hidden.txt", "with space.txt", "c.txt", "d.txt"}},
    };
    for (const Row& row : rows) {
        ::DeleteFileW(archive.c_str());
        ZipRequest request = Request();
        row.change(request);
        Callbacks callbacks;
        ASSERT_EQ(ziptest::CallZip(request, callbacks), 0) << row.name;
        const ziptest::Listing listing = ziptest::ReadBack(archive);
        ASSERT_EQ(listing.status, 0) << row.name;
        EXPECT_EQ(listing.Names(), row.names) << row.name;
        EXPECT_EQ(Stripped(callbacks.files), FileMessages(row.names)) << row.name;
        EXPECT_GE(callbacks.polls, 1) << row.name;
        for (const ziptest::Listed& entry : listing.entries) {
            if (entry.folder || request.noPaths) continue;
            EXPECT_EQ(entry.data, Source(row.base + entry.name)) << row.name << ": " << entry.name;
        }
    }
}

TEST_F(ZipTree, NamesTimesAndCompression) {
    ZipRequest request = Request();
    request.options = tol::ZipUtf8Names;  // full paths
    request.recurse = false;
    request.include = "a.txt b.dat";
    Callbacks callbacks;
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    std::wstring full = src.substr(3);  // without "C:\"
    std::replace(full.begin(), full.end(), L'\\', L'/');
    const ziptest::Listing listing = ziptest::ReadBack(archive);
    ASSERT_EQ(listing.Names(), (std::vector<std::string>{Narrow(full + L"/a.txt"), Narrow(full + L"/b.dat")}));
    EXPECT_EQ(listing.entries[0].method, 8) << "text deflates";
    EXPECT_EQ(listing.entries[1].method, 0) << "noise is stored";
    EXPECT_EQ(listing.entries[1].compressedSize, 5000u);

    request.compression = 0;
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    EXPECT_EQ(ziptest::ReadBack(archive).entries[0].method, 0) << "factor 0 stores";
    EXPECT_EQ(callbacks.files.back(), "Item " + Narrow(full + L"/b.dat") + " replaced (stored 0%)");
}

// Add replaces everything; Update adds new files and replaces older entries; Freshen only replaces older entries.
TEST_F(ZipTree, AddFreshenUpdate) {
    ZipRequest request = Request();
    request.recurse = false;
    request.exclude = "hidden.txt";
    Callbacks callbacks;
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    const std::string before = test::ReadFileBytes(archive);

    struct Row {
        const char* name;
        std::int32_t function;
        std::vector<std::wstring> touched;  // rewritten with new content and a later time first
        long result;
        std::vector<std::string> messages;
    } rows[] = {
        {"update, nothing newer", tol::ZipUpdate, {}, 12, {}},
        {"freshen replaces the newer file, ignores the new one", tol::ZipFreshen, {L"a.txt", L"new.txt"}, 0,
         {"Item a.txt replaced"}},
        {"update adds the new file", tol::ZipUpdate, {}, 0, {"Item new.txt added"}},
        {"update replaces the newer one", tol::ZipUpdate, {L"b.dat"}, 0, {"Item b.dat replaced"}},
        {"add takes everything again", tol::ZipAdd, {}, 0,
         {"Item a.txt replaced", "Item b.dat replaced", "Item with space.txt replaced", "Item new.txt replaced"}},
    };
    FILETIME now{};
    ::GetSystemTimeAsFileTime(&now);
    ULARGE_INTEGER later{{now.dwLowDateTime, now.dwHighDateTime}};
    for (const Row& row : rows) {
        const std::string previous = test::ReadFileBytes(archive);
        later.QuadPart += 36000000000ull;  // an hour more on each row
        const FILETIME time{later.LowPart, later.HighPart};
        for (const std::wstring& name : row.touched) {
            test::WriteFileBytes(src + L"\\" + name, std::string(row.name));
            const tol::unique_file file(::CreateFileW((src + L"\\" + name).c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr,
                                                      OPEN_EXISTING, 0, nullptr));
            ASSERT_TRUE(::SetFileTime(file.get(), nullptr, nullptr, &time)) << row.name;
        }
        request.function = row.function;
        callbacks = Callbacks{};
        ASSERT_EQ(ziptest::CallZip(request, callbacks), row.result) << row.name;
        EXPECT_EQ(Stripped(callbacks.files), row.messages) << row.name;
        if (row.result == 12) {
            EXPECT_EQ(test::ReadFileBytes(archive), previous) << row.name << ": the archive is untouched";
        }
        const ziptest::Listing listing = ziptest::ReadBack(archive);
        for (const ziptest::Listed& entry : listing.entries) EXPECT_EQ(entry.data, Source(entry.name)) << row.name;
    }
    EXPECT_NE(before, test::ReadFileBytes(archive));
}

// Growing writes over the old central directory only: every byte before it stays; a failure puts the old end back.
TEST_F(ZipTree, GrowAppendsInPlace) {
    ZipRequest request = Request();
    request.recurse = false;
    request.include = "a.txt";
    request.grow = -1;
    request.comment = std::string("first");
    Callbacks callbacks;
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    const std::string first = test::ReadFileBytes(archive);
    const size_t directory = first.find("PK\1\2");

    request.include = "b.dat \"with space.txt\"";
    request.comment.reset();
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    const std::string grown = test::ReadFileBytes(archive);
    EXPECT_EQ(grown.substr(0, directory), first.substr(0, directory));
    const ziptest::Listing listing = ziptest::ReadBack(archive);
    EXPECT_EQ(listing.Names(), (std::vector<std::string>{"a.txt", "b.dat", "with space.txt"}));
    EXPECT_EQ(listing.comment, "first") << "the comment stays when none is given";

    const tol::unique_file locked(::CreateFileW((src + L"\\hidden.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                                0, nullptr));
    request.include = "*.*";
    request.function = tol::ZipAdd;
    EXPECT_EQ(ziptest::CallZip(request, callbacks), 18) << "a locked file without skip-locked";
    EXPECT_EQ(test::ReadFileBytes(archive), grown) << "the archive is as it was";
}

// Without growing, a temporary file beside the archive replaces it only when complete.
TEST_F(ZipTree, FailuresAndCancelsLeaveTheArchiveAsItWas) {
    ZipRequest request = Request();
    Callbacks callbacks;
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    const std::string before = test::ReadFileBytes(archive);
    test::WriteFileBytes(src + L"\\zz new.txt", "new");
    const tol::unique_file locked(::CreateFileW((src + L"\\zz new.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                                0, nullptr));
    struct Row {
        const char* name;
        std::function<void(ZipRequest&, Callbacks&)> change;
        long result;
    } rows[] = {
        {"a locked file", [](ZipRequest&, Callbacks&) {}, 18},
        {"cancelled later", [](ZipRequest& r, Callbacks& c) { r.options |= tol::ZipSkipLocked, c.cancelFromPoll = 1; }, 9},
        {"grown, cancelled",
         [](ZipRequest& r, Callbacks& c) { r.grow = -1, r.options |= tol::ZipSkipLocked, c.cancelFromPoll = 1; }, 9},
    };
    for (const Row& row : rows) {
        ZipRequest changed = request;
        callbacks = Callbacks{};
        row.change(changed, callbacks);
        EXPECT_EQ(ziptest::CallZip(changed, callbacks), row.result) << row.name;
        EXPECT_EQ(test::ReadFileBytes(archive), before) << row.name;
        WIN32_FIND_DATAW found{};
        const tol::unique_find temporary(::FindFirstFileW((folder / L"out\\~dz*").c_str(), &found));
        EXPECT_FALSE(temporary) << row.name << ": a temporary file is left";
    }
    request.options |= tol::ZipSkipLocked;
    callbacks = Callbacks{};
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    EXPECT_EQ(callbacks.files.back(), "Item zz new.txt skipped (locked)");
    EXPECT_EQ(ziptest::ReadBack(archive).Find("zz new.txt"), nullptr);
}

TEST_F(ZipTree, RequestsThatCannotBeDone) {
    test::WriteFileBytes(src + L"\\sub\\a.txt", "same name as the root's a.txt");
    struct Row {
        const char* name;
        std::function<void(ZipRequest&)> change;
        long result;
    } rows[] = {
        {"a block of another size", [](ZipRequest& r) { r.size -= 4; }, 16},
        {"an unknown function", [](ZipRequest& r) { r.function = 2; }, 16},
        {"compression 20", [](ZipRequest& r) { r.compression = 20; }, 16},
        {"an open quote in a mask list", [](ZipRequest& r) { r.include = "\"*.txt"; }, 16},
        {"two files of one name without paths", [](ZipRequest& r) { r.noPaths = true; }, 16},
        {"a missing folder", [&](ZipRequest& r) { r.item = Quoted(Narrow(folder / L"missing\\*.*")); }, 18},
        {"nothing matches", [](ZipRequest& r) { r.include = "*.none"; }, 12},
        {"freshen without an archive", [](ZipRequest& r) { r.function = tol::ZipFreshen; }, 13},
        {"a comment too long", [](ZipRequest& r) { r.comment = std::string(65536, 'c'); }, 7},
    };
    for (const Row& row : rows) {
        ZipRequest request = Request();
        row.change(request);
        Callbacks callbacks;
        EXPECT_EQ(ziptest::CallZip(request, callbacks), row.result) << row.name;
        EXPECT_EQ(::GetFileAttributesW(archive.c_str()), INVALID_FILE_ATTRIBUTES) << row.name << ": an archive was made";
    }
    Callbacks callbacks;
    EXPECT_EQ(ziptest::CallZip(Request(), callbacks), 0) << "and the same tree zips with paths";
}

// The archive never takes itself in, and the confirm callback can turn files away.
TEST_F(ZipTree, TheArchiveAndRefusedFilesStayOut) {
    const std::wstring inside = src + L"\\app.zip";
    ZipRequest request = Request(inside);
    request.recurse = false;
    Callbacks callbacks;
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    EXPECT_EQ(ziptest::ReadBack(inside).Names(), (std::vector<std::string>{"a.txt", "b.dat", "hidden.txt", "with space.txt"}));

    callbacks = Callbacks{};
    callbacks.confirmAnswer = 0;
    request = Request();
    request.recurse = false;
    ASSERT_EQ(ziptest::CallZip(request, callbacks), 0);
    EXPECT_EQ(callbacks.confirmations,
              (std::vector<std::string>{"1 a.txt", "1 app.zip", "1 b.dat", "1 hidden.txt", "1 with space.txt"}));
    EXPECT_TRUE(callbacks.files.empty());
    EXPECT_TRUE(ziptest::ReadBack(archive).entries.empty());
}
