// Calling dzip and dunzip directly, as the actions do, with a command block built from a request and callbacks that
// record what the library reports; and reading an archive back with the format code.
#pragma once
#include "actions/zip/unzip_block.h"
#include "actions/zip/zip_block.h"
#include "format/entry.h"
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace ziptest {

// What the callbacks saw, and how they answer.
struct Callbacks {
    std::vector<std::string> files;          // code-100 messages
    std::vector<std::string> notes;          // messages with other codes
    int polls = 0;
    int cancelFromPoll = -1;                 // answer "cancel" from this poll on (0: the first); -1 never
    long confirmAnswer = 1;
    std::vector<std::string> confirmations;  // "operation name"
};

struct ZipRequest {
    std::int32_t function = tol::ZipAdd;
    std::string zipFile;
    std::string item;                        // quoted as the action quotes it
    bool recurse = true;
    std::int32_t compression = 5;
    std::int32_t grow = 0;
    bool noPaths = false;
    std::optional<std::string> comment;
    std::string include, exclude;            // quoted argument lists
    bool hidden = true;
    std::uint16_t options = tol::ZipRelativePaths | tol::ZipUtf8Names;
    std::uint32_t size = sizeof(tol::ZipCommandBlock);
};

struct UnzipRequest {
    std::string zipFile;
    std::string files = "*.*";
    std::string destination;
    bool freshen = false, update = false, dropFolders = false, recurse = false;
    std::uint16_t options = tol::UnzipOemNames;
    std::int32_t function = tol::kUnzipExtract;
};

long CallZip(const ZipRequest& request, Callbacks& callbacks);
long CallUnzip(const UnzipRequest& request, Callbacks& callbacks);

// An argument quoted as the actions quote items and masks.
std::string Quoted(const std::string& text);
std::string Narrow(const std::wstring& text);  // ANSI

// Text that deflates well; bytes with a little-endian value written over four of them; a file's last-write time.
std::string Compressible(std::size_t size);
std::string Put32At(std::string bytes, std::size_t at, std::uint32_t value);
void SetModified(const std::wstring& path, std::int64_t unixSeconds);

struct Listed {
    std::string name;
    std::uint16_t method = 0;
    std::uint64_t compressedSize = 0;
    bool folder = false;
    std::string data;    // extracted; "<error N>" when extraction fails with status N
};

struct Listing {
    int status = -1;     // the reader's zipformat::Status
    std::string comment;
    std::vector<Listed> entries;
    std::vector<std::string> Names() const;
    const Listed* Find(const std::string& name) const;
};

Listing ReadBack(const std::wstring& zipFile);

} // namespace ziptest
