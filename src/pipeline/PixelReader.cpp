// SPDX-License-Identifier: MIT
// Reads single pixels of a raw frame at full depth.
#include "pipeline/PixelReader.h"

#include "pipeline/Conversion.h"
#include "pipeline/PackedIterators.h"

namespace Vistrel {

namespace {

template <std::uint32_t swap>
std::uint32_t packedPixel(const RawImage& raw, std::size_t x, std::size_t y)
{
    Gray10PackedIterator<swap> pixel(raw.data + y * raw.width * 2, packedFrameEnd(raw));
    pixel.skipGroups(x / 4 * 4);
    for (std::size_t i = 0; i < x % 4; ++i)
        ++pixel;
    return pixel.fullDepth();
}

std::uint32_t word(const std::uint8_t* bytes)
{
    return bytes[0] | std::uint32_t{bytes[1]} << 8;
}

std::uint32_t monochromePixel(const RawImage& raw, std::size_t x, std::size_t y)
{
    const unsigned depth = formatDepth(raw.format);
    if (depth == 10 && (raw.format & formatPackingMask) == Packedp)
        return packedPixel<Packedp>(raw, x, y);
    if (depth == 10 && (raw.format & formatPackingMask) == PackedNoSwap)
        return packedPixel<PackedNoSwap>(raw, x, y);
    const std::uint8_t* const bytes = raw.data + (y * raw.width + x) * bytesPerPixel(raw.format);
    return (depth == 8 ? bytes[0] : word(bytes)) & channelMaximum(raw.format);
}

} // namespace

std::uint32_t channelMaximum(Format format)
{
    const unsigned depth = formatDepth(format);
    if (isMonochrome(format))
        return (1u << depth) - 1;
    if (depth == 32)
        return 255;
    return isColor(format) ? (1u << depth / 3) - 1 : 0;
}

bool readPixel(const RawImage& raw, const PixPos& position, PixVal& value)
{
    value = PixVal();
    if (!raw.data || !isReadable(raw) || position.x < 0 || position.y < 0)
        return false;
    const auto x = static_cast<std::size_t>(position.x);
    const auto y = static_cast<std::size_t>(position.y);
    if (x >= raw.width || y >= raw.height)
        return false;

    if (isMonochrome(raw.format)) {
        value.mono = true;
        value.value = monochromePixel(raw, x, y);
        return true;
    }

    const std::uint8_t* const bytes = raw.data + (y * raw.width + x) * bytesPerPixel(raw.format);
    std::uint32_t channels[3] = {};
    if (formatDepth(raw.format) == 30) {
        const std::uint32_t fields = word(bytes) | word(bytes + 2) << 16;
        for (unsigned i = 0; i < 3; ++i)
            channels[i] = (fields >> 10 * i) & 0x3FF;
    } else {
        for (unsigned i = 0; i < 3; ++i)
            channels[i] = bytesPerPixel(raw.format) == 6 ? word(bytes + 2 * i) & channelMaximum(raw.format) : bytes[i];
    }
    // The first channel is red in the BGR order, but in the RGB order of the 30-bit word.
    const bool redFirst = ((raw.format & formatOrderMask) == OrderBGR) != (formatDepth(raw.format) == 30);
    value.color = true;
    value.r = redFirst ? channels[0] : channels[2];
    value.g = channels[1];
    value.b = redFirst ? channels[2] : channels[0];
    return true;
}

} // namespace Vistrel
