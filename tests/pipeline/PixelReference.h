// SPDX-License-Identifier: MIT
// Pixels read byte by byte as the layouts are defined, to compare the real conversions with.
#pragma once

#include "support/GuardedBuffer.h"

#include <Vistrel/RawImage.h>

#include <QtCore/QByteArray>
#include <QtGui/QImage>

#include <random>
#include <vector>

namespace PixelReference {

using namespace Vistrel;
using Random = std::mt19937;

struct NamedFormat
{
    QByteArray name;
    Format format;
};

/// Every format that has a name, put together from the pieces of names and codes.
inline std::vector<NamedFormat> namedFormats()
{
    using Pieces = std::vector<std::pair<const char*, unsigned>>;
    const Pieces patterns{{"Mono", 0}, {"BayerGB", 0x100}, {"BayerGR", 0x200}, {"BayerRG", 0x300}, {"BayerBG", 0x400}};
    const Pieces depths{{"8", 8},   {"10", 10}, {"10p", 0x400A}, {"10p_NoSwap", 0x800A},
                        {"12", 12}, {"14", 14}, {"16", 16}};
    const Pieces orders{{"RGB", 0}, {"BGR", 0x2000}};
    const Pieces colors{{"8", 24}, {"10p32", 30}, {"a8", 32}, {"12", 36}, {"14", 42}, {"16", 48}};
    std::vector<NamedFormat> formats;
    const auto combine = [&](const Pieces& starts, const Pieces& ends) {
        for (const auto& start : starts) {
            for (const auto& end : ends)
                formats.push_back({QByteArray(start.first) + end.first, Format(start.second + end.second)});
        }
    };
    combine(patterns, depths);
    combine(orders, colors);
    return formats;
}

struct Layout
{
    unsigned channels;
    unsigned bits;     // a channel
    std::size_t bytes; // from pixel to pixel
};

inline Layout layoutOf(Format format)
{
    const unsigned depth = format & 0xFF;
    const unsigned channels = depth < 24 ? 1 : 3;
    const unsigned bits = depth == 32 ? 8 : depth / channels;
    const bool isOneWord = depth == 30 || depth == 32;
    return {channels, bits, isOneWord ? 4 : channels * (bits == 8 ? 1u : 2u)};
}

/// 0x4000 most significant bit first, 0x8000 not swapped; anything else is not packed.
inline unsigned packingOf(Format format)
{
    return (format & 0xFF) == 10 ? format & 0xC000 : 0;
}

inline bool isMosaic(Format format)
{
    return layoutOf(format).channels == 1 && (format & 0xF00) != 0;
}

/// The bytes that a frame must have; of one packed most significant bit first, no more than the last pixel's bits.
inline std::size_t neededBytes(Format format, std::size_t width, std::size_t height)
{
    if (packingOf(format) == 0x4000)
        return 2 * width * (height - 1) + (10 * width + 7) / 8;
    return layoutOf(format).bytes * width * height;
}

/// `count` bytes from `offset` as a little-endian number; those past the frame count as zero.
inline std::uint64_t numberAt(const RawImage& raw, std::size_t offset, unsigned count)
{
    std::uint64_t number = 0;
    for (unsigned i = 0; i < count && offset + i < layoutOf(raw.format).bytes * raw.width * raw.height; ++i)
        number |= std::uint64_t{raw.data[offset + i]} << 8 * i;
    return number;
}

/// The `channel`th channel of the pixel in memory, with all bits that lie there.
inline unsigned channelAt(const RawImage& raw, std::size_t x, std::size_t y, unsigned channel = 0)
{
    const Layout layout = layoutOf(raw.format);
    const std::size_t row = y * raw.width * layout.bytes;
    if (packingOf(raw.format) == 0x4000) {
        unsigned value = 0;
        for (std::size_t bit = 10 * x; bit < 10 * x + 10; ++bit)
            value = value << 1 | ((numberAt(raw, row + bit / 8, 1) >> (7 - bit % 8)) & 1);
        return value;
    }
    if (packingOf(raw.format) == 0x8000)
        return (numberAt(raw, row + x / 4 * 5, 8) >> (54 - x % 4 * 10)) & 0x3FF;
    const std::size_t pixel = row + x * layout.bytes;
    if ((raw.format & 0xFF) == 30)
        return (numberAt(raw, pixel, 4) >> 10 * channel) & 0x3FF;
    const unsigned bytes = layout.bits == 8 ? 1 : 2;
    return static_cast<unsigned>(numberAt(raw, pixel + bytes * channel, bytes));
}

/// Which channel in memory is the `color`th of red, green, blue.
inline unsigned channelOf(Format format, unsigned color)
{
    const bool bgr = (format & 0x3000) == 0x2000;
    const bool redFirst = (format & 0xFF) == 30 ? !bgr : bgr;
    return redFirst || layoutOf(format).channels == 1 ? color : 2 - color;
}

/// A published filter, in sixteenths of the sites around the one in the middle.
using Taps = int[5][5];

constexpr Taps itself = {{}, {}, {0, 0, 16, 0, 0}, {}, {}};
constexpr Taps greenAtColor = {{0, 0, -2, 0, 0}, {0, 0, 4, 0, 0}, {-2, 4, 8, 4, -2}, {0, 0, 4, 0, 0}, {0, 0, -2, 0, 0}};
constexpr Taps colorOfTheRow = {
    {0, 0, 1, 0, 0}, {0, -2, 0, -2, 0}, {-2, 8, 10, 8, -2}, {0, -2, 0, -2, 0}, {0, 0, 1, 0, 0}};
constexpr Taps colorOfTheColumn = {
    {0, 0, -2, 0, 0}, {0, -2, 8, -2, 0}, {1, 0, 10, 0, 1}, {0, -2, 8, -2, 0}, {0, 0, -2, 0, 0}};
constexpr Taps oppositeColor = {
    {0, 0, -3, 0, 0}, {0, 4, 0, 4, 0}, {-3, 0, 12, 0, -3}, {0, 4, 0, 4, 0}, {0, 0, -3, 0, 0}};

/// 'R', 'G' or 'B'.
inline char siteColor(Format format, std::size_t x, std::size_t y)
{
    const char* const patterns[] = {"GBRG", "GRBG", "RGGB", "BGGR"};
    return patterns[((format >> 8) & 0xF) - 1][(y & 1) * 2 + (x & 1)];
}

/// Beyond the borders the mosaic goes on mirrored about the outermost sites.
inline std::size_t mirrored(std::size_t position, std::size_t tap, std::size_t size)
{
    const std::size_t inside = position + tap < 2 ? 2 - position - tap : position + tap - 2;
    return inside >= size ? 2 * (size - 1) - inside : inside;
}

/// The `color`th of red, green, blue at a site of a mosaic, in the frame's depth.
inline unsigned interpolated(const RawImage& raw, std::size_t x, std::size_t y, unsigned color)
{
    const char wanted = "RGB"[color];
    const Taps* taps = &oppositeColor;
    if (siteColor(raw.format, x, y) == wanted)
        taps = &itself;
    else if (wanted == 'G')
        taps = &greenAtColor;
    else if (siteColor(raw.format, x + 1, y) == wanted)
        taps = &colorOfTheRow;
    else if (siteColor(raw.format, x, y + 1) == wanted)
        taps = &colorOfTheColumn;
    int sum = 8;
    for (std::size_t i = 0; i < 25; ++i) {
        if (const int tap = (*taps)[i / 5][i % 5])
            sum +=
                tap * static_cast<int>(channelAt(raw, mirrored(x, i % 5, raw.width), mirrored(y, i / 5, raw.height)));
    }
    const int most = (256 << (layoutOf(raw.format).bits - 8)) - 1;
    return static_cast<unsigned>(std::clamp(sum >> 4, 0, most));
}

/// The bytes of the frame converted to `Format_Indexed8`, `Format_RGB888` or `Format_RGBX8888`.
inline QByteArray converted(const RawImage& raw, QImage::Format target)
{
    const Layout layout = layoutOf(raw.format);
    QByteArray bytes;
    for (std::size_t i = 0; i < raw.width * raw.height; ++i) {
        const std::size_t x = i % raw.width;
        const std::size_t y = i / raw.width;
        for (unsigned color = 0; color < (target == QImage::Format_Indexed8 ? 1 : 3); ++color) {
            const unsigned value = isMosaic(raw.format) ? interpolated(raw, x, y, color)
                                                        : channelAt(raw, x, y, channelOf(raw.format, color));
            bytes += static_cast<char>((value >> (layout.bits - 8)) & 0xFF);
        }
        if (target == QImage::Format_RGBX8888)
            bytes += '\xFF';
    }
    return bytes;
}

inline void fillRandom(const GuardedBuffer& buffer, Random& random)
{
    std::generate_n(buffer.data(), buffer.size(), [&] { return static_cast<std::uint8_t>(random()); });
}

/// An image over the memory, rows not padded.
inline QImage imageIn(const GuardedBuffer& memory, std::size_t width, std::size_t height, QImage::Format format)
{
    return QImage(memory.data(), static_cast<int>(width), static_cast<int>(height),
                  static_cast<int>(memory.size() / height), format);
}

inline QByteArray bytesOf(const QImage& image)
{
    return QByteArray(reinterpret_cast<const char*>(image.constBits()), static_cast<int>(image.sizeInBytes()));
}

} // namespace PixelReference
