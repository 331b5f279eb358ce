// SPDX-License-Identifier: MIT
// Tells in an empty view what to do next.
#include "widgets/HintLayer.h"

namespace Vistrel {

void HintLayer::paint(QPainter& painter, const QRegion&, const SurfaceGeometry& geometry)
{
    if (!geometry.imageSize().isEmpty())
        return;
    QFont font = painter.font();
    font.setPointSizeF(15);
    painter.setFont(font);
    painter.setPen(QColor(0xF0, 0xF0, 0xF0));
    constexpr int margin = 9;
    const QRect view(QPoint(0, 0), geometry.viewSize());
    painter.drawText(view.adjusted(margin, margin, -margin, -margin), Qt::AlignCenter | Qt::TextWordWrap, text);
}

} // namespace Vistrel
