// SPDX-License-Identifier: MIT
// The pixel format of a frame, as one 32-bit code.
#pragma once

#include <Vistrel/Export.h>

#include <cstddef>
#include <cstdint>

namespace Vistrel {

/// A value is the sum of its fields: depth (all channels together), mosaic pattern, channel order, 10-bit packing.
///
/// Monochrome and mosaic words of 10 to 16 bits are unsigned 16-bit little-endian, right-aligned. In the "RGB" orders
/// of 8-bit and 16-bit channels the first channel in memory is blue, in the "BGR" orders it is red. In the 30-bit word
/// "RGB" has red in bits 0 to 9, "BGR" has red in bits 20 to 29.
enum Format : std::uint32_t {
    Mono8 = 8,
    Mono10 = 10,
    Mono12 = 12,
    Mono14 = 14,
    Mono16 = 16,

    BayerGB = 0x100, ///< pattern field: first two rows G B / R G
    BayerGR = 0x200, ///< pattern field: first two rows G R / B G
    BayerRG = 0x300, ///< pattern field: first two rows R G / G B
    BayerBG = 0x400, ///< pattern field: first two rows B G / G R

    OrderBGR = 0x2000,     ///< order field; every other value is the RGB order
    Packedp = 0x4000,      ///< packing field, depth 10: most significant bit first
    PackedNoSwap = 0x8000, ///< packing field, depth 10: groups taken from a little-endian 64-bit load

    Mono10p = Mono10 | Packedp,
    Mono10p_NoSwap = Mono10 | PackedNoSwap,

    BayerGB8 = BayerGB | 8,
    BayerGB10 = BayerGB | 10,
    BayerGB10p = BayerGB10 | Packedp,
    BayerGB10p_NoSwap = BayerGB10 | PackedNoSwap,
    BayerGB12 = BayerGB | 12,
    BayerGB14 = BayerGB | 14,
    BayerGB16 = BayerGB | 16,

    BayerGR8 = BayerGR | 8,
    BayerGR10 = BayerGR | 10,
    BayerGR10p = BayerGR10 | Packedp,
    BayerGR10p_NoSwap = BayerGR10 | PackedNoSwap,
    BayerGR12 = BayerGR | 12,
    BayerGR14 = BayerGR | 14,
    BayerGR16 = BayerGR | 16,

    BayerRG8 = BayerRG | 8,
    BayerRG10 = BayerRG | 10,
    BayerRG10p = BayerRG10 | Packedp,
    BayerRG10p_NoSwap = BayerRG10 | PackedNoSwap,
    BayerRG12 = BayerRG | 12,
    BayerRG14 = BayerRG | 14,
    BayerRG16 = BayerRG | 16,

    BayerBG8 = BayerBG | 8,
    BayerBG10 = BayerBG | 10,
    BayerBG10p = BayerBG10 | Packedp,
    BayerBG10p_NoSwap = BayerBG10 | PackedNoSwap,
    BayerBG12 = BayerBG | 12,
    BayerBG14 = BayerBG | 14,
    BayerBG16 = BayerBG | 16,

    RGB8 = 24,
    RGB10p32 = 30,
    RGBa8 = 32,
    RGB12 = 36,
    RGB14 = 42,
    RGB16 = 48,

    BGR8 = RGB8 | OrderBGR,
    BGR10p32 = RGB10p32 | OrderBGR,
    BGRa8 = RGBa8 | OrderBGR,
    BGR12 = RGB12 | OrderBGR,
    BGR14 = RGB14 | OrderBGR,
    BGR16 = RGB16 | OrderBGR,
};

constexpr std::uint32_t formatDepthMask = 0xFF;
constexpr std::uint32_t formatPatternMask = 0xF00;
constexpr std::uint32_t formatOrderMask = 0x3000;
constexpr std::uint32_t formatPackingMask = 0xC000;

/// Bits a pixel, all channels together; not checked.
constexpr unsigned formatDepth(Format format)
{
    return format & formatDepthMask;
}

/// Whether the depth is one of the one-channel depths 8, 10, 12, 14, 16 (a mosaic counts).
constexpr bool isMonochrome(Format format)
{
    const unsigned depth = formatDepth(format);
    return depth >= 8 && depth <= 16 && depth % 2 == 0;
}

/// Whether the depth is one of the three-channel depths 24, 30, 32, 36, 42, 48.
constexpr bool isColor(Format format)
{
    const unsigned depth = formatDepth(format);
    return depth == 24 || depth == 30 || depth == 32 || depth == 36 || depth == 42 || depth == 48;
}

/// Bytes from one pixel to the next, 0 for a depth that no format has. A row is width times this many bytes, with no
/// padding. The packed 10-bit formats count as 2: a row's pixels are packed at its beginning, the rest of it is unused.
constexpr std::size_t bytesPerPixel(Format format)
{
    if (isMonochrome(format))
        return formatDepth(format) == 8 ? 1 : 2;
    switch (formatDepth(format)) {
    case 24:
        return 3;
    case 30:
    case 32:
        return 4;
    case 36:
    case 42:
    case 48:
        return 6;
    default:
        return 0;
    }
}

/// The format's name, such as "BayerRG12" or "RGB10p32"; a static text; null when the value has no name. Fields
/// that mean nothing in a format, such as a channel order in monochrome, are ignored. Thread-safe.
VISTREL_EXPORT const char* formatName(Format format);

/// Finds a format by its exact name. Returns false and leaves `format` unchanged when the name is unknown or an
/// argument is null. Thread-safe.
VISTREL_EXPORT bool formatFromName(const char* name, Format* format);

} // namespace Vistrel
