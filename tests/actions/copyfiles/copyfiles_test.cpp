// Copy Files through its action component: the trees it leaves, byte for byte, and the lines it logs.
#include "support.h"
#include "fileutil/scratch.h"
#include <gtest/gtest.h>

namespace {

using copytest::Joined;
using copytest::MakeTree;
using copytest::TreeText;

// A scratch folder with src and dst below it; Run copies src (or another source) to dst with the options.
struct Folders {
    test::ScratchFolder scratch;
    std::wstring src = scratch / L"src";
    std::wstring dst = scratch / L"dst";
    test::TestBuild build;

    long Run(std::wstring_view options, const std::wstring* source = nullptr) {
        test::TestStep step;
        copytest::SetCopyStep(step, source ? *source : src, dst, options);
        const copytest::Execution result = copytest::ExecuteCopyFiles(&build, step);
        EXPECT_EQ(result.hr, S_OK);
        return result.status;
    }
    // The log's lines after the first (the roots).
    std::wstring ItemLines() const { return Joined({build.log.begin() + (build.log.empty() ? 0 : 1), build.log.end()}); }
};

} // namespace

TEST(CopyFilesSettings, RejectsBlankAndEqualRootsBeforeTouchingAnything) {
    const struct {
        const wchar_t* source;  // below the scratch folder; null: blank
        const wchar_t* dest;
        const wchar_t* options;
        const wchar_t* log;
    } rows[] = {
        {nullptr, L"dst", L"", L"Source Folder cannot be empty\n"},
        {nullptr, nullptr, L"IgnoreSrc", L"Dest Folder cannot be empty\n"},
        {L"src", L"SRC\\", L"", L"Source and destination folders must be different.\n"},
    };
    for (const auto& row : rows) {
        Folders f;
        test::MakeFolder(f.src);
        const std::wstring source = row.source ? f.scratch / row.source : L"";
        f.dst = row.dest ? f.scratch / row.dest : L"";
        EXPECT_EQ(f.Run(row.options, &source), 1) << row.log;
        EXPECT_EQ(Joined(f.build.log), row.log);
        EXPECT_EQ(TreeText(f.scratch.path()), "src\\") << row.log;
    }
}

// The line formats, and what counts as up to date: the same size and write times at most 2 seconds apart.
TEST(CopyFilesLog, NamesEveryItemRelativeToItsRootAndSumsUp) {
    const struct {
        const wchar_t* options;
        const wchar_t* lines;
        const char* destAfter;
    } rows[] = {
        {L"Recurse Purge LogUpToDate",
         L"        New File:     a.txt\n        Different:    b.txt\n          same:       c.txt\n        Different:    d.txt\n"
         L"        Different:    e.txt\n      New Folder:     sub\\\n        New File:     sub\\f.txt\n"
         L"    *EXTRA File:      old\\g.txt\n  *EXTRA Folder:      old\n5 file(s) copied, 1 file(s) deleted\n",
         "a.txt=A b.txt=B c.txt=c d.txt=D e.txt=E sub\\ sub\\f.txt=F"},
        {L"-Incremental",
         L"         Copying:     a.txt\n         Copying:     b.txt\n         Copying:     c.txt\n         Copying:     d.txt\n"
         L"         Copying:     e.txt\n5 file(s) copied\n",
         "a.txt=A b.txt=B c.txt=C d.txt=D e.txt=E old\\ old\\g.txt=G"},
    };
    for (const auto& row : rows) {
        Folders f;
        MakeTree(f.src, "a.txt=A b.txt=B c.txt=C d.txt=D e.txt=E sub\\f.txt=F");
        MakeTree(f.dst, "b.txt=b c.txt=c d.txt=d e.txt=EE old\\g.txt=G");
        copytest::ShiftWriteTime(f.dst + L"\\b.txt", 3);
        copytest::ShiftWriteTime(f.dst + L"\\c.txt", -2);
        copytest::ShiftWriteTime(f.dst + L"\\d.txt", -3);
        EXPECT_EQ(f.Run(row.options), 0) << row.options;
        ASSERT_FALSE(f.build.log.empty());
        EXPECT_EQ(f.build.log[0], f.src + L"\\ -> " + f.dst + L"\\");
        EXPECT_EQ(f.ItemLines(), row.lines) << row.options;
        EXPECT_EQ(TreeText(f.dst), row.destAfter) << row.options;
    }
}

TEST(CopyFilesSelection, CopiesWhatTheMasksAndOptionsSelect) {
    const struct {
        const wchar_t* options;
        const char* destAfter;
    } rows[] = {
        {L"", "a.txt=A b.obj=B readme=R"},
        {L"Recurse", "a.txt=A b.obj=B bin\\ bin\\e.txt=E readme=R sub\\ sub\\bin\\ sub\\bin\\d.txt=D sub\\c.txt=C"},
        {L"Recurse Hidden",
         "a.txt=A b.obj=B bin\\ bin\\e.txt=E h.txt=H readme=R secret\\ secret\\s.txt=S sub\\ sub\\bin\\ sub\\bin\\d.txt=D "
         "sub\\c.txt=C sys.txt=Y"},
        {L"Recurse Ext=*.TXT", "a.txt=A bin\\ bin\\e.txt=E sub\\ sub\\bin\\ sub\\bin\\d.txt=D sub\\c.txt=C"},
        {L"Ext=\"*.obj\"\"readme\"", "b.obj=B readme=R"},
        {L"Recurse ExclExt=*.obj;/bin", "a.txt=A readme=R sub\\ sub\\c.txt=C"},
        {L"Recurse Ext=/bin", "bin\\ bin\\e.txt=E sub\\ sub\\bin\\ sub\\bin\\d.txt=D"},
        {L"Recurse Empty Ext=*.obj", "b.obj=B bin\\ empty\\ sub\\ sub\\bin\\"},
    };
    for (const auto& row : rows) {
        Folders f;
        MakeTree(f.src, "a.txt=A b.obj=B readme=R h.txt=H sys.txt=Y sub\\c.txt=C sub\\bin\\d.txt=D bin\\e.txt=E "
                        "secret\\s.txt=S empty\\");
        ::SetFileAttributesW((f.src + L"\\h.txt").c_str(), FILE_ATTRIBUTE_HIDDEN);
        ::SetFileAttributesW((f.src + L"\\sys.txt").c_str(), FILE_ATTRIBUTE_SYSTEM);
        ::SetFileAttributesW((f.src + L"\\secret").c_str(), FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY);
        EXPECT_EQ(f.Run(row.options), 0) << row.options;
        EXPECT_EQ(TreeText(f.dst), row.destAfter) << row.options;
    }
}

// Move, Purge and Flat: what each tree holds afterwards, and the summary.
TEST(CopyFilesTrees, MovesAndPurgesOnlyWhatTheOptionsSelect) {
    const struct {
        const wchar_t* options;
        const char* srcBefore;  // "-": the source is missing; "": it is blank
        const char* dstBefore;
        const char* srcAfter;
        const char* dstAfter;
        const wchar_t* summary;
    } rows[] = {
        // Move: a source file is deleted only after its copy; an up-to-date one is neither copied nor deleted.
        {L"Recurse Move", "a.txt=A sub\\b.txt=B keep\\k.txt=K empty\\", "keep\\k.txt=K", "empty\\ keep\\ keep\\k.txt=K sub\\",
         "a.txt=A keep\\ keep\\k.txt=K sub\\ sub\\b.txt=B", L"2 file(s) moved"},
        {L"Recurse Move MoveDirs -Incremental", "a.txt=A sub\\b.txt=B", "", "<missing>", "a.txt=A sub\\ sub\\b.txt=B",
         L"2 file(s) moved"},
        {L"Recurse Move MoveDirs ExclExt=k.txt", "a.txt=A keep\\k.txt=K", "", "keep\\ keep\\k.txt=K", "a.txt=A",
         L"1 file(s) moved"},
        // Purge deletes what the source lacks, within the masks.
        {L"Recurse Purge ExclExt=*.log;/old", "a.txt=A sub\\b.txt=B", "a.txt=A k.log=L sub\\b.txt=B sub\\c.tmp=C old\\x.tmp=X",
         "a.txt=A sub\\ sub\\b.txt=B", "a.txt=A k.log=L old\\ old\\x.tmp=X sub\\ sub\\b.txt=B",
         L"0 file(s) copied, 1 file(s) deleted"},
        {L"Recurse Purge IgnoreSrc Ext=*.tmp", "-", "a.txt=A sub\\b.txt=B sub\\c.tmp=C", "<missing>",
         "a.txt=A sub\\ sub\\b.txt=B",
         L"0 file(s) copied, 1 file(s) deleted"},
        {L"Recurse Purge IgnoreSrc", "", "a.txt=A sub\\c.tmp=C", "<missing>", "<missing>",
         L"0 file(s) copied, 2 file(s) deleted"},
        {L"Recurse Purge NoCopy", "a.txt=A n.txt=N", "a.txt=A x.tmp=X", "a.txt=A n.txt=N", "a.txt=A x.tmp=X",
         L"1 file(s) would have been copied, 1 file(s) would have been deleted"},
        // Flat: the later of two equal names remains; purge keeps what any folder selected.
        {L"Recurse Flat -Incremental", "a\\x.txt=A b\\x.txt=B", "", "a\\ a\\x.txt=A b\\ b\\x.txt=B", "x.txt=B",
         L"2 file(s) copied"},
        {L"Recurse Flat Purge", "a\\x.txt=A b\\y.txt=Y", "sub\\s.txt=S", "a\\ a\\x.txt=A b\\ b\\y.txt=Y", "x.txt=A y.txt=Y",
         L"2 file(s) copied, 1 file(s) deleted"},
    };
    for (const auto& row : rows) {
        Folders f;
        if (*row.srcBefore && *row.srcBefore != '-') MakeTree(f.src, row.srcBefore);
        MakeTree(f.dst, row.dstBefore);
        const std::wstring source = *row.srcBefore ? f.src : L"";
        EXPECT_EQ(f.Run(row.options, &source), 0) << row.options << "\n" << Joined(f.build.log);
        EXPECT_EQ(TreeText(f.src), row.srcAfter) << row.options;
        EXPECT_EQ(TreeText(f.dst), row.dstAfter) << row.options;
        EXPECT_EQ(f.build.log.back(), row.summary) << row.options;
    }
}

TEST(CopyFilesTrees, NeverCopiesAFileOntoItselfWhenFlatteningIntoTheSource) {
    Folders f;
    MakeTree(f.src, "a\\x.txt=A");
    f.dst = f.src + L"\\out";
    EXPECT_EQ(f.Run(L"Recurse Flat Move -Incremental Retries=1"), 0) << Joined(f.build.log);
    EXPECT_EQ(TreeText(f.src), "a\\ out\\ out\\x.txt=A");
    EXPECT_EQ(f.build.log.back(), L"1 file(s) moved");
}
