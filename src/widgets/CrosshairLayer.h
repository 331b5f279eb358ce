// SPDX-License-Identifier: MIT
// Marks one pixel with lines across the view.
#pragma once

#include "widgets/SurfaceLayer.h"

#include <QtCore/QPoint>

namespace Vistrel {

struct CrosshairLayer : SurfaceLayer
{
    void paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry) override;

    bool crosshairVisible = false;
    QPoint activePixel{-1, -1};
};

} // namespace Vistrel
