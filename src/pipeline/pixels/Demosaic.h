// SPDX-License-Identifier: MIT
// Interpolates the missing colours of a mosaic.
#pragma once

#include "pipeline/pixels/PixelFormats.h"

namespace Vistrel {

/// A mosaic smaller than this on a side has no room for the interpolation.
constexpr std::size_t smallestMosaic = 4;

/// Converts rows of a mosaic below `end` into colour of four bytes a pixel. The frame is readable, and has
/// `smallestMosaic` rows and columns at least.
///
/// Linear interpolation with gradient correction over 5 x 5 sites: H. S. Malvar, L. He, R. Cutler, "High-quality linear
/// interpolation for demosaicing of Bayer-patterned color images", ICASSP 2004. At the borders the mosaic is mirrored
/// without repeating the edge. Values are interpolated at full depth, rounded, reduced to 8 bits, then clamped.
void interpolateRows(const PixelFormat& format, const RawImage& raw, const PictureTarget& target, std::size_t row,
                     std::size_t end);

} // namespace Vistrel
