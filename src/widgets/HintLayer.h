// SPDX-License-Identifier: MIT
// Tells in an empty view what to do next.
#pragma once

#include "widgets/SurfaceLayer.h"

#include <QtCore/QString>

namespace Vistrel {

class HintLayer : public SurfaceLayer
{
public:
    /// Draws nothing while there is a picture.
    void paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry) override;

    QString text;
};

} // namespace Vistrel
