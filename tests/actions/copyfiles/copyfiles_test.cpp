// Copy Files through its action component: the trees it leaves, byte for byte, and the lines it logs.
#include "support.h"
#include "fileutil/scratch.h"
#include <gtest/gtest.h>

namespace {

using copytest::ExecuteCopyFiles;
using copytest::Joined;
using copytest::MakeTree;
using copytest::SetCopyStep;
using copytest::TreeText;

// A scratch folder with src and dst below it.
struct Folders {
    test::ScratchFolder scratch;
    std::wstring src = scratch / L"src";
    std::wstring dst = scratch / L"dst";
};

// Runs Copy Files from a source to dst with the options.
struct Outcome {
    copytest::Execution execution;
    std::vector<std::wstring> log;
};
Outcome RunFrom(const Folders& f, const std::wstring& source, std::wstring_view options) {
    test::TestBuild build;
    test::TestStep step;
    SetCopyStep(step, source, f.dst, options);
    Outcome outcome{ExecuteCopyFiles(&build, step), std::move(build.log)};
    return outcome;
}
Outcome CopyTree(const Folders& f, std::wstring_view options) { return RunFrom(f, f.src, options); }

// The log's lines after the first (the roots).
std::wstring ItemLines(const Outcome& outcome) {
    return Joined(std::vector<std::wstring>(outcome.log.begin() + (outcome.log.empty() ? 0 : 1), outcome.log.end()));
}

void SetAttributes(const std::wstring& path, DWORD attributes) { ASSERT_TRUE(::SetFileAttributesW(path.c_str(), attributes)); }

} // namespace

TEST(CopyFilesSettings, RejectsBlankAndEqualRootsBeforeTouchingAnything) {
    struct Row {
        const char* name;
        const wchar_t* source;  // below the scratch folder; null: blank
        const wchar_t* dest;
        const wchar_t* options;
        long status;
        const wchar_t* log;  // %S: the scratch folder
    } rows[] = {
        {"blank source", nullptr, L"dst", L"", 1, L"Source Folder cannot be empty\n"},
        {"blank destination", L"src", nullptr, L"", 1, L"Dest Folder cannot be empty\n"},
        {"blank source accepted, blank destination not", nullptr, nullptr, L"IgnoreSrc", 1,
         L"Dest Folder cannot be empty\n"},
        {"same folder in another case and with a separator", L"src", L"SRC\\", L"", 1,
         L"Source and destination folders must be different.\n"},
        {"the same folder through a dot segment", L"src", L"dst\\..\\src", L"", 1,
         L"Source and destination folders must be different.\n"},
        {"destination inside the source", L"src", L"src\\sub", L"", 0, L"%S\\src\\ -> %S\\src\\sub\\\n0 file(s) copied\n"},
        {"dot segments resolved in the roots", L"src\\.", L"x\\..\\dst", L"", 0, L"%S\\src\\ -> %S\\dst\\\n0 file(s) copied\n"},
    };
    for (const Row& row : rows) {
        test::ScratchFolder scratch;
        test::MakeFolder(scratch / L"src");
        test::TestBuild build;
        test::TestStep step;
        SetCopyStep(step, row.source ? scratch / row.source : L"", row.dest ? scratch / row.dest : L"", row.options);
        const copytest::Execution result = ExecuteCopyFiles(&build, step);
        std::wstring expected = row.log;
        for (size_t at = expected.find(L"%S"); at != std::wstring::npos; at = expected.find(L"%S"))
            expected.replace(at, 2, scratch.path());
        EXPECT_EQ(result.hr, S_OK) << row.name;
        EXPECT_EQ(result.status, row.status) << row.name;
        EXPECT_EQ(Joined(build.log), expected) << row.name;
        if (row.status != 0) {
            EXPECT_EQ(TreeText(scratch.path()), "src\\") << row.name << ": something was created";
        }
    }
}

TEST(CopyFilesLog, NamesEveryItemRelativeToItsRootAndSumsUp) {
    struct Row {
        const char* name;
        const wchar_t* options;
        const wchar_t* lines;
        const char* destAfter;
    } rows[] = {
        {"incremental with purge", L"Recurse Purge LogUpToDate",
         L"        New File:     a.txt\n"
         L"        Different:    b.txt\n"
         L"          same:       c.txt\n"
         L"      New Folder:     sub\\\n"
         L"        New File:     sub\\d.txt\n"
         L"    *EXTRA File:      old\\f.txt\n"
         L"  *EXTRA Folder:      old\n"
         L"3 file(s) copied, 1 file(s) deleted\n",
         "a.txt=A b.txt=B c.txt=C sub\\ sub\\d.txt=D"},
        {"incremental copy off", L"Recurse -Incremental",
         L"         Copying:     a.txt\n"
         L"         Copying:     b.txt\n"
         L"         Copying:     c.txt\n"
         L"      New Folder:     sub\\\n"
         L"         Copying:     sub\\d.txt\n"
         L"4 file(s) copied\n",
         "a.txt=A b.txt=B c.txt=C old\\ old\\f.txt=F sub\\ sub\\d.txt=D"},
        {"display only", L"Recurse Purge NoCopy Move",
         L"        New File:     a.txt\n"
         L"        Different:    b.txt\n"
         L"      New Folder:     sub\\\n"
         L"        New File:     sub\\d.txt\n"
         L"    *EXTRA File:      old\\f.txt\n"
         L"  *EXTRA Folder:      old\n"
         L"3 file(s) would have been moved, 1 file(s) would have been deleted\n",
         "b.txt=b c.txt=C old\\ old\\f.txt=F"},
        {"nothing logged but the summary", L"Recurse -LogCopied", L"3 file(s) copied\n",
         "a.txt=A b.txt=B c.txt=C old\\ old\\f.txt=F sub\\ sub\\d.txt=D"},
    };
    for (const Row& row : rows) {
        Folders f;
        MakeTree(f.src, "a.txt=A b.txt=B c.txt=C sub\\d.txt=D");
        MakeTree(f.dst, "b.txt=b c.txt=C old\\f.txt=F");
        copytest::SetWriteTime(f.dst + L"\\b.txt", copytest::AddSeconds(copytest::WriteTime(f.src + L"\\b.txt"), -10));
        copytest::SetWriteTime(f.dst + L"\\c.txt", copytest::WriteTime(f.src + L"\\c.txt"));
        const Outcome outcome = CopyTree(f, row.options);
        EXPECT_EQ(outcome.execution.status, 0) << row.name;
        ASSERT_FALSE(outcome.log.empty()) << row.name;
        EXPECT_EQ(outcome.log[0], f.src + L"\\ -> " + f.dst + L"\\") << row.name;
        EXPECT_EQ(ItemLines(outcome), row.lines) << row.name;
        EXPECT_EQ(TreeText(f.dst), row.destAfter) << row.name;
    }
}

TEST(CopyFilesSelection, CopiesWhatTheMasksAndOptionsSelect) {
    struct Row {
        const char* name;
        const wchar_t* options;
        const char* destAfter;
    } rows[] = {
        {"root only", L"", "a.txt=A b.obj=B readme=R"},
        {"the tree, hidden and system items left out", L"Recurse",
         "a.txt=A b.obj=B bin\\ bin\\e.txt=E obj\\ obj\\f.txt=F readme=R sub\\ sub\\bin\\ sub\\bin\\d.txt=D sub\\c.txt=C"},
        {"hidden and system items too", L"Recurse Hidden",
         "a.txt=A b.obj=B bin\\ bin\\e.txt=E h.txt=H obj\\ obj\\f.txt=F readme=R secret\\ secret\\s.txt=S sub\\ "
         "sub\\bin\\ sub\\bin\\d.txt=D sub\\c.txt=C sys.txt=Y"},
        {"a file mask, any case", L"Recurse Ext=*.TXT",
         "a.txt=A bin\\ bin\\e.txt=E obj\\ obj\\f.txt=F sub\\ sub\\bin\\ sub\\bin\\d.txt=D sub\\c.txt=C"},
        {"names without an extension", L"Recurse Ext=*.", "readme=R"},
        {"two masks in quotes on one line", L"Ext=\"*.obj\"\"readme\"", "b.obj=B readme=R"},
        {"excluded files", L"Recurse ExclExt=*.txt", "b.obj=B readme=R"},
        {"an excluded folder and all below it", L"Recurse ExclExt=/o*;/bin",
         "a.txt=A b.obj=B readme=R sub\\ sub\\c.txt=C"},
        {"an included folder: wherever it is, and not the root", L"Recurse Ext=/bin",
         "bin\\ bin\\e.txt=E sub\\ sub\\bin\\ sub\\bin\\d.txt=D"},
        {"empty folders created for the folders that pass", L"Recurse Empty Ext=*.obj",
         "b.obj=B bin\\ empty\\ obj\\ sub\\ sub\\bin\\"},
        {"no empty folders without Recurse", L"Empty Ext=*.obj", "b.obj=B"},
        {"archive bit (always set under Wine)", L"Archive ClearArchive", "a.txt=A b.obj=B readme=R"},
    };
    for (const Row& row : rows) {
        Folders f;
        MakeTree(f.src, "a.txt=A b.obj=B readme=R h.txt=H sys.txt=Y sub\\c.txt=C sub\\bin\\d.txt=D bin\\e.txt=E "
                        "obj\\f.txt=F secret\\s.txt=S empty\\");
        SetAttributes(f.src + L"\\h.txt", FILE_ATTRIBUTE_HIDDEN);
        SetAttributes(f.src + L"\\sys.txt", FILE_ATTRIBUTE_SYSTEM);
        SetAttributes(f.src + L"\\secret", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY);
        const Outcome outcome = CopyTree(f, row.options);
        EXPECT_EQ(outcome.execution.status, 0) << row.name << "\n" << Joined(outcome.log);
        EXPECT_EQ(TreeText(f.dst), row.destAfter) << row.name;
    }
}

TEST(CopyFilesComparison, CopiesOnlyWhatDiffersByTimeOrSize) {
    struct Row {
        const char* name;
        const char* dest;   // the destination's content; null: missing
        long long seconds;  // the destination's time after the source's
        const wchar_t* options;
        const wchar_t* line;
        const char* destAfter;
    } rows[] = {
        {"missing", nullptr, 0, L"", L"        New File:     f.txt", "AB"},
        {"same time and size", "XY", 0, L"", L"          same:       f.txt", "XY"},
        {"2 seconds older", "XY", -2, L"", L"          same:       f.txt", "XY"},
        {"2 seconds newer", "XY", 2, L"", L"          same:       f.txt", "XY"},
        {"3 seconds older", "XY", -3, L"", L"        Different:    f.txt", "AB"},
        {"3 seconds newer: copied all the same", "XY", 3, L"", L"        Different:    f.txt", "AB"},
        {"same time, another size", "XYZ", 0, L"", L"        Different:    f.txt", "AB"},
        {"same, but incremental copy off", "XY", 0, L"-Incremental", L"         Copying:     f.txt", "AB"},
    };
    for (const Row& row : rows) {
        Folders f;
        MakeTree(f.src, "f.txt=AB");
        test::MakeFolder(f.dst);
        if (row.dest) {
            MakeTree(f.dst, std::string("f.txt=") + row.dest);
            copytest::SetWriteTime(f.dst + L"\\f.txt", copytest::AddSeconds(copytest::WriteTime(f.src + L"\\f.txt"), row.seconds));
        }
        const Outcome outcome = CopyTree(f, std::wstring(L"LogUpToDate ") + row.options);
        EXPECT_EQ(outcome.execution.status, 0) << row.name;
        EXPECT_EQ(ItemLines(outcome).substr(0, ItemLines(outcome).find(L'\n')), row.line) << row.name;
        EXPECT_EQ(test::ReadFileBytes(f.dst + L"\\f.txt"), row.destAfter) << row.name;
    }
}

TEST(CopyFilesMove, DeletesEachSourceFileOnlyAfterItsCopy) {
    struct Row {
        const char* name;
        const wchar_t* options;
        const char* sourceAfter;
        const char* destAfter;
        const wchar_t* summary;
    } rows[] = {
        {"files moved, folders kept", L"Recurse Move -Incremental", "empty\\ keep\\ sub\\", "a.txt=A keep\\ keep\\k.txt=K sub\\ sub\\b.txt=B",
         L"3 file(s) moved"},
        {"emptied folders removed, the root too", L"Recurse Move MoveDirs -Incremental", "<missing>",
         "a.txt=A keep\\ keep\\k.txt=K sub\\ sub\\b.txt=B", L"3 file(s) moved"},
        {"folders holding unselected files stay", L"Recurse Move MoveDirs ExclExt=k.txt", "keep\\ keep\\k.txt=K",
         "a.txt=A keep\\ keep\\k.txt=K sub\\ sub\\b.txt=B", L"2 file(s) moved"},
        {"up-to-date files are neither copied nor deleted", L"Recurse Move", "empty\\ keep\\ keep\\k.txt=K sub\\",
         "a.txt=A keep\\ keep\\k.txt=K sub\\ sub\\b.txt=B", L"2 file(s) moved"},
        {"display only", L"Recurse Move MoveDirs NoCopy", "a.txt=A empty\\ keep\\ keep\\k.txt=K sub\\ sub\\b.txt=B",
         "keep\\ keep\\k.txt=K", L"2 file(s) would have been moved"},
    };
    for (const Row& row : rows) {
        Folders f;
        MakeTree(f.src, "a.txt=A sub\\b.txt=B keep\\k.txt=K empty\\");
        MakeTree(f.dst, "keep\\k.txt=K");
        copytest::SetWriteTime(f.dst + L"\\keep\\k.txt", copytest::WriteTime(f.src + L"\\keep\\k.txt"));
        const Outcome outcome = CopyTree(f, row.options);
        EXPECT_EQ(outcome.execution.status, 0) << row.name;
        EXPECT_EQ(TreeText(f.src), row.sourceAfter) << row.name;
        EXPECT_EQ(TreeText(f.dst), row.destAfter) << row.name;
        EXPECT_EQ(outcome.log.back(), row.summary) << row.name;
    }
}

TEST(CopyFilesFlat, GathersTheTreeIntoTheRootAndPurgesItAgainstTheWholeTree) {
    struct Row {
        const char* name;
        const wchar_t* options;
        const char* destAfter;
        const wchar_t* lines;
    } rows[] = {
        {"the later of two equal names remains", L"Recurse Flat -Incremental", "sub\\ sub\\s.txt=S x.txt=B y.txt=Y",
         L"         Copying:     a\\x.txt\n         Copying:     b\\x.txt\n         Copying:     b\\y.txt\n3 file(s) copied\n"},
        {"incremental: the second is compared with the first one's copy", L"Recurse Flat LogUpToDate",
         "sub\\ sub\\s.txt=S x.txt=A y.txt=Y",
         L"        New File:     a\\x.txt\n          same:       b\\x.txt\n        New File:     b\\y.txt\n2 file(s) copied\n"},
        {"purge keeps what any folder selected, nothing else", L"Recurse Flat Purge", "x.txt=A y.txt=Y",
         L"        New File:     a\\x.txt\n        New File:     b\\y.txt\n"
         L"    *EXTRA File:      sub\\s.txt\n  *EXTRA Folder:      sub\n2 file(s) copied, 1 file(s) deleted\n"},
        {"purge within the masks", L"Recurse Flat Purge Ext=x*", "sub\\ sub\\s.txt=S x.txt=A",
         L"        New File:     a\\x.txt\n1 file(s) copied, 0 file(s) deleted\n"},
    };
    for (const Row& row : rows) {
        Folders f;
        MakeTree(f.src, "a\\x.txt=A b\\x.txt=B b\\y.txt=Y");
        copytest::SetWriteTime(f.src + L"\\b\\x.txt", copytest::WriteTime(f.src + L"\\a\\x.txt"));
        MakeTree(f.dst, "sub\\s.txt=S");  // one item per folder: purge lines follow the platform's order
        const Outcome outcome = CopyTree(f, row.options);
        EXPECT_EQ(outcome.execution.status, 0) << row.name;
        EXPECT_EQ(TreeText(f.dst), row.destAfter) << row.name;
        std::wstring lines = ItemLines(outcome);
        EXPECT_EQ(lines, row.lines) << row.name;
    }
}

TEST(CopyFilesFlat, NeverCopiesAFileOntoItselfWhenTheDestinationLiesInTheSource) {
    test::ScratchFolder scratch;
    MakeTree(scratch.path(), "src\\a\\x.txt=A");
    test::TestBuild build;
    test::TestStep step;
    SetCopyStep(step, scratch / L"src", scratch / L"src\\out", L"Recurse Flat Move -Incremental LogUpToDate Retries=1");
    const copytest::Execution result = ExecuteCopyFiles(&build, step);
    EXPECT_EQ(result.status, 0) << Joined(build.log);
    // The walk meets the copy in out: it is its own destination, so it is neither copied onto itself nor deleted.
    EXPECT_EQ(TreeText(scratch / L"src"), "a\\ out\\ out\\x.txt=A");
    EXPECT_EQ(build.log.back(), L"1 file(s) moved");
    EXPECT_EQ(copytest::LinesStarting(build.log, L"          same:       out\\x.txt").size(), 1u) << Joined(build.log);
}

TEST(CopyFilesPurge, DeletesWhatTheSourceLacksWithinTheMasks) {
    struct Row {
        const char* name;
        const wchar_t* options;
        const wchar_t* source;  // below the scratch folder; empty: blank
        const char* destAfter;
        const wchar_t* summary;
    } rows[] = {
        {"extra files and folders", L"Recurse Purge", L"src", "a.txt=A sub\\ sub\\b.txt=B", L"0 file(s) copied, 4 file(s) deleted"},
        {"excluded files stay, and so do their folders", L"Recurse Purge ExclExt=*.log", L"src",
         "a.txt=A keep.log=L old\\ old\\keep.log=L sub\\ sub\\b.txt=B", L"0 file(s) copied, 2 file(s) deleted"},
        {"an excluded folder stays whole", L"Recurse Purge ExclExt=/old", L"src",
         "a.txt=A old\\ old\\keep.log=L old\\x.tmp=X sub\\ sub\\b.txt=B", L"0 file(s) copied, 2 file(s) deleted"},
        {"without Recurse every subfolder is extra", L"Purge", L"src", "a.txt=A", L"0 file(s) copied, 5 file(s) deleted"},
        {"a missing source with IgnoreSrc: only what the masks select", L"Recurse Purge IgnoreSrc Ext=*.tmp", L"missing",
         "a.txt=A keep.log=L old\\ old\\keep.log=L sub\\ sub\\b.txt=B", L"0 file(s) copied, 2 file(s) deleted"},
        {"a blank source with IgnoreSrc: everything, the root too", L"Recurse Purge IgnoreSrc", L"", "<missing>",
         L"0 file(s) copied, 6 file(s) deleted"},
        {"display only", L"Recurse Purge NoCopy", L"src",
         "a.txt=A keep.log=L old\\ old\\keep.log=L old\\x.tmp=X sub\\ sub\\b.txt=B sub\\c.tmp=C",
         L"0 file(s) would have been copied, 4 file(s) would have been deleted"},
    };
    for (const Row& row : rows) {
        Folders f;
        MakeTree(f.src, "a.txt=A sub\\b.txt=B");
        MakeTree(f.dst, "a.txt=A keep.log=L sub\\b.txt=B sub\\c.tmp=C old\\keep.log=L old\\x.tmp=X");
        for (const wchar_t* name : {L"\\a.txt", L"\\sub\\b.txt"})
            copytest::SetWriteTime(f.dst + name, copytest::WriteTime(f.src + name));
        const Outcome outcome = RunFrom(f, *row.source ? f.scratch / row.source : L"", row.options);
        EXPECT_EQ(outcome.execution.status, 0) << row.name << "\n" << Joined(outcome.log);
        EXPECT_EQ(TreeText(f.dst), row.destAfter) << row.name;
        EXPECT_EQ(outcome.log.back(), row.summary) << row.name;
    }
}

TEST(CopyFilesPurge, KeepsEmptySourceFoldersWithEmptyAndHiddenFoldersWithoutHidden) {
    Folders f;
    MakeTree(f.src, "a.txt=A gone\\");
    MakeTree(f.dst, "a.txt=A gone\\x.txt=X secret\\s.txt=S");
    copytest::SetWriteTime(f.dst + L"\\a.txt", copytest::WriteTime(f.src + L"\\a.txt"));
    SetAttributes(f.dst + L"\\secret", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY);
    const Outcome outcome = CopyTree(f, L"Recurse Purge Empty -LogCopied");
    EXPECT_EQ(outcome.execution.status, 0);
    EXPECT_EQ(TreeText(f.dst), "a.txt=A gone\\ secret\\ secret\\s.txt=S");
    EXPECT_EQ(outcome.log.back(), L"0 file(s) copied, 1 file(s) deleted");
}

TEST(CopyFilesAttributes, KeepsReadOnlyOnlyWhenAskedAndReplacesReadOnlyCopies) {
    struct Row {
        const char* name;
        const wchar_t* options;
        bool destBefore;  // a read-only destination exists
        DWORD readOnlyAfter;
    } rows[] = {
        {"kept", L"", false, FILE_ATTRIBUTE_READONLY},
        {"dropped", L"-ReadOnly", false, 0},
        {"kept, over a read-only copy", L"-Incremental", true, FILE_ATTRIBUTE_READONLY},
        {"dropped, over a read-only copy", L"-Incremental -ReadOnly", true, 0},
        {"kept, copied through a temporary name", L"-Incremental -Restartable", true, FILE_ATTRIBUTE_READONLY},
        {"dropped, copied through a temporary name", L"-Incremental -Restartable -ReadOnly", true, 0},
    };
    for (const Row& row : rows) {
        Folders f;
        MakeTree(f.src, "r.txt=new");
        test::MakeFolder(f.dst);
        if (row.destBefore) {
            MakeTree(f.dst, "r.txt=old");
            SetAttributes(f.dst + L"\\r.txt", FILE_ATTRIBUTE_READONLY);
        }
        SetAttributes(f.src + L"\\r.txt", FILE_ATTRIBUTE_READONLY);
        const Outcome outcome = CopyTree(f, row.options);
        EXPECT_EQ(outcome.execution.status, 0) << row.name << "\n" << Joined(outcome.log);
        EXPECT_EQ(TreeText(f.dst), "r.txt=new") << row.name << ": no partial copy may stay behind";
        EXPECT_EQ(::GetFileAttributesW((f.dst + L"\\r.txt").c_str()) & FILE_ATTRIBUTE_READONLY, row.readOnlyAfter) << row.name;
        SetAttributes(f.src + L"\\r.txt", FILE_ATTRIBUTE_NORMAL);
    }
}

TEST(CopyFilesAttributes, GivesDestinationFoldersTheAttributesOfTheirSourceFolders) {
    Folders f;
    MakeTree(f.src, "shown\\a.txt=A hidden\\b.txt=B");
    SetAttributes(f.src + L"\\hidden", FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY);
    ASSERT_EQ(CopyTree(f, L"Recurse Hidden").execution.status, 0);
    EXPECT_TRUE(::GetFileAttributesW((f.dst + L"\\hidden").c_str()) & FILE_ATTRIBUTE_HIDDEN);
    EXPECT_FALSE(::GetFileAttributesW((f.dst + L"\\shown").c_str()) & FILE_ATTRIBUTE_HIDDEN);
}

TEST(CopyFilesShortNames, CopiesUnderTheShortNamesAndMatchesTheLongOnes) {
    Folders f;
    MakeTree(f.src, "LongFolderName\\LongFileName.text=L LongFolderName\\other.txt=O");
    WIN32_FIND_DATAW file, folder;
    tol::unique_find(::FindFirstFileW((f.src + L"\\LongFolderName\\LongFileName.text").c_str(), &file));
    tol::unique_find(::FindFirstFileW((f.src + L"\\LongFolderName").c_str(), &folder));
    ASSERT_NE(file.cAlternateFileName[0], L'\0') << "the platform gives no 8.3 name";
    const std::wstring copy = f.dst + L"\\" + folder.cAlternateFileName + L"\\" + file.cAlternateFileName;
    const Outcome outcome = CopyTree(f, L"Recurse ShortNames Ext=*.text;/*Name");
    EXPECT_EQ(outcome.execution.status, 0) << Joined(outcome.log);
    EXPECT_EQ(test::ReadFileBytes(copy), "L");
    EXPECT_EQ(outcome.log.back(), L"1 file(s) copied");
}
