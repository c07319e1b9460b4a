#include "results.h"
#include "frame/messages.h"
#include <windows.h>
#include <iterator>

namespace tol {
namespace {

const char* const kZipTexts[] = {
    "",
    "Busy, can't enter now",
    "Unexpected end of zip file",
    "Zip file structure invalid",
    "Out of memory",
    "Internal logic error",
    "Entry too big to split",
    "Invalid comment format",
    "Zip file invalid or insufficient memory",
    "Application cancelled operation",
    "Temporary file failure",
    "Input file read failure",
    "Nothing to do!",
    "Missing or empty zip file",
    "Output file write failure, possible disk full",
    "Could not create output file",
    "Invalid combination of control parameters",
    "Could not complete operation",
    "File not found or no read permission",
    "Media Error Encountered",
    "Invalid combination of Multi-Volume control parameters",
    "Improper use of Multi-Volume Zip file",
};

const char* const kUnzipTexts[] = {
    "", "", "Unexpected end of zip file", "Zip file structure invalid", "Out of memory", "Out of memory", "", "", "",
    "File not found", "", "No files to test, extract, etc.",
    "The same disk volume can not be used as both the source and destination", "", "", "", "", "", "", "", "", "",
    "", "", "", "Index out of bounds", "", "", "Error creating output file", "Error opening archive", "", "", "", "",
    "", "", "", "", "", "Bad CRC", "Application cancelled operation", "File skipped, encrypted",
    "File skipped, unknown compression method", "", "Bad or missing decrypt code", "Busy, can't enter now",
    "Can't extract a Volume ID item", "Command syntax error", "Operation cancelled", "Operation skipped", "Disk full",
};

static_assert(std::size(kZipTexts) == 22, "ZIP codes 0 to 21");
static_assert(std::size(kUnzipTexts) == 51, "UNZIP codes 0 to 50");

} // namespace

const ResultTable kZipResults{L"DZIP32.dll", kZipTexts, 22, {0, 12}, 9};
const ResultTable kUnzipResults{L"DUNZIP32.dll", kUnzipTexts, 51, {0, 11}, 40};

ResultKind ResultTable::Classify(long code) const noexcept {
    if (code == successCodes[0] || code == successCodes[1]) return ResultKind::Success;
    return code == cancelCode ? ResultKind::Cancelled : ResultKind::Error;
}

std::wstring ResultTable::Text(long code) const {
    if (code >= 0 && code < count) return Widen(texts[code], CP_ACP);
    return FormatMessageText(L"%1 result %2!d!", {library, code});
}

} // namespace tol
