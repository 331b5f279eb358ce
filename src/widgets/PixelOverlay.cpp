// SPDX-License-Identifier: MIT
// The coordinates and values written into the cells of enlarged pixels.
#include "widgets/PixelOverlay.h"

#include "widgets/SurfaceGeometry.h"

#include <QtCore/QString>
#include <QtGui/QFontDatabase>
#include <QtGui/QFontInfo>
#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <algorithm>

namespace Vistrel {

namespace {

constexpr double slack = 1.125; // a cell is at least this much larger than what is written in it
constexpr double labelMargin = 4;
constexpr double separatorIndent = 5;

QString positionText(double x, double y)
{
    return QStringLiteral(" %1, %2 ").arg(QString::number(x, 'g', 6), QString::number(y, 'g', 6));
}

QString valueText(const PixVal& value)
{
    if (value.color)
        return QStringLiteral(" R: %1 \n G: %2 \n B: %3 ").arg(value.r).arg(value.g).arg(value.b);
    return value.mono ? QStringLiteral(" %1 ").arg(value.value) : QString();
}

} // namespace

PixelOverlay::PixelOverlay()
    : m_font(QFontDatabase::systemFont(QFontDatabase::SmallestReadableFont)),
      m_basePointSize(QFontInfo(m_font).pointSize()),
      m_position(0, 0),
      m_value(0, 0),
      m_box(0, 0)
{
}

void PixelOverlay::measure(const QPaintDevice* device, const QSize& imageSize, const PixVal& widest, double scaling)
{
    const double largest = SurfaceGeometry::scalingMax();
    if (scaling * 10 < largest) {
        m_position = m_value = m_box = QSizeF(largest, largest);
        return;
    }
    const QString position = positionText(imageSize.width() - 1, imageSize.height() - 1);
    const QString value = valueText(widest);
    for (int pointSize = m_basePointSize; pointSize > 0; --pointSize) {
        m_font.setPointSize(pointSize);
        const QFontMetricsF metrics(m_font, device);
        m_position = metrics.size(0, position) + QSizeF(labelMargin, labelMargin);
        m_value = metrics.size(0, value) + QSizeF(labelMargin, labelMargin);
        m_box = {std::max(m_position.width(), m_value.width()), m_position.height() * 2 + m_value.height()};
        if (fits(largest))
            break;
    }
}

bool PixelOverlay::fits(double scaling) const
{
    return m_box.width() * slack < scaling && m_box.height() * slack < scaling;
}

void PixelOverlay::draw(QPainter& painter, const std::vector<Cell>& cells, const SurfaceGeometry& geometry) const
{
    const double scaling = geometry.scaling();
    painter.setFont(m_font);
    painter.setBackground(Qt::white);
    painter.setBackgroundMode(Qt::OpaqueMode);
    painter.setRenderHint(QPainter::TextAntialiasing);
    const QPen solid(Qt::black);
    const QPen dotted(Qt::black, 1, Qt::DotLine);

    const QSizeF box(std::max(m_position.width(), m_value.width()), m_position.height() + m_value.height());
    for (const Cell& cell : cells) {
        const QPointF corner = geometry.viewPoint({cell.x, cell.y});
        const double left = corner.x();
        const double top = corner.y() + (scaling - box.height()) / 2;
        const QRectF position(QPointF(left + (scaling - m_position.width()) / 2, top), m_position);
        const QRectF value(QPointF(left + (scaling - m_value.width()) / 2, top + m_position.height()), m_value);
        const QRect frame = QRectF(QPointF(left + (scaling - box.width()) / 2, top), box).toRect().adjusted(0, 0, 1, 1);
        painter.fillRect(frame, Qt::black); // many times faster than an outlined rectangle
        painter.fillRect(frame.adjusted(1, 1, -1, -1), Qt::white);
        painter.setPen(solid);
        painter.drawText(position, Qt::AlignCenter, positionText(cell.x, cell.y));
        painter.drawText(value, cell.value.color ? Qt::AlignJustify : Qt::AlignCenter, valueText(cell.value));
        painter.setPen(dotted);
        painter.drawLine(QPointF(position.left() + separatorIndent, position.bottom()),
                         QPointF(position.right() - separatorIndent, position.bottom()));
    }
}

} // namespace Vistrel
