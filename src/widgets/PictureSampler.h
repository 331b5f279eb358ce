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

/// Qt's paint engine is slower and is not exact in large pictures and at pixel borders. Keeps its memory for the next
/// call.
class PictureSampler
{
public:
    /// Draws the device pixels `drawn`, all of which show a picture of the geometry's image size, of any format. The
    /// painter's unit is the device pixel.
    void draw(QPainter& painter, const QImage& picture, const SurfaceGeometry& geometry, const QRect& drawn);

private:
    void sample(const QImage& picture, int row, int next, uchar* line);

    QImage m_lines;                       // at least as wide as the drawn part
    std::vector<int> m_columns;           // of the picture, one for each pixel of a line
    std::vector<std::uint32_t> m_samples; // of one line, in the picture's channel order
};

} // namespace Vistrel
