// Signatures, sizes and field values of the ZIP records that the reader and the writer know.
#pragma once
#include <cstdint>

namespace zipformat {

constexpr std::uint32_t kLocalSignature = 0x04034B50;
constexpr std::uint32_t kCentralSignature = 0x02014B50;
constexpr std::uint32_t kEndSignature = 0x06054B50;
constexpr std::uint32_t kZip64EndSignature = 0x06064B50;
constexpr std::uint32_t kZip64LocatorSignature = 0x07064B50;
constexpr std::uint32_t kDescriptorSignature = 0x08074B50;

constexpr std::size_t kLocalHeaderSize = 30;
constexpr std::size_t kCentralHeaderSize = 46;
constexpr std::size_t kEndRecordSize = 22;
constexpr std::size_t kZip64EndRecordSize = 56;
constexpr std::size_t kZip64LocatorSize = 20;
constexpr std::size_t kMaxCommentSize = 0xFFFF;

// The 16-bit and 32-bit fields that say "see the ZIP64 record".
constexpr std::uint16_t kMax16 = 0xFFFF;
constexpr std::uint32_t kMax32 = 0xFFFFFFFF;

constexpr std::uint16_t kMethodStored = 0;
constexpr std::uint16_t kMethodDeflated = 8;

// General-purpose flag bits.
constexpr std::uint16_t kFlagEncrypted = 0x0001;
constexpr std::uint16_t kFlagDescriptor = 0x0008;
constexpr std::uint16_t kFlagStrongEncryption = 0x0040;
constexpr std::uint16_t kFlagUtf8 = 0x0800;

// Extra field tags.
constexpr std::uint16_t kExtraZip64 = 0x0001;
constexpr std::uint16_t kExtraTimestamp = 0x5455;    // "UT": modification time in UTC seconds
constexpr std::uint16_t kExtraUnicodePath = 0x7075;  // "up": a UTF-8 name beside a name in a code page

// Versions: 2.0 for deflate and folders, 4.5 for ZIP64; the host system in the high byte (0: FAT).
constexpr std::uint16_t kVersionDefault = 20;
constexpr std::uint16_t kVersionZip64 = 45;

// The DOS attribute of a folder in the external attributes.
constexpr std::uint32_t kDosFolder = 0x10;

} // namespace zipformat
