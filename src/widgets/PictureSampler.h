// SPDX-License-Identifier: MIT
// Paints a picture at any scale without interpolation.
#pragma once

#include <QtCore/QRect>
#include <QtGui/QImage>

#include <vector>

class QPainter;

namespace Vistrel {

/// Shows in each pixel of the target the picture's pixel in which its centre lies, as the paint engine does; but that
/// takes two to three times as long, and is not exact in large pictures. Keeps its memory from one painting to the
/// next.
class PictureSampler
{
public:
    /// Draws the part `source` of a picture into `target`, where that lies in `needed`. False, and nothing drawn, for a
    /// picture or a painter that is better left to the paint engine.
    bool draw(QPainter& painter, const QRectF& target, const QImage& picture, const QRectF& source,
              const QRect& needed);

private:
    void sampleRow(const std::uint8_t* row, QImage::Format format, std::uint32_t* line) const;

    QImage m_lines;             // at least as large as what is drawn
    std::vector<int> m_columns; // of the picture, one for each pixel of a line
};

} // namespace Vistrel
