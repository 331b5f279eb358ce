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

/// Shows in each target pixel the picture's pixel that contains its centre; on a border, the upper left one. Qt's paint
/// engine is slower and is not exact in large pictures and at pixel borders. Keeps its memory for the next call.
class PictureSampler
{
public:
    /// Draws the part of the picture, of the geometry's image size, that lies in `needed`. Returns false and draws
    /// nothing if the painter does more than translate by whole pixels, and for scaled pictures other than
    /// `Format_Grayscale8`, `Format_RGBX8888` and `Format_RGB32`.
    bool draw(QPainter& painter, const QImage& picture, const SurfaceGeometry& geometry, const QRect& needed);

private:
    QImage m_lines;                       // at least as wide as the drawn part
    std::vector<int> m_columns;           // of the picture, one for each pixel of a line
    std::vector<std::uint32_t> m_samples; // of one line, in the picture's channel order
};

} // namespace Vistrel
