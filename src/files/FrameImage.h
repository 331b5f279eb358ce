// SPDX-License-Identifier: MIT
// Frames as images that keep every bit of them, and back.
#pragma once

#include "pipeline/PixelBlocks.h"

#include <Vistrel/RawImage.h>

#include <QtGui/QImage>

namespace Vistrel {

/// The frame's samples with their values: grey of 8 or 16 bits, or colour. Text fields name the format and keep the
/// bits that belong to no sample. The frame is readable to its last byte, aligned to words, and its format has a name.
/// Null when there can be no such image. Throws `std::bad_alloc`, as the other does.
QImage imageFromFrame(const RawImage& raw);

/// Lays the samples out in `pixels`, which `raw` then describes: in the format that the image names or, when it names
/// none or cannot come from a frame of that format, in the closest one. False, and both unchanged, for a null image.
bool frameFromImage(const QImage& image, PixelBuffer& pixels, RawImage& raw);

} // namespace Vistrel
