// SPDX-License-Identifier: MIT
// Paints a picture at any scale without interpolation.
#pragma once

#include <QtCore/QRect>
#include <QtGui/QImage>

#include <cstdint>
#include <vector>

class QPainter;

namespace Vistrel {

class SurfaceGeometry;

/// Shows in each pixel of the target the picture's pixel in which its centre lies; of two, the upper left one. The
/// paint engine takes longer for it, and is not exact in large pictures and between pixels. Keeps its memory from one
/// painting to the next.
class PictureSampler
{
public:
    /// Draws the picture, of the geometry's image size, where it lies in `needed`. False, and nothing drawn, where the
    /// painter does more than move by whole pixels; and for scaled pictures that are neither `Format_Grayscale8`,
    /// `Format_RGBX8888` nor `Format_RGB32`.
    bool draw(QPainter& painter, const QImage& picture, const SurfaceGeometry& geometry, const QRect& needed);

private:
    QImage m_lines;                       // at least as wide as what is drawn
    std::vector<int> m_columns;           // of the picture, one for each pixel of a line
    std::vector<std::uint32_t> m_samples; // of one line, in the picture's colour order
};

} // namespace Vistrel
