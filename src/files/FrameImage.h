// SPDX-License-Identifier: MIT
// Frames as images that keep every bit of them, and back.
#pragma once

#include "pipeline/frames/PixelBlocks.h"

#include <Vistrel/RawImage.h>

#include <QtGui/QImage>

#include <functional>

namespace Vistrel {

/// The frame's samples with their values: grey of 8 or 16 bits, or colour, with the format's name as text. `extras`
/// receives the difference of the frame from what the samples alone give, or nothing when there is none. The frame is
/// readable to its last byte, aligned to words, and its format has a name. Null when there can be no such image. Throws
/// `std::bad_alloc`, as the other does.
QImage imageFromFrame(const RawImage& raw, PixelBuffer& extras);

/// Lays the samples out in `pixels`, which `raw` then describes: in the format that the image names or, when it names
/// none or cannot come from a frame of that format, in the closest one. `applyExtras` adds what the samples do not
/// give, and says whether it belongs to this frame. False, and both unchanged, for a null image.
bool frameFromImage(const QImage& image, const std::function<bool(PixelBuffer&)>& applyExtras, PixelBuffer& pixels,
                    RawImage& raw);

} // namespace Vistrel
