// SPDX-License-Identifier: MIT
// Interpolates the missing colours of a mosaic.
#pragma once

#include "pipeline/CopyPool.h"

#include <Vistrel/RawImage.h>

#include <QtGui/QImage>

namespace Vistrel {

/// A mosaic smaller than this on a side has no room for the interpolation.
constexpr std::size_t smallestMosaic = 4;

/// Fills a `Format_RGBX8888` target of the frame's size from a frame with pattern bits.
///
/// Linear interpolation with gradient correction over 5 x 5 sites: H. S. Malvar, L. He, R. Cutler, "High-quality linear
/// interpolation for demosaicing of Bayer-patterned color images", ICASSP 2004. At the borders the mosaic is mirrored
/// without repeating the edge. Values are interpolated at full depth, rounded, reduced to 8 bits, then clamped. False,
/// and nothing written, when the frame is under `smallestMosaic` pixels a side, has no pattern, or
/// does not fit the target.
bool demosaic(CopyPool& pool, QImage& target, const RawImage& raw);

} // namespace Vistrel
