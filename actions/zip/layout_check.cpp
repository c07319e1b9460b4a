// The 32-bit layout of the two command blocks, as the libraries read them. The build compiles this file for i686
// (syntax only); the 64-bit build keeps the same field order with wider pointers.
#include "unzip_block.h"
#include "zip_block.h"
#include <cstddef>

#if !defined(__i386__)
#error "layout_check.cpp checks the 32-bit layout: compile it for i686"
#endif

#define CHECK_OFFSET(Block, field, offset) static_assert(offsetof(tol::Block, field) == (offset), #Block "::" #field)

static_assert(sizeof(tol::ZipCommandBlock) == 220, "ZipCommandBlock is 220 bytes");
CHECK_OFFSET(ZipCommandBlock, size, 0);
CHECK_OFFSET(ZipCommandBlock, function, 4);
CHECK_OFFSET(ZipCommandBlock, zipFile, 8);
CHECK_OFFSET(ZipCommandBlock, item, 12);
CHECK_OFFSET(ZipCommandBlock, cancel, 16);
CHECK_OFFSET(ZipCommandBlock, cancelData, 20);
CHECK_OFFSET(ZipCommandBlock, message, 24);
CHECK_OFFSET(ZipCommandBlock, messageData, 28);
CHECK_OFFSET(ZipCommandBlock, recurse, 36);
CHECK_OFFSET(ZipCommandBlock, compression, 40);
CHECK_OFFSET(ZipCommandBlock, fileMessages, 44);
CHECK_OFFSET(ZipCommandBlock, folderEntries, 56);
CHECK_OFFSET(ZipCommandBlock, allowZip64, 60);
CHECK_OFFSET(ZipCommandBlock, grow, 72);
CHECK_OFFSET(ZipCommandBlock, noPaths, 76);
CHECK_OFFSET(ZipCommandBlock, hasComment, 84);
CHECK_OFFSET(ZipCommandBlock, comment, 88);
CHECK_OFFSET(ZipCommandBlock, hasInclude, 104);
CHECK_OFFSET(ZipCommandBlock, include, 108);
CHECK_OFFSET(ZipCommandBlock, hasExclude, 112);
CHECK_OFFSET(ZipCommandBlock, exclude, 116);
CHECK_OFFSET(ZipCommandBlock, hiddenFiles, 124);
CHECK_OFFSET(ZipCommandBlock, confirm, 148);
CHECK_OFFSET(ZipCommandBlock, confirmData, 152);
CHECK_OFFSET(ZipCommandBlock, options, 158);
CHECK_OFFSET(ZipCommandBlock, extendedTimes, 188);
static_assert(sizeof(tol::ZipCommandBlock::options) == 2, "the ZIP option bits are 16 bits wide");

static_assert(sizeof(tol::UnzipCommandBlock) == 170, "UnzipCommandBlock is 170 bytes");
CHECK_OFFSET(UnzipCommandBlock, size, 0);
CHECK_OFFSET(UnzipCommandBlock, function, 4);
CHECK_OFFSET(UnzipCommandBlock, zipFile, 8);
CHECK_OFFSET(UnzipCommandBlock, files, 16);
CHECK_OFFSET(UnzipCommandBlock, destination, 24);
CHECK_OFFSET(UnzipCommandBlock, freshen, 28);
CHECK_OFFSET(UnzipCommandBlock, update, 32);
CHECK_OFFSET(UnzipCommandBlock, restoreTimes, 36);
CHECK_OFFSET(UnzipCommandBlock, dropFolders, 48);
CHECK_OFFSET(UnzipCommandBlock, recurse, 52);
CHECK_OFFSET(UnzipCommandBlock, message, 60);
CHECK_OFFSET(UnzipCommandBlock, messageData, 64);
CHECK_OFFSET(UnzipCommandBlock, cancel, 68);
CHECK_OFFSET(UnzipCommandBlock, cancelData, 72);
CHECK_OFFSET(UnzipCommandBlock, confirm, 100);
CHECK_OFFSET(UnzipCommandBlock, confirmData, 104);
CHECK_OFFSET(UnzipCommandBlock, options, 108);
static_assert(sizeof(tol::UnzipCommandBlock::options) == 2, "the UNZIP option bits are 16 bits wide");

// The callbacks are 4-byte code pointers called with the standard convention.
static_assert(sizeof(tol::ArchiveCancelCallback) == 4 && sizeof(tol::ArchiveMessageCallback) == 4 &&
                  sizeof(tol::ArchiveConfirmCallback) == 4,
              "32-bit callbacks");
