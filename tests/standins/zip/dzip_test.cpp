// DZIP32.dll's dzip called with command blocks as ZIP Files makes them, on real folders of the Wine prefix; the
// archives are read back with the format code.
#include "library_calls.h"
#include "fileutil/scratch.h"
#include "frame/handles.h"
#include <gtest/gtest.h>
#include <algorithm>
#include <ctime>
#include <functional>
#include <random>

using ziptest::Callbacks;
using ziptest::CallZip;
using ziptest::Narrow;
using ziptest::Quoted;
using ziptest::ReadBack;
using ziptest::ZipRequest;
using Names = std::vector<std::string>;

namespace {

// "Item a.txt added (deflated 60%)" -> "Item a.txt added"
Names Stripped(Names messages) {
    for (std::string& m : messages) m = m.substr(0, m.rfind(" ("));
    return messages;
}

// src\a.txt, b.dat (random), hidden.txt (hidden), "with space.txt", sub\c.txt, sub\deeper\d.txt, empty\ (empty).
class ZipTree : public testing::Test {
protected:
    void SetUp() override {
        std::mt19937 rng(7);
        std::string noise(5000, '\0');
        for (char& c : noise) c = static_cast<char>(rng());
        for (const wchar_t* sub : {L"", L"\\sub", L"\\sub\\deeper", L"\\empty"}) test::MakeFolder(src + sub);
        for (const auto& [name, data] : {std::pair<std::wstring, std::string>{L"a.txt", ziptest::Compressible(9000)},
                                         {L"b.dat", noise}, {L"hidden.txt", "h"}, {L"with space.txt", "spaced"},
                                         {L"sub\\c.txt", ziptest::Compressible(300)}, {L"sub\\deeper\\d.txt", "d"}})
            test::WriteFileBytes(src + L"\\" + name, data);
        ::SetFileAttributesW((src + L"\\hidden.txt").c_str(), FILE_ATTRIBUTE_HIDDEN);
    }

    // Everything below src, or only its files (no recursion) when flat.
    ZipRequest Request(bool flat = false, const std::wstring& zip = L"") const {
        ZipRequest r;
        r.zipFile = Narrow(zip.empty() ? archive : zip);
        r.item = Quoted(Narrow(src + L"\\*.*"));
        r.recurse = !flat;
        return r;
    }

    // The file in src that an entry of this name (with slashes) holds.
    std::string Source(const std::string& name) const {
        return test::ReadFileBytes(src + L"\\" + std::wstring(name.begin(), name.end()));
    }

    test::ScratchFolder folder;
    std::wstring src = folder / L"src tree";
    std::wstring archive = folder / L"out\\app.zip";
};

} // namespace

TEST_F(ZipTree, TakesWhatTheItemTheMasksAndTheSwitchesSelect) {
    struct Row {
        const char* name;
        std::function<void(ZipRequest&)> change;
        Names names;
        std::string base;  // where the names start in the tree
    } rows[] = {
        {"everything, in walk order", [](ZipRequest&) {},
         {"a.txt", "b.dat", "hidden.txt", "with space.txt", "empty/", "sub/", "sub/c.txt", "sub/deeper/", "sub/deeper/d.txt"}},
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
        ASSERT_EQ(CallZip(request, callbacks), 0) << row.name;
        const ziptest::Listing listing = ReadBack(archive);
        ASSERT_EQ(listing.status, 0) << row.name;
        EXPECT_EQ(listing.Names(), row.names) << row.name;
        Names messages;
        for (const std::string& name : row.names)
            if (name.back() != '/') messages.push_back("Item " + name + " added");
        EXPECT_EQ(Stripped(callbacks.files), messages) << row.name;
        EXPECT_GE(callbacks.polls, 1) << row.name;
        for (const ziptest::Listed& entry : listing.entries) {
            if (entry.folder || request.noPaths) continue;
            EXPECT_EQ(entry.data, Source(row.base + entry.name)) << row.name << ": " << entry.name;
        }
    }
}

TEST_F(ZipTree, FullPathsAndCompression) {
    ZipRequest request = Request(true);
    request.options = tol::ZipUtf8Names;  // full paths
    request.include = "a.txt b.dat";
    Callbacks callbacks;
    ASSERT_EQ(CallZip(request, callbacks), 0);
    std::wstring full = src.substr(3);  // without "C:\"
    std::replace(full.begin(), full.end(), L'\\', L'/');
    const ziptest::Listing listing = ReadBack(archive);
    ASSERT_EQ(listing.Names(), (Names{Narrow(full + L"/a.txt"), Narrow(full + L"/b.dat")}));
    EXPECT_EQ(listing.entries[0].method, 8) << "text deflates";
    EXPECT_EQ(listing.entries[1].method, 0) << "noise is stored";
    EXPECT_EQ(listing.entries[1].compressedSize, 5000u);

    request.compression = 0;
    ASSERT_EQ(CallZip(request, callbacks), 0);
    EXPECT_EQ(ReadBack(archive).entries[0].method, 0) << "factor 0 stores";
    EXPECT_EQ(callbacks.files.back(), "Item " + Narrow(full + L"/b.dat") + " replaced (stored 0%)");
}

// Add replaces everything; Update adds new files and replaces older entries; Freshen only replaces older entries.
// Growing writes behind the old entries, over the old central directory only: every byte before it stays.
TEST_F(ZipTree, AddFreshenUpdateAndGrow) {
    ZipRequest request = Request(true);
    request.exclude = "hidden.txt";
    request.grow = -1;  // the first archive made by growing
    request.comment = std::string("first");
    Callbacks callbacks;
    ASSERT_EQ(CallZip(request, callbacks), 0);
    request.comment.reset();
    struct Row {
        const char* name;
        std::int32_t function;
        bool grow;
        std::vector<std::wstring> touched;  // rewritten with new content and a later time first
        long result;
        Names messages;
    } rows[] = {
        {"update, nothing newer", tol::ZipUpdate, false, {}, 12, {}},
        {"freshen replaces the newer file, ignores the new one", tol::ZipFreshen, false, {L"a.txt", L"new.txt"}, 0,
         {"Item a.txt replaced"}},
        {"update adds the new file, growing", tol::ZipUpdate, true, {}, 0, {"Item new.txt added"}},
        {"update replaces the newer one, growing", tol::ZipUpdate, true, {L"b.dat"}, 0, {"Item b.dat replaced"}},
        {"add takes everything again, in the archive's order: the grown replacement last", tol::ZipAdd, false, {}, 0,
         {"Item a.txt replaced", "Item with space.txt replaced", "Item new.txt replaced", "Item b.dat replaced"}},
    };
    std::int64_t later = std::time(nullptr);
    for (const Row& row : rows) {
        const std::string previous = test::ReadFileBytes(archive);
        later += 3600;  // an hour more on each row
        for (const std::wstring& name : row.touched) {
            test::WriteFileBytes(src + L"\\" + name, std::string(row.name));
            ziptest::SetModified(src + L"\\" + name, later);
        }
        request.function = row.function;
        request.grow = row.grow ? -1 : 0;
        callbacks = Callbacks{};
        ASSERT_EQ(CallZip(request, callbacks), row.result) << row.name;
        EXPECT_EQ(Stripped(callbacks.files), row.messages) << row.name;
        // Nothing to do keeps every byte; growing, every byte before the old central directory.
        const std::size_t kept = row.result == 12 ? std::string::npos : row.grow ? previous.find("PK\1\2") : 0;
        EXPECT_EQ(test::ReadFileBytes(archive).substr(0, kept), previous.substr(0, kept)) << row.name << ": bytes kept";
        const ziptest::Listing listing = ReadBack(archive);
        EXPECT_EQ(listing.comment, "first") << row.name << ": the comment stays when none is given";
        for (const ziptest::Listed& entry : listing.entries) EXPECT_EQ(entry.data, Source(entry.name)) << row.name;
    }
}

// A request that cannot be done, fails or is cancelled leaves the archive as it was, absent or present, and no
// temporary file: without growing, a temporary file replaces the archive only when complete; growing, a failure puts
// the old end back.
TEST_F(ZipTree, FailuresLeaveTheArchiveAsItWas) {
    test::WriteFileBytes(src + L"\\sub\\a.txt", "same name as the root's a.txt");
    test::WriteFileBytes(src + L"\\zz new.txt", "new");
    const tol::unique_file locked(::CreateFileW((src + L"\\zz new.txt").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                                0, nullptr));
    using Change = std::function<void(ZipRequest&, Callbacks&)>;
    struct Row {
        const char* name;
        bool existing;  // an archive is there first
        Change change;
        long result;
    } rows[] = {
        {"a block of another size", false, [](ZipRequest& r, Callbacks&) { r.size -= 4; }, 16},
        {"an unknown function", false, [](ZipRequest& r, Callbacks&) { r.function = 2; }, 16},
        {"compression 20", false, [](ZipRequest& r, Callbacks&) { r.compression = 20; }, 16},
        {"an open quote in a mask list", false, [](ZipRequest& r, Callbacks&) { r.include = "\"*.txt"; }, 16},
        {"two files of one name without paths", false, [](ZipRequest& r, Callbacks&) { r.noPaths = true; }, 16},
        {"a missing folder", false, [&](ZipRequest& r, Callbacks&) { r.item = Quoted(Narrow(folder / L"missing\\*.*")); }, 18},
        {"nothing matches", false, [](ZipRequest& r, Callbacks&) { r.include = "*.none"; }, 12},
        {"freshen without an archive", false, [](ZipRequest& r, Callbacks&) { r.function = tol::ZipFreshen; }, 13},
        {"a comment too long", false, [](ZipRequest& r, Callbacks&) { r.comment = std::string(65536, 'c'); }, 7},
        {"a locked file", true, [](ZipRequest&, Callbacks&) {}, 18},
        {"grown, a locked file", true, [](ZipRequest& r, Callbacks&) { r.grow = -1; }, 18},
        {"cancelled later", true, [](ZipRequest& r, Callbacks& c) { r.options |= tol::ZipSkipLocked, c.cancelFromPoll = 1; }, 9},
        {"grown, cancelled", true,
         [](ZipRequest& r, Callbacks& c) { r.grow = -1, r.options |= tol::ZipSkipLocked, c.cancelFromPoll = 1; }, 9},
    };
    std::string before = "<missing>";
    for (const Row& row : rows) {
        ZipRequest request = Request();
        Callbacks callbacks;
        if (row.existing && before == "<missing>") {
            request.options |= tol::ZipSkipLocked;
            ASSERT_EQ(CallZip(request, callbacks), 0) << "the same tree zips with paths, the locked file skipped";
            EXPECT_EQ(std::count(callbacks.files.begin(), callbacks.files.end(), "Item zz new.txt skipped (locked)"), 1);
            EXPECT_EQ(ReadBack(archive).Find("zz new.txt"), nullptr);
            before = test::ReadFileBytes(archive);
            request = Request(), callbacks = Callbacks{};
        }
        row.change(request, callbacks);
        EXPECT_EQ(CallZip(request, callbacks), row.result) << row.name;
        EXPECT_EQ(test::ReadFileBytes(archive), before) << row.name;
        WIN32_FIND_DATAW found{};
        const tol::unique_find temporary(::FindFirstFileW((folder / L"out\\~dz*").c_str(), &found));
        EXPECT_FALSE(temporary) << row.name << ": a temporary file is left";
    }
}

// The archive never takes itself in, and the confirm callback can turn files away.
TEST_F(ZipTree, TheArchiveAndRefusedFilesStayOut) {
    const std::wstring inside = src + L"\\app.zip";
    Callbacks callbacks;
    ASSERT_EQ(CallZip(Request(true, inside), callbacks), 0);
    ASSERT_EQ(CallZip(Request(true, inside), callbacks), 0);
    EXPECT_EQ(ReadBack(inside).Names(), (Names{"a.txt", "b.dat", "hidden.txt", "with space.txt"}));

    callbacks = Callbacks{};
    callbacks.confirmAnswer = 0;
    ASSERT_EQ(CallZip(Request(true), callbacks), 0);
    EXPECT_EQ(callbacks.confirmations, (Names{"1 a.txt", "1 app.zip", "1 b.dat", "1 hidden.txt", "1 with space.txt"}));
    EXPECT_TRUE(callbacks.files.empty());
    EXPECT_TRUE(ReadBack(archive).entries.empty());
}
