// SPDX-License-Identifier: MIT
// The table of the pixel formats: names, layouts, conversions.
#pragma once

#include "pipeline/pixels/Kernels.h"

#include <Vistrel/RawImage.h>

#include <cstddef>
#include <cstdint>

namespace Vistrel {

/// The field that is zero in every format. A code with bits in it is unknown.
constexpr std::uint32_t formatLayoutMask = 0xFF0000;

/// How the pixels of a row lie in memory.
struct PixelLayout
{
    std::size_t bytesPerPixel; // from one pixel to the next; of packed pixels, in the mean of a whole row
    std::size_t bitsPerPixel;  // that the last row of a frame has at least
    std::size_t samples;       // of a pixel: 1, 3, or 4 of which the last is no channel of the picture
    bool hasSpareBits;         // some bits of a row belong to no sample

    /// Copies the samples of `count` pixels of a row, in their order in memory, with whatever lies above their depth.
    /// `first` is a multiple of 4.
    void (*unpack)(const RawImage& raw, std::size_t row, std::size_t first, std::size_t count, std::uint16_t* samples);
    /// The inverse, for a whole row of zeroed bytes. False, and the row half done, when a sample has too many bits.
    bool (*pack)(const RawImage& raw, const std::uint16_t* samples, std::uint8_t* row);
};

/// The 8-bit picture of a frame, as rows without gaps.
struct PictureTarget
{
    std::uint8_t* bits;
    std::size_t pixelBytes; // 1 for grey; 3 or 4 for colour, the fourth being 0xFF
    Kernels::Stores stores;
};

struct PixelFormat;

/// How frames of a format become pictures.
struct PictureConversion
{
    /// Converts rows below `end`. Several threads may convert rows of one frame at once.
    void (*rows)(const PixelFormat& format, const RawImage& raw, const PictureTarget& target, std::size_t row,
                 std::size_t end);
    bool isColor;           // the picture is
    std::size_t weight;     // cost of a byte, in units of a plain copy's
    std::size_t fewestRows; // that are worth a call
};

/// One pixel format.
struct PixelFormat
{
    Format code;
    unsigned bits; // of a sample
    const char* name;
    const PixelLayout* layout;
    bool isRedFirst; // the first of three samples is red; else it is blue
    PictureConversion conversion;
};

/// The format as which a code is shown, named and saved: fields that mean nothing in it, such as a channel order in
/// monochrome, are passed over. Null for a code that is shown as none.
const PixelFormat* findFormat(Format code);

/// The code of `findFormat(code)`, or `code` itself when that is null.
Format plainFormat(Format code);

/// The greatest value of one channel: 255 for 8 bits a channel, 4095 for 12, and so on; 0 for an unknown format.
std::uint32_t channelMaximum(Format code);

/// Whether bytes of `bytes` a pixel can be counted: a row's in an `int`, a frame's in a pointer difference.
bool hasPixelBytes(std::size_t width, std::size_t height, std::size_t bytes);

/// Whether the frame has a known format and a size whose bytes can be counted. The data pointer is not checked.
bool isReadable(const RawImage& raw);

/// The end of the bytes that the pixels of a frame need. The format is known. `PackedNoSwap` groups that reach beyond
/// it read zeros.
const std::uint8_t* frameEnd(const RawImage& raw);

} // namespace Vistrel
