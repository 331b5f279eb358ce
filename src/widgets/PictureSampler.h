// SPDX-License-Identifier: MIT
// Paints a grey picture at any scale without interpolation.
#pragma once

#include <QtCore/QRect>
#include <QtGui/QImage>

#include <vector>

class QPainter;

namespace Vistrel {

/// Shows in each pixel of the target the picture's pixel in which its centre lies. The paint engine does the same, but
/// takes longer, and is not exact in large pictures. Keeps its memory from one painting to the next.
class PictureSampler
{
public:
    /// Draws the part `source` of a picture into `target`, where that lies in `needed`. False, and nothing drawn, where
    /// the paint engine does as well: with colour, and at full size, which it copies.
    bool draw(QPainter& painter, const QRectF& target, const QImage& picture, const QRectF& source,
              const QRect& needed);

private:
    QImage m_lines;             // at least as large as what is drawn
    std::vector<int> m_columns; // of the picture, one for each pixel of a line
};

} // namespace Vistrel
