// SPDX-License-Identifier: MIT
// Marks one pixel with lines across the view.
#include "widgets/CrosshairLayer.h"

#include "widgets/DevicePixels.h"

#include <QtCore/QVector>

#include <algorithm>

namespace Vistrel {

namespace {

constexpr double closedFrom = 1.5; // scaling; below it only two sides of the pixel are drawn
constexpr int dash = 4;            // logical pixels; white and black dashes alternate

// A line that begins with a white dash at its upper left end, as far as it lies in `needed`.
void drawDashed(QPainter& painter, const QRect& line, int length, const QRect& needed)
{
    const bool isHorizontal = line.width() > line.height();
    const QPoint step = isHorizontal ? QPoint(2 * length, 0) : QPoint(0, 2 * length);
    QVector<QRect> dashes;
    QRect one(line.topLeft(), isHorizontal ? QSize(length, line.height()) : QSize(line.width(), length));
    for (; one.intersects(line); one.translate(step)) {
        const QRect shown = one & line & needed;
        if (!shown.isEmpty())
            dashes.append(shown);
    }
    painter.fillRect(line & needed, Qt::black);
    painter.drawRects(dashes);
}

} // namespace

void CrosshairLayer::paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry)
{
    if (!crosshairVisible || geometry.imageSize().isEmpty() || !geometry.visibleImageRect().contains(activePixel))
        return;
    const QRect cell = geometry.cellOf(activePixel);
    const QRect view = geometry.devicePixels({QPointF(0, 0), QSizeF(geometry.viewSize())});
    const QRect needed = geometry.devicePixels(area.boundingRect());
    const int thickness = std::max(qRound(geometry.deviceRatio()), 1);
    QVector<QRect> lines{{view.left(), cell.top(), view.width(), thickness},
                         {cell.left(), view.top(), thickness, view.height()}};
    if (geometry.scaling() >= closedFrom) {
        lines << QRect(cell.left(), cell.bottom() + 1, cell.width() + thickness, thickness)
              << QRect(cell.right() + 1, cell.top(), thickness, cell.height() + thickness);
    }
    const DevicePixels devicePixels(painter, geometry);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::white);
    for (const QRect& line : qAsConst(lines))
        drawDashed(painter, line, std::max(qRound(dash * geometry.deviceRatio()), 1), needed);
}

} // namespace Vistrel
