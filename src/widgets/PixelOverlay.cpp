// SPDX-License-Identifier: MIT
// Writes the coordinates and values of enlarged pixels into their cells.
#include "widgets/PixelOverlay.h"

#include "pipeline/pixels/PixelFormats.h"
#include "widgets/DevicePixels.h"
#include "widgets/PixelSource.h"

#include <algorithm>
#include <utility>

namespace Vistrel {

namespace {

bool isIndexed(const PixelSource& source)
{
    return !source.hasRaw() && source.image.format() == QImage::Format_Indexed8;
}

// Empty without readable pixels.
QSize sizeOf(const PixelSource& source)
{
    if (!source.hasRaw())
        return source.image.size();
    return isReadable(source.raw) ? QSize(static_cast<int>(source.raw.width), static_cast<int>(source.raw.height))
                                  : QSize();
}

void clear(QImage& image, const QSize& part)
{
    for (int y = 0; y < part.height(); ++y)
        std::fill_n(reinterpret_cast<QRgb*>(image.scanLine(y)), part.width(), QRgb{0});
}

} // namespace

PixelOverlay::PixelOverlay(SharedPixelSource& source) : m_source(source) {}

// Returns false when the source has no values.
bool PixelOverlay::measure(const PixelSource& source, const QPaintDevice& device, const SurfaceGeometry& geometry)
{
    PixelLabels::Conditions conditions;
    conditions.imageSize = sizeOf(source);
    if (conditions.imageSize.isEmpty())
        return false;
    conditions.pixelValues = pixelValues;
    conditions.isColor = source.hasRaw() ? !isMonochrome(source.raw.format) : !isIndexed(source);
    conditions.largest = source.hasRaw() ? channelMaximum(source.raw.format) : 255;
    conditions.ratio = geometry.deviceRatio();
    conditions.dotsPerInch = device.logicalDpiY();
    conditions.side = static_cast<int>(geometry.deviceScaling());
    m_labels.measure(conditions);
    return true;
}

double PixelOverlay::smallestScaling(const QPaintDevice& device, const SurfaceGeometry& geometry)
{
    if (pixelValues == PixelValues::Off || !measure(m_source.get(), device, geometry))
        return 0;
    return m_labels.leastSide() / geometry.deviceRatio();
}

// All values are read under one lock, which is released before anything is drawn.
bool PixelOverlay::read(const PixelSource& source, const QRect& pixels)
{
    ScopedLock lock;
    if (!source.lock(lock))
        return false;
    const bool isGray = isIndexed(source);
    m_values.clear();
    m_values.reserve(static_cast<std::size_t>(pixels.width()) * static_cast<std::size_t>(pixels.height()));
    for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
        for (int x = pixels.left(); x <= pixels.right(); ++x) {
            PixVal value;
            source.value({x, y}, value);
            if (isGray)
                value = {true, value.r, false, 0, 0, 0};
            m_values.push_back(value);
        }
    }
    return true;
}

void PixelOverlay::paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry)
{
    const QImage picture = std::exchange(m_picture, QPixmap()).toImage(); // shares the pixels
    // Far below the zoom of any label, nothing is measured.
    if (pixelValues == PixelValues::Off || geometry.scaling() * 10 < SurfaceGeometry::scalingMax())
        return;
    const PixelSource source = m_source.get();
    if (!measure(source, *painter.device(), geometry) || !m_labels.fit(geometry.deviceScaling()))
        return;
    const QRect pixels = geometry.pixelsIn(area.boundingRect()) & QRect(QPoint(0, 0), sizeOf(source)) & picture.rect();
    if (pixels.isEmpty() || !read(source, pixels))
        return;

    const DevicePixels devicePixels(painter, geometry);
    draw(painter, geometry, pixels, picture);
}

// Draws the labels of a row of cells at once: single ones are smaller than what memory is fast for.
void PixelOverlay::draw(QPainter& painter, const SurfaceGeometry& geometry, const QRect& pixels, const QImage& picture)
{
    std::vector<QRect> columns;
    for (int x = pixels.left(); x <= pixels.right(); ++x)
        columns.push_back(geometry.cellOf({x, pixels.top()}));
    const int left = columns.front().left();
    const QSize size(columns.back().right() + 1 - left, m_labels.stripHeight());
    if (m_strip.width() < size.width() || m_strip.height() < size.height())
        m_strip = QImage(size, QImage::Format_ARGB32_Premultiplied);
    if (m_strip.isNull())
        return;
    bool isClear = false;
    const PixVal* values = m_values.data();
    for (int y = pixels.top(); y <= pixels.bottom(); ++y, values += columns.size()) {
        const QRect row = geometry.cellOf({pixels.left(), y});
        for (int strip = 0; strip < m_labels.stripCount(); ++strip) {
            if (!std::exchange(isClear, m_labels.coversOthers()))
                clear(m_strip, size);
            for (std::size_t i = 0; i < columns.size(); ++i) {
                const QPoint pixel(pixels.left() + static_cast<int>(i), y);
                m_labels.write(pixel, values[i], picture.pixel(pixel), strip, columns[i].left() - left,
                               columns[i].width(), m_strip);
            }
            painter.drawImage(QPoint(left, row.top() + m_labels.stripTop(strip, row.height())), m_strip,
                              QRect(QPoint(0, 0), size));
        }
    }
}

} // namespace Vistrel
