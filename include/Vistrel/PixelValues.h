// SPDX-License-Identifier: MIT
// What is written into the pixels of an enlarged image.
#pragma once

#include <cstdint>

namespace Vistrel {

/// The labels of single pixels. They are shown from the zoom on at which the widest one of the image fits a pixel.
enum class PixelValues : std::int32_t {
    Off,
    WithPosition, ///< coordinates and value, in a box that covers a part of the pixel
    /// The value on the pixel's own colour, in black or white: from 32 logical screen pixels an image pixel on for
    /// monochrome. Colour has three lines, red, green and blue, from 48 on.
    ValueOnly,
};

} // namespace Vistrel
