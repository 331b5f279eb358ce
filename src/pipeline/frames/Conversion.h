// SPDX-License-Identifier: MIT
// From raw frames to images that can be painted, and back.
#pragma once

#include "pipeline/frames/CopyPool.h"
#include "pipeline/frames/PixelBlocks.h"
#include "pipeline/frames/Stages.h"

#include <Vistrel/RawImage.h>

#include <QtCore/QVector>
#include <QtGui/QImage>

namespace Vistrel {

/// Whether the frame is readable, is large enough for the interpolation if it is a mosaic, and fits an image of Qt.
bool isConvertible(const RawImage& raw);

/// The kind of target that a frame of this format is converted into: 32 (RGBX8888) for colour and for mosaics, else 8.
int targetKind(Format format);

/// Makes `target` an image of `width` x `height` over `buffer`, whose size is changed only when it differs: kind 32 is
/// `Format_RGBX8888`, kinds 24 to 48 otherwise `Format_RGB888`, any other `Format_Indexed8`; rows are not padded.
/// Returns false and changes neither when Qt cannot hold such an image.
bool prepareTarget(QImage& target, PixelBuffer& buffer, std::size_t width, std::size_t height, int kind);

/// Whether the target has the size and row length of the frame, and a format that its pixels can be converted to.
bool fitsTarget(const QImage& target, const RawImage& raw);

/// Converts a convertible frame into a target that it fits.
void fillTarget(CopyPool& pool, QImage& target, const RawImage& raw, const Stages& stages = {});

/// Prepares the target for the frame and fills it. Returns false and changes neither if the frame is not convertible.
bool convertFrame(CopyPool& pool, QImage& target, PixelBuffer& targetBuffer, const RawImage& raw);

/// Describes an image as a frame: `Mono8` (indices), `RGB8` or `RGBa8`; other formats are converted first, grey ones to
/// indices. Padded rows are repacked into `buffer`. `image` receives the image that `raw` points into. Returns
/// false and changes nothing when the source is null. Keeps `raw.userData`.
bool rawFromImage(CopyPool& pool, const QImage& source, PixelBuffer& buffer, QImage& image, RawImage& raw);

/// Returns the image as it is painted: with a palette of 256 entries, or the grey ramp without one; a colour image with
/// its channel order reversed if asked for. The caller cannot write to shared pixels.
QImage imageForRender(const QImage& stored, const QVector<unsigned int>& palette, bool reverseRgb);

} // namespace Vistrel
