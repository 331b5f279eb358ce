// SPDX-License-Identifier: MIT
// What a surface paints, and the pixel values that it reads.
#include "widgets/Surface_p.h"

#include "base/FrameLocking.h"
#include "pipeline/pixels/PixelFormats.h"
#include "pipeline/pixels/PixelReader.h"

#include <QtCore/QVector>
#include <QtGui/QPaintEvent>
#include <QtGui/QPainter>

#include <utility>

namespace Vistrel {

namespace {

// Past this many pixels from an edge the paint engine's coordinates are no longer exact.
constexpr int bandSize = 16384;

void drawVisible(QPainter& painter, const QPixmap& pixmap, const SurfaceGeometry& geometry)
{
    const QRectF source = geometry.visibleImageRectF();
    const QRectF target = geometry.shownRect();
    if (pixmap.width() <= bandSize && pixmap.height() <= bandSize) {
        painter.drawPixmap(target, pixmap, source);
        return;
    }
    const QImage image = pixmap.toImage(); // shares the pixels
    const int pixelBytes = image.depth() / 8;
    for (int y = static_cast<int>(source.top()) / bandSize * bandSize; y < source.bottom(); y += bandSize) {
        for (int x = static_cast<int>(source.left()) / bandSize * bandSize; x < source.right(); x += bandSize) {
            const QRect band = QRect(x, y, bandSize, bandSize).intersected(image.rect());
            const QRectF part = source.intersected(band);
            if (part.isEmpty())
                continue;
            QImage view(image.constScanLine(band.y()) + static_cast<qsizetype>(band.x()) * pixelBytes, band.width(),
                        band.height(), image.bytesPerLine(), image.format());
            view.setColorTable(image.colorTable());
            painter.drawImage(stretched(part, source, target), view, part.translated(-band.topLeft()));
        }
    }
}

// A value as wide as any that the source has.
PixVal widestValue(bool isMono, std::uint32_t largest)
{
    PixVal value;
    value.mono = isMono;
    value.color = !isMono;
    value.value = value.r = value.g = value.b = largest;
    return value;
}

PixVal imageValue(const QImage& image, int x, int y)
{
    const QRgb pixel = image.pixel(x, y);
    PixVal value;
    value.color = true;
    value.r = static_cast<std::uint32_t>(qRed(pixel));
    value.g = static_cast<std::uint32_t>(qGreen(pixel));
    value.b = static_cast<std::uint32_t>(qBlue(pixel));
    return value;
}

} // namespace

// Pixel values --------------------------------------------------------------------------------------------------------

Surface::PrivateData::ImageSource Surface::PrivateData::imageSource() const
{
    const std::lock_guard<std::mutex> guard(sourceMutex);
    return from;
}

void Surface::setImageSrc(const QImage& image)
{
    PrivateData::ImageSource next;
    next.image = image;
    {
        const std::lock_guard<std::mutex> guard(m_data->sourceMutex);
        const QImage& before = m_data->from.image;
        if (before.format() != image.format() || before.size() != image.size())
            m_data->sourceChanged.store(1);
        std::swap(m_data->from, next);
    }
    m_data->requestUpdate();
}

void Surface::setImageSrc(AbstractAcquisitionInterface* const acquisitionInterface, const RawImage& raw)
{
    setImageSrc(acquisitionInterface, raw, nullptr);
}

void Surface::setImageSrc(AbstractAcquisitionInterface* const acquisitionInterface, const RawImage& raw,
                          std::shared_ptr<const void> owner)
{
    PrivateData::ImageSource next;
    next.source = acquisitionInterface;
    next.raw = raw;
    next.owner = std::move(owner);
    {
        const std::lock_guard<std::mutex> guard(m_data->sourceMutex);
        const PrivateData::ImageSource& before = m_data->from;
        if (before.source != acquisitionInterface || before.raw.format != raw.format || before.raw.width != raw.width ||
            before.raw.height != raw.height)
            m_data->sourceChanged.store(1);
        std::swap(m_data->from, next);
    }
    m_data->requestUpdate();
}

void Surface::clearImageSrc()
{
    PrivateData::ImageSource none;
    {
        const std::lock_guard<std::mutex> guard(m_data->sourceMutex);
        std::swap(m_data->from, none);
    }
    m_data->requestUpdate();
}

bool Surface::imageSrcPixVal(const PixPos& position, PixVal& value)
{
    value = PixVal();
    const PrivateData::ImageSource source = m_data->imageSource();
    if (source.hasRaw()) {
        const ScopedLock lock = askFrameLock(source.source, source.raw);
        return lock.good() && readPixel(source.raw, position, value);
    }
    if (source.image.isNull() || !source.image.rect().contains(position.x, position.y))
        return false;
    value = imageValue(source.image, position.x, position.y);
    return true;
}

// Painting ------------------------------------------------------------------------------------------------------------

void Surface::paintEvent(QPaintEvent* event)
{
    const QRectF area = event->rect();
    QPainter painter(this);

    painter.save();
    m_data->paintImage(painter, event->region());
    painter.restore();

    if (m_data->valueOverlayEnabled) {
        painter.save();
        m_data->paintOverlay(painter, area);
        painter.restore();
    }
    if (m_data->crosshairVisible) {
        painter.save();
        m_data->paintCrosshair(painter, area);
        painter.restore();
    }
}

// An opaque surface that fills its background does so here, only where the image leaves it to be seen.
void Surface::PrivateData::paintImage(QPainter& painter, const QRegion& region)
{
    QPixmap shown;
    SurfaceGeometry placed;
    {
        const auto view = lockView();
        shown = pixmap;
        placed = geometry;
    }
    const QRectF target = placed.shownRect();
    const bool isShown = !target.isEmpty() && !placed.visibleImageRectF().isEmpty();
    // Pixels at the image's edge may be covered in part.
    const QRect covered = isShown && !shown.hasAlphaChannel() ? target.toAlignedRect().adjusted(1, 1, -1, -1) : QRect();
    if (surface->autoFillBackground() && surface->testAttribute(Qt::WA_OpaquePaintEvent)) {
        for (const QRect& rect : region.subtracted(covered))
            painter.fillRect(rect, surface->palette().brush(QPalette::Window));
    }
    // The image shares the pixels.
    if (isShown && !sampler.draw(painter, shown.toImage(), placed, region.boundingRect()))
        drawVisible(painter, shown, placed);
}

void Surface::PrivateData::paintOverlay(QPainter& painter, const QRectF& area)
{
    const ImageSource source = imageSource();
    QSize size = source.image.size();
    PixVal widest = widestValue(source.image.format() == QImage::Format_Indexed8, 255);
    if (source.hasRaw()) {
        if (!isReadable(source.raw))
            return;
        size = QSize(static_cast<int>(source.raw.width), static_cast<int>(source.raw.height));
        widest = widestValue(isMonochrome(source.raw.format), channelMaximum(source.raw.format));
    } else if (source.image.isNull()) {
        return;
    }

    const SurfaceGeometry placed = surface->viewGeometry();
    const double scaling = placed.scaling();
    if (sourceChanged.exchange(0) == 1)
        overlay.measure(painter.device(), size, widest, scaling);
    if (!overlay.fits(scaling)) {
        sourceChanged.store(1);
        return;
    }

    std::vector<PixelOverlay::Cell> cells;
    const QRect visible = placed.pixelsIn(area, size);
    {
        const ScopedLock lock = source.hasRaw() ? askFrameLock(source.source, source.raw) : ScopedLock();
        if (source.hasRaw() && !lock)
            return;
        for (int x = visible.left(); x <= visible.right(); ++x) {
            for (int y = visible.top(); y <= visible.bottom(); ++y) {
                PixVal value;
                if (source.hasRaw()) {
                    readPixel(source.raw, {x, y}, value);
                } else {
                    value = imageValue(source.image, x, y);
                    if (source.image.format() == QImage::Format_Indexed8) {
                        value.mono = true;
                        value.color = false;
                        value.value = value.r;
                    }
                }
                cells.push_back({static_cast<double>(x), static_cast<double>(y), value});
            }
        }
    }
    overlay.draw(painter, cells, placed);
}

void Surface::PrivateData::paintCrosshair(QPainter& painter, const QRectF& area)
{
    const SurfaceGeometry placed = surface->viewGeometry();
    if (!placed.visibleImageRect().contains(activePixel))
        return;
    const double scaling = placed.scaling();
    const QPointF corner = placed.viewPoint(activePixel);
    QVector<QLineF> lines;
    lines << QLineF(area.left(), corner.y(), area.right(), corner.y())
          << QLineF(corner.x(), area.top(), corner.x(), area.bottom());
    if (scaling >= 1.5) {
        const QPointF opposite = corner + QPointF(scaling, scaling);
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
