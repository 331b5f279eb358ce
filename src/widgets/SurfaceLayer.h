// SPDX-License-Identifier: MIT
// Something that a surface draws.
#pragma once

#include "widgets/SurfaceGeometry.h"

#include <QtGui/QPainter>
#include <QtGui/QRegion>

namespace Vistrel {

/// A surface draws its layers one over the other, on the user-interface thread and with no lock held.
class SurfaceLayer
{
public:
    SurfaceLayer() = default;
    SurfaceLayer(const SurfaceLayer&) = delete;
    SurfaceLayer& operator=(const SurfaceLayer&) = delete;
    virtual ~SurfaceLayer() = default;

    /// Draws what lies in `area`, in coordinates of the view. `geometry` is the same for all layers of a painting. The
    /// surface saves the painter before and restores it afterwards.
    virtual void paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry) = 0;
};

} // namespace Vistrel
