// SPDX-License-Identifier: MIT
// The interface of a layer that a surface draws.
#pragma once

#include "widgets/SurfaceGeometry.h"

#include <QtGui/QPainter>
#include <QtGui/QRegion>

namespace Vistrel {

/// A surface draws its layers one over the other, on the user-interface thread and without a lock held.
class SurfaceLayer
{
public:
    SurfaceLayer() = default;
    SurfaceLayer(const SurfaceLayer&) = delete;
    SurfaceLayer& operator=(const SurfaceLayer&) = delete;
    virtual ~SurfaceLayer() = default;

    /// Draws the part in `area`, in view coordinates. `geometry` is the same for all layers of one paint event. The
    /// surface saves the painter's state before and restores it afterwards.
    virtual void paint(QPainter& painter, const QRegion& area, const SurfaceGeometry& geometry) = 0;
};

} // namespace Vistrel
