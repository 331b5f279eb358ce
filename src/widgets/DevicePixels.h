// SPDX-License-Identifier: MIT
// Draws in whole device pixels.
#pragma once

#include "widgets/SurfaceGeometry.h"

#include <QtGui/QPainter>
#include <QtGui/QTransform>

namespace Vistrel {

/// Whether the device pixels of a painter form a grid for a geometry: neither turned nor stretched along one axis.
inline bool isGrid(const QTransform& device)
{
    return device.type() <= QTransform::TxScale && device.m11() > 0 && qFuzzyCompare(device.m11(), device.m22());
}

/// While it exists, the painter's unit is the device pixel, counted as in the geometry, whose grid is the painter's.
class DevicePixels
{
public:
    DevicePixels(QPainter& painter, const SurfaceGeometry& geometry) : m_painter(painter)
    {
        painter.save();
        painter.setTransform(painter.deviceTransform().inverted(), true);
        painter.translate(geometry.firstDevicePixel());
    }
    ~DevicePixels() { m_painter.restore(); }
    DevicePixels(const DevicePixels&) = delete;
    DevicePixels& operator=(const DevicePixels&) = delete;

private:
    QPainter& m_painter;
};

} // namespace Vistrel
