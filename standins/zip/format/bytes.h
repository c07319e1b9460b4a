// Little-endian fields of the archive records: reading them from bytes and appending them to a record.
#pragma once
#include <cstdint>
#include <string>

namespace zipformat {

inline std::uint16_t Get16(const unsigned char* p) noexcept {
    return static_cast<std::uint16_t>(p[0] | (p[1] << 8));
}
inline std::uint32_t Get32(const unsigned char* p) noexcept {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}
inline std::uint64_t Get64(const unsigned char* p) noexcept {
    return static_cast<std::uint64_t>(Get32(p)) | (static_cast<std::uint64_t>(Get32(p + 4)) << 32);
}

inline void Put16(std::string& out, std::uint32_t value) {
    out += static_cast<char>(value & 0xFF);
    out += static_cast<char>((value >> 8) & 0xFF);
}
inline void Put32(std::string& out, std::uint32_t value) {
    Put16(out, value & 0xFFFF);
    Put16(out, value >> 16);
}
inline void Put64(std::string& out, std::uint64_t value) {
    Put32(out, static_cast<std::uint32_t>(value));
    Put32(out, static_cast<std::uint32_t>(value >> 32));
}
inline void Set32(std::string& out, std::size_t at, std::uint32_t value) {
    for (int i = 0; i < 4; ++i) out[at + i] = static_cast<char>((value >> (8 * i)) & 0xFF);
}

} // namespace zipformat
