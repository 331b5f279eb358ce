// SPDX-License-Identifier: MIT
// Writes pixels in the layout of any format.
#include "PixelWriter.h"

#include <cstddef>
#include <utility>

namespace {

using namespace Vistrel;

// Luma for monochrome formats, with the weights of qGray(); the site's channel for mosaics.
unsigned siteValue(int x, int y, Format format, QRgba64 color)
{
    int redColumn = 0;
    int redRow = 0;
    switch (format & formatPatternMask) {
    case BayerRG:
        break;
    case BayerGR:
        redColumn = 1;
        break;
    case BayerGB:
        redRow = 1;
        break;
    case BayerBG:
        redColumn = redRow = 1;
        break;
    default:
        return (color.red() * 11u + color.green() * 16u + color.blue() * 5u) / 32u;
    }
    const bool isRedColumn = x % 2 == redColumn;
    const bool isRedRow = y % 2 == redRow;
    if (isRedColumn != isRedRow)
        return color.green();
    return isRedRow ? color.red() : color.blue();
}

void writeWord(std::uint8_t* at, unsigned value)
{
    at[0] = std::uint8_t(value);
    at[1] = std::uint8_t(value >> 8);
}

// One stream of bits, most significant first: four pixels in five bytes.
void writePacked(std::uint8_t* row, std::size_t x, unsigned value)
{
    std::uint8_t* at = row + x * 10 / 8;
    const unsigned shift = 6 - x * 10 % 8;
    const unsigned pair = ((at[0] * 256u + at[1]) & ~(0x3FFu << shift)) | value << shift;
    at[0] = std::uint8_t(pair >> 8);
    at[1] = std::uint8_t(pair);
}

// A group of four is read from a little-endian 64-bit word whose upper 40 bits hold it, the first pixel uppermost.
void writePackedNoSwap(std::uint8_t* row, std::size_t x, unsigned value)
{
    const std::size_t bit = 24 + 30 - x % 4 * 10;
    std::uint8_t* at = row + x / 4 * 5 + bit / 8;
    const unsigned shift = bit % 8;
    writeWord(at, ((at[0] + at[1] * 256u) & ~(0x3FFu << shift)) | value << shift);
}

void writeSite(std::uint8_t* row, std::size_t x, Format format, unsigned value)
{
    const unsigned depth = formatDepth(format);
    value >>= 16 - depth;
    if (depth == 8)
        row[x] = std::uint8_t(value);
    else if (depth == 10 && (format & formatPackingMask) == Packedp)
        writePacked(row, x, value);
    else if (depth == 10 && (format & formatPackingMask) == PackedNoSwap)
        writePackedNoSwap(row, x, value);
    else
        writeWord(row + x * 2, value);
}

} // namespace

void writePixel(std::uint8_t* row, int x, int y, Format format, QRgba64 color)
{
    const auto column = std::size_t(x);
    if (isMonochrome(format)) {
        writeSite(row, column, format, siteValue(x, y, format, color));
        return;
    }

    // The "RGB" orders have blue first in memory, except the 30-bit word.
    unsigned channels[3] = {color.blue(), color.green(), color.red()};
    const unsigned depth = formatDepth(format);
    if (((format & formatOrderMask) == OrderBGR) != (depth == 30))
        std::swap(channels[0], channels[2]);

    std::uint8_t* at = row + column * bytesPerPixel(format);
    if (depth == 24 || depth == 32) {
        for (int i = 0; i < 3; ++i)
            at[i] = std::uint8_t(channels[i] >> 8);
        if (depth == 32)
            at[3] = 0xFF;
    } else if (depth == 30) {
        const unsigned word = channels[0] >> 6 | (channels[1] >> 6) << 10 | (channels[2] >> 6) << 20;
        writeWord(at, word);
        writeWord(at + 2, word >> 16);
    } else {
        for (int i = 0; i < 3; ++i)
            writeWord(at + i * 2, channels[i] >> (16 - depth / 3));
    }
}
