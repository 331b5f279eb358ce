// SPDX-License-Identifier: MIT
// Reads single pixels of a raw frame at full depth.
#pragma once

#include <Vistrel/PixVal.h>
#include <Vistrel/RawImage.h>

namespace Vistrel {

/// Reads the pixel at `position`; mosaics give their raw site value. The caller holds the frame's lock. False, and
/// `value` zeroed, outside the frame or for a frame that has no readable pixels.
bool readPixel(const RawImage& raw, const PixPos& position, PixVal& value);

/// The greatest value of one channel: 255 for 8 bits a channel, 4095 for 12, and so on; 0 for an unknown depth.
std::uint32_t channelMaximum(Format format);

} // namespace Vistrel
