// SPDX-License-Identifier: MIT
// Writes the coordinates and values of enlarged pixels into their cells.
#include "widgets/PixelOverlay.h"

#include "pipeline/pixels/PixelFormats.h"
#include "widgets/PixelSource.h"

#include <QtCore/QString>
#include <QtGui/QFontDatabase>
#include <QtGui/QFontInfo>
#include <QtGui/QFontMetricsF>

#include <algorithm>

namespace Vistrel {

namespace {

constexpr double slack = 1.125; // a cell is larger than its labels by at least this factor
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

// The widest value that the source can have.
PixVal widestValue(bool isMono, std::uint32_t largest)
{
    PixVal value;
    value.mono = isMono;
    value.color = !isMono;
    value.value = value.r = value.g = value.b = largest;
    return value;
}

} // namespace

PixelOverlay::PixelOverlay(SharedPixelSource& source)
    : m_source(source),
      m_font(QFontDatabase::systemFont(QFontDatabase::SmallestReadableFont)),
      m_basePointSize(QFontInfo(m_font).pointSize()),
      m_position(0, 0),
      m_value(0, 0),
      m_box(0, 0)
{
}

void PixelOverlay::paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry)
{
    if (!valueOverlayEnabled)
        return;
    const PixelSource source = m_source.get();
    const bool isIndexed = !source.hasRaw() && source.image.format() == QImage::Format_Indexed8;
    QSize size = source.image.size();
    PixVal widest = widestValue(isIndexed, 255);
    if (source.hasRaw()) {
        if (!isReadable(source.raw))
            return;
        size = QSize(static_cast<int>(source.raw.width), static_cast<int>(source.raw.height));
        widest = widestValue(isMonochrome(source.raw.format), channelMaximum(source.raw.format));
    } else if (source.image.isNull()) {
        return;
    }

    if (m_source.takeChanged())
        measure(painter.device(), size, widest, geometry.scaling());
    if (!fits(geometry.scaling())) {
        m_source.setChanged(); // measured again next time
        return;
    }

    std::vector<Cell> cells;
    {
        ScopedLock lock;
        if (!source.lock(lock))
            return;
        const QRect visible = geometry.pixelsIn(area.boundingRect()) & QRect(QPoint(0, 0), size);
        for (int x = visible.left(); x <= visible.right(); ++x) {
            for (int y = visible.top(); y <= visible.bottom(); ++y) {
                PixVal value;
                source.value({x, y}, value);
                if (isIndexed) {
                    value.mono = true;
                    value.color = false;
                    value.value = value.r;
                }
                cells.push_back({static_cast<double>(x), static_cast<double>(y), value});
            }
        }
    }
    draw(painter, cells, geometry);
}

// Finds the largest font in which the labels of any pixel of this image fit a cell at the largest zoom.
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
