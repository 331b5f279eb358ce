// SPDX-License-Identifier: MIT
// Marks one pixel with lines across the view.
#include "widgets/CrosshairLayer.h"

#include <QtCore/QVector>

namespace Vistrel {

namespace {

constexpr double closedFrom = 1.5; // scaling; below it only two sides of the pixel are drawn

} // namespace

void CrosshairLayer::paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry)
{
    if (!crosshairVisible || !geometry.visibleImageRect().contains(activePixel))
        return;
    const QRectF painted = area.boundingRect();
    const QPointF corner = geometry.viewPoint(activePixel);
    QVector<QLineF> lines;
    lines << QLineF(painted.left(), corner.y(), painted.right(), corner.y())
          << QLineF(corner.x(), painted.top(), corner.x(), painted.bottom());
    if (geometry.scaling() >= closedFrom) {
        const QPointF opposite = corner + QPointF(geometry.scaling(), geometry.scaling());
        lines << QLineF(corner.x(), opposite.y(), opposite.x(), opposite.y())
              << QLineF(opposite.x(), corner.y(), opposite.x(), opposite.y());
    }
    QPen pen(Qt::white);
    pen.setDashPattern({4, 4});
    painter.setPen(pen);
    painter.setBackground(Qt::black);
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.drawLines(lines);
}

} // namespace Vistrel
