// PNG files of 24-bit pictures, compressed with zlib.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace host {

// rgb holds height rows of width pixels, three bytes each (red, green, blue), top row first.
// Returns the bytes of the PNG file (8-bit truecolour, no interlace).
std::string EncodePng(const std::vector<std::uint8_t>& rgb, std::uint32_t width, std::uint32_t height);

} // namespace host
