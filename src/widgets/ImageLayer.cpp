// SPDX-License-Identifier: MIT
// Draws the visible part of a picture and the background around it.
#include "widgets/ImageLayer.h"

#include "widgets/DevicePixels.h"

#include <utility>

namespace Vistrel {

namespace {

constexpr double fullSize = 1 - 1e-9; // with rounding errors

} // namespace

void ImageLayer::setPicture(const QPixmap& picture, const QImage& indices, const QBrush& background)
{
    m_picture = picture;
    m_indices = indices;
    m_background = background;
}

void ImageLayer::paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry)
{
    const QPixmap picture = std::exchange(m_picture, QPixmap());
    const QImage indices = std::exchange(m_indices, QImage());
    const QRect drawn = geometry.sampledRect();
    if (m_background.style() != Qt::NoBrush) {
        const bool isOpaque = !drawn.isEmpty() && !picture.hasAlphaChannel();
        const QRect covered = isOpaque ? geometry.viewPart(drawn) : QRect();
        for (const QRect& rect : area.subtracted(covered))
            painter.fillRect(rect, m_background);
    }
    const DevicePixels devicePixels(painter, geometry);
    const QImage pixels = picture.toImage(); // which shares them
    const QRect needed = drawn & geometry.devicePixels(area.boundingRect());
    if (shrinkMode != ShrinkMode::Sample && geometry.deviceScaling() < fullSize)
        m_shrinker.draw(painter, indices.isNull() ? pixels : indices, picture.cacheKey(), geometry, needed, shrinkMode);
    else
        m_sampler.draw(painter, pixels, geometry, needed);
}

} // namespace Vistrel
