// SPDX-License-Identifier: MIT
// Marks one pixel by lines through the whole view.
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
