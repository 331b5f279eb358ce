// SPDX-License-Identifier: MIT
// Reads single pixels of a raw frame at full depth.
#pragma once

#include <Vistrel/PixVal.h>
#include <Vistrel/RawImage.h>

namespace Vistrel {

/// Reads the pixel at `position`; mosaics give their raw site value. The caller holds the frame's lock. False, and
/// `value` zeroed, outside the frame or for a frame that has no readable pixels.
bool readPixel(const RawImage& raw, const PixPos& position, PixVal& value);

} // namespace Vistrel
