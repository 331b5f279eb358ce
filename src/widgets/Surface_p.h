// SPDX-License-Identifier: MIT
// The state of the widget that paints the current frame.
#pragma once

#include "widgets/CrosshairLayer.h"
#include "widgets/HintLayer.h"
#include "widgets/ImageLayer.h"
#include "widgets/PixelOverlay.h"
#include "widgets/PixelSource.h"

#include <Vistrel/Surface.h>

#include <functional>
#include <mutex>
#include <vector>

namespace Vistrel {

class Surface::PrivateData
{
public:
    explicit PrivateData(Surface* owner) : surface(owner) {}

    // Signals to be emitted, in this order, after the mutex is released.
    struct Changes
    {
        void addOffset(const QPointF& offset)
        {
            emissions.push_back([offset](Surface* s) { Q_EMIT s->pixelOffsetChanged(offset); });
        }
        void addRange()
        {
            emissions.push_back([](Surface* s) { Q_EMIT s->pixelRangeChanged(); });
        }
        void addScaling(bool autoFit, double scaling)
        {
            emissions.push_back([=](Surface* s) { Q_EMIT s->scalingChanged(autoFit, scaling); });
        }
        std::vector<std::function<void(Surface*)>> emissions;
    };

    std::unique_lock<std::mutex> lockView();
    void setOffset(const QPointF& offset, Changes& changes);
    bool fit(bool isForced, Changes& changes);
    void change(const std::function<void(Changes&)>& operation);
    void setSource(PixelSource next);
    void requestUpdate();
    void paint(QPainter& painter, const QRegion& area);

    Surface* const surface;

    std::mutex viewMutex; // guards the next three
    QPixmap pixmap;
    QImage indices; // that the pixmap shows in colours, or null
    SurfaceGeometry geometry;

    SharedPixelSource source;

    // User-interface thread only. The last layer is drawn on top.
    ImageLayer image;
    PixelOverlay overlay{source};
    CrosshairLayer crosshair;
    HintLayer hint;
    const std::vector<SurfaceLayer*> layers{&image, &overlay, &crosshair, &hint};
};

} // namespace Vistrel
