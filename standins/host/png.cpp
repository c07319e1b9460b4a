#include "png.h"
#include "frame/errors.h"
#include <zlib.h>
#include <stdexcept>

namespace host {
namespace {

void AppendBigEndian(std::string& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>((value >> shift) & 0xFF);
}

// Length, type, data and the CRC of type and data.
void AppendChunk(std::string& out, const char (&type)[5], const std::string& data) {
    AppendBigEndian(out, static_cast<std::uint32_t>(data.size()));
    const std::string body = std::string(type, 4) + data;
    out += body;
    AppendBigEndian(out, static_cast<std::uint32_t>(
                             ::crc32(0, reinterpret_cast<const Bytef*>(body.data()), static_cast<uInt>(body.size()))));
}

// Each row gets the "Sub" filter (1): a byte minus the same byte of the pixel to its left, which suits the flat
// areas of a window.
std::string FilteredRows(const std::vector<std::uint8_t>& rgb, std::uint32_t width, std::uint32_t height) {
    const size_t stride = size_t{width} * 3;
    std::string rows;
    rows.reserve((stride + 1) * height);
    for (std::uint32_t y = 0; y < height; ++y) {
        const std::uint8_t* row = rgb.data() + stride * y;
        rows += '\x01';
        for (size_t x = 0; x < stride; ++x) rows += static_cast<char>(row[x] - (x >= 3 ? row[x - 3] : 0));
    }
    return rows;
}

std::string Compressed(const std::string& data) {
    uLongf size = ::compressBound(static_cast<uLong>(data.size()));
    std::string out(size, '\0');
    const int status = ::compress2(reinterpret_cast<Bytef*>(out.data()), &size, reinterpret_cast<const Bytef*>(data.data()),
                                   static_cast<uLong>(data.size()), Z_BEST_COMPRESSION);
    if (status != Z_OK)
        throw tol::truntime_error(L"zlib could not compress the picture (status " + std::to_wstring(status) + L")");
    out.resize(size);
    return out;
}

} // namespace

std::string EncodePng(const std::vector<std::uint8_t>& rgb, std::uint32_t width, std::uint32_t height) {
    if (width == 0 || height == 0 || rgb.size() != size_t{width} * height * 3)
        throw tol::truntime_error(L"a picture of " + std::to_wstring(width) + L" x " + std::to_wstring(height) +
                                  L" pixels needs three bytes a pixel");
    std::string header;
    AppendBigEndian(header, width);
    AppendBigEndian(header, height);
    header += std::string("\x08\x02\x00\x00\x00", 5); // 8 bits a sample, truecolour, deflate, adaptive filters, no interlace
    std::string png("\x89PNG\r\n\x1A\n", 8);
    AppendChunk(png, "IHDR", header);
    AppendChunk(png, "IDAT", Compressed(FilteredRows(rgb, width, height)));
    AppendChunk(png, "IEND", {});
    return png;
}

} // namespace host
