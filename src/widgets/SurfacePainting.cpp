// SPDX-License-Identifier: MIT
// Painting a surface, and the settings of its layers.
#include "base/Log.h"
#include "widgets/DevicePixels.h"
#include "widgets/Surface_p.h"

#include <QtGui/QPaintEvent>

#include <string>
#include <utility>

namespace Vistrel {

void Surface::PrivateData::paint(QPainter& painter, const QRegion& area)
{
    const QTransform device = painter.deviceTransform();
    if (!isGrid(device)) {
        QImage whole(surface->size(), QImage::Format_ARGB32_Premultiplied);
        whole.fill(Qt::transparent);
        QPainter wholePainter(&whole);
        paint(wholePainter, surface->rect());
        wholePainter.end();
        painter.drawImage(0, 0, whole);
        return;
    }
    // An opaque surface that fills its background does it here, and only where the image does not cover it.
    const bool isFilled = surface->autoFillBackground() && surface->testAttribute(Qt::WA_OpaquePaintEvent);
    const QBrush background = isFilled ? surface->palette().brush(QPalette::Window) : QBrush(Qt::NoBrush);
    SurfaceGeometry painted;
    {
        const auto view = lockView();
        painted = geometry;
        image.setPicture(pixmap, indices, background);
        overlay.setPicture(pixmap);
    }
    painted.setGrid(device.m11(), {device.dx(), device.dy()});
    for (SurfaceLayer* const layer : layers) {
        painter.save();
        layer->paint(painter, area, painted);
        painter.restore();
    }
}

void Surface::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    m_data->paint(painter, event->region());
}

// Layers --------------------------------------------------------------------------------------------------------------

bool Surface::crosshairVisible() const
{
    return m_data->crosshair.crosshairVisible;
}

void Surface::setCrosshairVisible(bool visible)
{
    m_data->crosshair.crosshairVisible = visible;
    update();
}

QPoint Surface::activePixel() const
{
    return m_data->crosshair.activePixel;
}

void Surface::setActivePixel(const QPoint& pixPoint)
{
    m_data->crosshair.activePixel = pixPoint;
    if (m_data->crosshair.crosshairVisible)
        update();
}

void Surface::setActivePixel(int x, int y)
{
    setActivePixel(QPoint(x, y));
}

void Surface::setHint(const QString& text)
{
    if (std::exchange(m_data->hint.text, text) == text)
        return;
    setAccessibleDescription(text);
    update();
}

PixelValues Surface::pixelValues() const
{
    return m_data->overlay.pixelValues;
}

void Surface::setPixelValues(PixelValues values)
{
    if (values < PixelValues::Off || values > PixelValues::ValueOnly) {
        reportLine("Vistrel::Surface::setPixelValues: Unknown PixelValues with index " +
                   std::to_string(static_cast<std::int32_t>(values)) + ".");
        return;
    }
    update();
    if (std::exchange(m_data->overlay.pixelValues, values) != values)
        Q_EMIT pixelValuesChanged();
}

bool Surface::valueOverlayEnabled() const
{
    return pixelValues() != PixelValues::Off;
}

void Surface::setValueOverlayEnabled(bool enabled)
{
    if (enabled != valueOverlayEnabled())
        setPixelValues(enabled ? PixelValues::WithPosition : PixelValues::Off);
}

double Surface::pixelValuesScaling()
{
    return m_data->overlay.smallestScaling(*this, viewGeometry());
}

ShrinkMode Surface::shrinkMode() const
{
    return m_data->image.shrinkMode;
}

void Surface::setShrinkMode(ShrinkMode mode)
{
    if (mode < ShrinkMode::Sample || mode > ShrinkMode::Maximum) {
        reportLine("Vistrel::Surface::setShrinkMode: Unknown ShrinkMode with index " +
                   std::to_string(static_cast<std::int32_t>(mode)) + ".");
        return;
    }
    update();
    if (std::exchange(m_data->image.shrinkMode, mode) != mode)
        Q_EMIT shrinkModeChanged();
}

} // namespace Vistrel
