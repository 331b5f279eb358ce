// SPDX-License-Identifier: MIT
// What a screen pixel shows that several pixels of the image share.
#pragma once

#include <cstdint>

namespace Vistrel {

/// How a picture is shrunk to the screen. Each pixel of the screen covers some columns and rows of the image, and each
/// pixel of the image belongs to exactly one pixel of the screen. Where a screen pixel covers one image pixel, all
/// modes show that. Pixel values are read from the image in any mode.
enum class ShrinkMode : std::int32_t {
    Sample,  ///< the upper left one of the covered pixels: the fastest
    Mean,    ///< their mean, rounded half up: fine patterns show no false ones
    Maximum, ///< their largest value: no bright pixel is lost
};

} // namespace Vistrel
