// ZIP Files and UNZIP Files through their action components with the real DZIP32.dll and DUNZIP32.dll: a folder
// zipped and extracted again, the log lines of both steps, stopping, and the errors the libraries report.
#include "run_action.h"
#include "actions/zip/library.h"
#include "fileutil/scratch.h"
#include "frame/errors.h"
#include "frame/step.h"
#include "VelmoraExt.h"
#include <gtest/gtest.h>

using ziptest::Outcome;
using ziptest::RunAction;

namespace {

class ZipRoundTrip : public testing::Test {
protected:
    void SetUp() override {
        test::MakeFolder(src);
        test::MakeFolder(src + L"\\sub dir");
        test::WriteFileBytes(src + L"\\a.txt", std::string(4000, 'a'));
        test::WriteFileBytes(src + L"\\sub dir\\b.txt", "bee");
    }
    Outcome Zip(std::initializer_list<ziptest::Property> changes, bool stopped = false) {
        ziptest::Properties properties = ziptest::ZipDefaults({{L"Source", src}, {L"Dest", zip}, {L"Recurse", true}});
        properties.insert(properties.end(), changes.begin(), changes.end());
        return RunAction(CLSID_ZipFilesAction, properties, stopped);
    }
    Outcome Unzip(std::initializer_list<ziptest::Property> changes, bool stopped = false) {
        ziptest::Properties properties = ziptest::UnzipDefaults({{L"Source", zip}, {L"Dest", dest + L"\\"}});
        properties.insert(properties.end(), changes.begin(), changes.end());
        return RunAction(CLSID_UnzipFilesAction, properties, stopped);
    }

    test::ScratchFolder folder;
    std::wstring src = folder / L"release files";
    std::wstring zip = folder / L"drop\\release.zip";
    std::wstring dest = folder / L"deployed";
};

} // namespace

TEST_F(ZipRoundTrip, ZipAndExtractAgainWithTheirLogLines) {
    const Outcome zipped = Zip({});
    ASSERT_EQ(zipped.hr, S_OK) << zipped.description;
    EXPECT_EQ(zipped.status, tol::StepSucceeded);
    EXPECT_EQ(zipped.log, (std::vector<std::wstring>{src + L" -> " + zip, L"Item a.txt added (deflated 99%)",
                                                     L"Item sub dir/b.txt added (stored 0%)", L"2 files processed"}));
    const Outcome extracted = Unzip({});
    ASSERT_EQ(extracted.hr, S_OK) << extracted.description;
    EXPECT_EQ(extracted.status, tol::StepSucceeded);
    EXPECT_EQ(extracted.log, (std::vector<std::wstring>{zip + L" -> " + dest + L"\\", L"\\a.txt", L"\\sub dir\\b.txt",
                                                        L"2 files processed"}));
    EXPECT_EQ(test::ReadFileBytes(dest + L"\\a.txt"), std::string(4000, 'a'));
    EXPECT_EQ(test::ReadFileBytes(dest + L"\\sub dir\\b.txt"), "bee");

    const Outcome again = Unzip({});  // Update: nothing is newer
    ASSERT_EQ(again.hr, S_OK) << again.description;
    EXPECT_EQ(again.log, (std::vector<std::wstring>{zip + L" -> " + dest + L"\\", L"0 files processed"}));
    const Outcome nothing = Zip({{L"LogDetail", false}});  // Update: nothing to do
    ASSERT_EQ(nothing.hr, S_OK) << nothing.description;
    EXPECT_EQ(nothing.log, (std::vector<std::wstring>{src + L" -> " + zip, L"0 files processed"}));
}

// Add keeps the entries of files that are gone; Delete removes the old archive first (read-only or not), so that
// they go with it.
TEST_F(ZipRoundTrip, DeleteStartsAFreshArchive) {
    test::WriteFileBytes(src + L"\\gone.txt", "soon gone");
    ASSERT_EQ(Zip({}).hr, S_OK);
    ::DeleteFileW((src + L"\\gone.txt").c_str());
    for (const bool remove : {false, true}) {
        ::SetFileAttributesW(zip.c_str(), FILE_ATTRIBUTE_READONLY);
        const Outcome outcome = Zip({{L"Action", 0L}, {L"Delete", remove}, {L"LogDetail", false}});
        ASSERT_EQ(outcome.hr, S_OK) << outcome.description;
        ::SetFileAttributesW(zip.c_str(), FILE_ATTRIBUTE_NORMAL);
        ASSERT_EQ(Unzip({{L"Action", 0L}}).hr, S_OK);
        EXPECT_EQ(test::ReadFileBytes(dest + L"\\gone.txt"), remove ? "<missing>" : "soon gone") << "Delete " << remove;
        ::DeleteFileW((dest + L"\\gone.txt").c_str());
    }
    EXPECT_EQ(test::ReadFileBytes(dest + L"\\a.txt"), std::string(4000, 'a'));
}

TEST_F(ZipRoundTrip, AStoppedBuildStopsTheStep) {
    const Outcome zipped = Zip({}, true);
    ASSERT_EQ(zipped.hr, S_OK) << zipped.description;
    EXPECT_EQ(zipped.status, tol::StepStopped);
    EXPECT_EQ(zipped.log.back(), L"0 files processed");
    EXPECT_EQ(test::ReadFileBytes(zip), "<missing>");
    ASSERT_EQ(Zip({}).status, tol::StepSucceeded);
    const Outcome extracted = Unzip({}, true);
    ASSERT_EQ(extracted.hr, S_OK) << extracted.description;
    EXPECT_EQ(extracted.status, tol::StepStopped);
    EXPECT_EQ(test::ReadFileBytes(dest + L"\\a.txt"), "<missing>");
}

TEST_F(ZipRoundTrip, TheLibrariesErrorsFailTheStep) {
    struct Row {
        const char* name;
        std::function<Outcome()> run;
        std::wstring error;
    } rows[] = {
        {"a source folder that is not there", [&] { return Zip({{L"Source", folder / L"missing"}}); },
         L"File not found or no read permission"},
        {"freshening an archive that is not there", [&] { return Zip({{L"Action", 1L}}); }, L"Missing or empty zip file"},
        {"extracting from an archive that is not there", [&] { return Unzip({}); }, L"File not found"},
        {"extracting from a file that is no archive",
         [&] {
             test::WriteFileBytes(folder / L"not.zip", std::string(100, 't'));
             return Unzip({{L"Source", folder / L"not.zip"}});
         },
         L"Zip file structure invalid"},
    };
    for (const Row& row : rows) {
        const Outcome outcome = row.run();
        EXPECT_EQ(outcome.hr, E_FAIL) << row.name;
        EXPECT_EQ(outcome.status, ziptest::kGarbageStatus) << row.name;
        EXPECT_EQ(outcome.description, row.error) << row.name;
    }
}

// A library that cannot be found, or that lacks its entry point, is an error with the platform's code.
TEST(ArchiveLibraries, MissingLibrariesAndEntryPoints) {
    struct Row {
        const wchar_t* file;
        const char* entry;
        HRESULT hr;
    } rows[] = {
        {L"DNOSUCH32.dll", "dzip", HRESULT_FROM_WIN32(ERROR_MOD_NOT_FOUND)},
        {L"DZIP32.dll", "nosuch", HRESULT_FROM_WIN32(ERROR_PROC_NOT_FOUND)},
    };
    for (const Row& row : rows) {
        tol::ArchiveLibrary library(row.file, row.entry);
        try {
            library.Entry();
            ADD_FAILURE() << row.entry << ": no error";
        } catch (const comet::com_error& e) {
            EXPECT_EQ(e.hr(), row.hr) << row.entry;
            EXPECT_EQ(e.message().rfind(std::wstring(row.file) + L": ", 0), 0u) << row.entry;
            ASSERT_NE(e.error_info(), nullptr) << row.entry;
        }
    }
    tol::ArchiveLibrary found(L"DZIP32.dll", "dzip");
    EXPECT_NE(found.Entry(), nullptr);
    EXPECT_EQ(found.Entry(), found.Entry()) << "loaded once";
}
