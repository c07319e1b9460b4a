// The pages of the actions that work on sets of files: Copy Files (main and options), ZIP Files (main and options)
// and UNZIP Files.
#include "action_pages.h"
#include <iterator>

namespace tol {
namespace {

constexpr FieldDescriptor kCopyFiles[] = {
    TextRow(1047, L"SourceDir").Layout(kGrowWidth).Folder().ReplaceOnInsert().Quoted(),
    TextRow(1009, L"DestDir").Required().Layout(kGrowWidth).Folder().ReplaceOnInsert().Quoted(),
    TextRow(1010, L"Ext").Layout(kGrowHeight),
    TextRow(1011, L"ExclExt").Layout(kGrowHeight),
    TypedRow(1043, L"Empty", 0).Layout(kMoveDown),
    TypedRow(1042, L"Recurse", 0).Layout(kMoveDown),
    TypedRow(1044, L"Flat", 0).Layout(kMoveDown),
    TypedRow(1041, L"Incremental", 1).Layout(kMoveDown),
    TypedRow(1050, L"Purge", 0).Layout(kMoveDown),
    TypedRow(1049, L"Move", 0).Layout(kMoveDown),
    TypedRow(1051, L"MoveDirs", 0).Layout(kMoveDown),
};

constexpr FieldDescriptor kCopyFilesOpt[] = {
    TypedRow(1041, L"NoCopy", 0),
    TypedRow(1038, L"LogCopied", 1),
    TypedRow(1039, L"LogUpToDate", 0),
    TypedRow(1042, L"IgnoreSrc", 0),
    TypedRow(1040, L"Restartable", 1),
    TypedRow(1050, L"ReadOnly", 1),
    TypedRow(1053, L"Hidden", 0),
    TypedRow(1051, L"Archive", 0),
    TypedRow(1052, L"ClearArchive", 0),
    TypedRow(1048, L"ShortNames", 0),
    TypedRow(1049, L"TBD", 1),
    TextRow(1010, L"Retries").Required().Default(L"10"),
    TextRow(1028, L"Delay").Required().Default(L"15"),
};

constexpr FieldDescriptor kZipFiles[] = {
    TypedRow(1084, L"Action", 2),
    TextRow(1047, L"Source").Required().Layout(kGrowWidth).Folder().ReplaceOnInsert().Quoted(),
    TextRow(1010, L"Ext").Layout(kGrowHeight),
    TextRow(1011, L"ExclExt").Layout(kGrowHeight),
    TextRow(1009, L"Dest").Required().Layout(kGrowWidth | kMoveDown).File(220).ReplaceOnInsert().Quoted(),
    LayoutRow(1090, kMoveDown),
    TypedRow(1042, L"Recurse", 0).Layout(kMoveDown),
    TypedRow(1043, L"NoPaths", 0).Layout(kMoveDown),
    TypedRow(1085, L"PathInfo", 0).Layout(kMoveDown),
};

constexpr FieldDescriptor kZipFilesOpt[] = {
    TypedRow(1053, L"Hidden", 1),
    TypedRow(1051, L"Archive", 0),
    TypedRow(1052, L"ClearArchive", 0),
    TypedRow(1087, L"LogDetail", 1),
    TypedRow(1048, L"ShortNames", 0),
    TypedRow(1054, L"SkipLocked", 0),
    TextRow(1012, L"Compression").Required().Default(L"5"),
    TypedRow(1031, L"Delete", 0),
    TypedRow(1055, L"Grow", 0),
    TextRow(1013, L"Comment").Layout(kGrowWidth).File(),
};

constexpr FieldDescriptor kUnzipFiles[] = {
    TypedRow(1084, L"Action", 2),
    TextRow(1047, L"Source").Required().Layout(kGrowWidth).File(220).ReplaceOnInsert().Quoted(),
    TextRow(1010, L"Ext").Layout(kGrowHeight),
    TypedRow(1042, L"Recurse", 0).Layout(kMoveDown),
    TypedRow(1085, L"PathInfo", 1).Layout(kMoveDown),
    TextRow(1009, L"Dest").Required().Layout(kGrowWidth | kMoveDown).Folder().ReplaceOnInsert().Quoted(),
    LayoutRow(1090, kMoveDown),
    TypedRow(1087, L"LogDetail", 1).Layout(kMoveDown),
    TypedRow(1048, L"ShortNames", 0).Layout(kMoveDown),
    TypedRow(1050, L"ReadOnly", 0).Layout(kMoveDown),
};

} // namespace

CopyFilesUI::CopyFilesUI() noexcept : RulePage(183, kCopyFiles, std::size(kCopyFiles)) {}

void CopyFilesUI::ApplyRules() {
    EnableItems({1043, 1044}, IsChecked(1042)); // empty folders and flat copy only mean something when recursing
    EnableItem(1051, IsChecked(1049));          // folders move only with their files
}

CopyFilesOptUI::CopyFilesOptUI() noexcept : RulePage(182, kCopyFilesOpt, std::size(kCopyFilesOpt)) {}

void CopyFilesOptUI::ApplyRules() { EnableItem(1052, IsChecked(1051)); }

ZipFilesUI::ZipFilesUI() noexcept : RulePage(1029, kZipFiles, std::size(kZipFiles)) {}

// The index of the chosen entry is the stored Action.
void ZipFilesUI::AfterCreate() { AddListItems(1084, {L"Add", L"Freshen", L"Update"}); }

void ZipFilesUI::ApplyRules() {
    const bool recurse = IsChecked(1042);
    EnableItem(1043, recurse);
    EnableItem(1085, !(recurse && IsChecked(1043))); // without paths there is no full path to save
}

ZipFilesOptUI::ZipFilesOptUI() noexcept : PropertyPage(1030, kZipFilesOpt, std::size(kZipFilesOpt)) {}

UnzipFilesUI::UnzipFilesUI() noexcept : PropertyPage(1031, kUnzipFiles, std::size(kUnzipFiles)) {}

void UnzipFilesUI::AfterCreate() { AddListItems(1084, {L"Extract", L"Freshen", L"Update"}); }

} // namespace tol
