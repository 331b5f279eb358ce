// SPDX-License-Identifier: MIT
// Converts frames to images without loss of any bit, and back.
#pragma once

#include "pipeline/frames/PixelBlocks.h"

#include <Vistrel/RawImage.h>

#include <QtGui/QImage>

#include <functional>

namespace Vistrel {

/// Returns an image of the frame's samples, grey of 8 or 16 bits or colour, with the format's name as text. `extras`
/// receives the difference between the frame and what the samples alone give; it is empty without a difference. The
/// frame must be readable to its last byte and aligned to words, and its format must have a name. Null when Qt cannot
/// hold such an image. Throws `std::bad_alloc`, as does the other function.
QImage imageFromFrame(const RawImage& raw, PixelBuffer& extras);

/// Writes the samples to `pixels`, which `raw` then describes: in the format that the image names or, when it names
/// none or cannot come from a frame of that format, in the closest one. `applyExtras` adds what the samples do not
/// give, and returns whether it fits this frame. Returns false and changes neither for a null image.
bool frameFromImage(const QImage& image, const std::function<bool(PixelBuffer&)>& applyExtras, PixelBuffer& pixels,
                    RawImage& raw);

} // namespace Vistrel
