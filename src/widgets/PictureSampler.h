// SPDX-License-Identifier: MIT
// Paints a picture at any scale without interpolation.
#pragma once

#include <QtCore/QRect>
#include <QtGui/QImage>

#include <cstdint>
#include <vector>

class QPainter;

namespace Vistrel {

/// Shows in each pixel of the target the picture's pixel in which its centre lies. The paint engine does the same, but
/// takes longer, and is not exact in large pictures. Keeps its memory from one painting to the next.
class PictureSampler
{
public:
    /// Draws the part `source` of a picture into `target`, where that lies in `needed`. False, and nothing drawn, where
    /// the paint engine does as well: with grey pictures at full size, which it copies, and with those that are neither
    /// grey nor `Format_RGBX8888`.
    bool draw(QPainter& painter, const QRectF& target, const QImage& picture, const QRectF& source,
              const QRect& needed);

private:
    QImage m_lines;                       // at least as wide as what is drawn
    std::vector<int> m_columns;           // of the picture, one for each pixel of a line
    std::vector<std::uint32_t> m_samples; // of one line, in the picture's colour order
};

} // namespace Vistrel
