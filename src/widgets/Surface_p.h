// SPDX-License-Identifier: MIT
// The state of a surface, for its two source files: the view and the picture.
#pragma once

#include <Vistrel/Surface.h>

#include "widgets/PictureSampler.h"
#include "widgets/PixelOverlay.h"
#include "widgets/SurfaceGeometry.h"

#include <Vistrel/AbstractAcquisitionInterface.h>

#include <QtCore/QPointer>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace Vistrel {

class Surface::PrivateData
{
public:
    explicit PrivateData(Surface* owner) : surface(owner) {}

    // What happened to the view, in the order in which it is announced once the mutex is released.
    class Changes
    {
    public:
        void addOffset(const QPointF& offset)
        {
            m_emissions.push_back([offset](Surface* s) { Q_EMIT s->pixelOffsetChanged(offset); });
        }
        void addRange()
        {
            m_emissions.push_back([](Surface* s) { Q_EMIT s->pixelRangeChanged(); });
        }
        void addScaling(bool autoFit, double scaling)
        {
            m_emissions.push_back([=](Surface* s) { Q_EMIT s->scalingChanged(autoFit, scaling); });
        }
        // Call it last: a slot may delete the surface.
        void announce(Surface* announcer) const
        {
            const QPointer<Surface> alive(announcer);
            for (const auto& emission : m_emissions) {
                if (alive)
                    emission(alive);
            }
        }

    private:
        std::vector<std::function<void(Surface*)>> m_emissions;
    };

    struct ImageSource
    {
        AbstractAcquisitionInterface* source = nullptr; // null when the source is an image or none
        RawImage raw;                                   // null data when there is no raw source
        std::shared_ptr<const void> owner;              // of the raw pixels; null when they are the source's
        QImage image;

        bool hasRaw() const { return source && raw.data; }
    };

    std::unique_lock<std::mutex> lockView();
    void setOffset(const QPointF& offset, Changes& changes);
    bool fit(bool isForced, Changes& changes);
    void moveTo(const std::function<QPointF(const SurfaceGeometry&)>& wanted);
    void requestUpdate();

    ImageSource imageSource() const;

    void paintImage(QPainter& painter, const QRegion& region);
    void paintOverlay(QPainter& painter, const QRectF& area);
    void paintCrosshair(QPainter& painter, const QRectF& area);

    Surface* const surface;

    mutable std::mutex viewMutex; // guards the picture and where it lies
    QPixmap pixmap;
    SurfaceGeometry geometry;

    mutable std::mutex sourceMutex; // guards where pixel values come from
    ImageSource from;
    std::atomic<int> sourceChanged{1}; // kind, format or size; the overlay's labels are to be measured again

    PictureSampler sampler; // user-interface thread only, as all below
    PixelOverlay overlay;
    bool crosshairVisible = false;
    QPoint activePixel{-1, -1};
    bool valueOverlayEnabled = true;
};

} // namespace Vistrel
