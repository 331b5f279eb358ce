// SPDX-License-Identifier: MIT
// Draws the visible part of a picture and the background around it.
#include "widgets/ImageLayer.h"

#include <utility>

namespace Vistrel {

namespace {

// Past this many pixels from an edge the paint engine's coordinates are no longer exact.
constexpr int bandSize = 16384;

void drawByEngine(QPainter& painter, const QPixmap& picture, const SurfaceGeometry& geometry)
{
    const QRectF source = geometry.visibleImageRectF();
    const QRectF target = geometry.shownRect();
    if (picture.width() <= bandSize && picture.height() <= bandSize) {
        painter.drawPixmap(target, picture, source);
        return;
    }
    const QImage image = picture.toImage(); // shares the pixels
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

} // namespace

void ImageLayer::setPicture(const QPixmap& picture, const QBrush& background)
{
    m_picture = picture;
    m_background = background;
}

void ImageLayer::paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry)
{
    const QPixmap picture = std::exchange(m_picture, QPixmap());
    const QRectF shown = geometry.shownRect();
    const bool isShown = !shown.isEmpty() && !geometry.visibleImageRectF().isEmpty();
    // The image may cover the pixels at its edge only partly.
    const QRect covered =
        isShown && !picture.hasAlphaChannel() ? shown.toAlignedRect().adjusted(1, 1, -1, -1) : QRect();
    if (m_background.style() != Qt::NoBrush) {
        for (const QRect& rect : area.subtracted(covered))
            painter.fillRect(rect, m_background);
    }
    // `toImage` shares the pixels.
    if (isShown && !m_sampler.draw(painter, picture.toImage(), geometry, area.boundingRect()))
        drawByEngine(painter, picture, geometry);
}

} // namespace Vistrel
